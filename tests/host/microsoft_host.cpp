// microsoft_host process|runtime PLUG-IN DIRECTORY: writes the transcript of a directory as a host built by
// Microsoft's compiler sees it, with its allocations on the process heap or on that of the runtime library.
#include "tests/host/microsoft_platform.h"
#include "tests/host/transcript.h"

namespace microsoft_host {
namespace {

struct MicrosoftApi {
  using Server = DataServer;
  using String = WString;
  using OutString = WString;
  using Strings = Vector<WString>;
  using Doubles = Vector<double>;
  using Spectra = Vector<MassSpectrum>;
  using Spectrum = MassSpectrum;
  using Chromatogram = microsoft_host::Chromatogram;
  using Absorbance = AbsorbanceSpectrum;

  static WString Text(const wchar_t* text) { return text; }
  static void Write(const char* text, size_t size) { Print(text, size); }

  static const Doubles& Wavelengths(const Absorbance& a) { return a.wavelengths; }
  static const Doubles& Absorbances(const Absorbance& a) { return a.absorbances; }
  static double StartTime(const Absorbance& a) { return a.startTime; }
  static int FirstScan(const Absorbance& a) { return a.firstScan; }

  static const WString& Name(const Chromatogram& c) { return c.name; }
  static const Doubles& Times(const Chromatogram& c) { return c.times; }
  static const Doubles& Intensities(const Chromatogram& c) { return c.intensities; }

  static const Doubles& Masses(const Spectrum& s) { return s.masses; }
  static const Doubles& Intensities(const Spectrum& s) { return s.intensities; }

  template <class Visit>
  static void ForEachAttribute(const Spectrum& s, Visit visit) {
    visit(" count", s.count);
    visit(" title", WString(s.title));
    visit(" centroided", s.centroided);
    visit(" stale", s.statsStale);
    visit(" MS level", s.msLevel);
    visit(" precursor", s.precursorMass);
    visit(" polarity", s.polarity);
    visit(" scan type", s.scanType);
    visit(" start", s.startTime);
    visit(" end", s.endTime);
    visit(" first drift value", s.firstDriftValue);
    visit(" last drift value", s.lastDriftValue);
    visit(" first scan", s.firstScan);
    visit(" last scan", s.lastScan);
    visit(" first drift bin", s.firstDriftBin);
    visit(" last drift bin", s.lastDriftBin);
    visit(" aux value", s.auxValue);
    visit(" scale", s.scale);
  }
};

}  // namespace

void Main(wchar_t* arguments) {
  NextArgument(arguments)[0] == L'r' ? UseRuntimeHeap() : UseProcessHeap();
  const GetInstanceFunction getInstance = LoadPlugin(NextArgument(arguments));
  const wchar_t* const directory = NextArgument(arguments);
  for (unsigned provider = 0; provider < 2; ++provider) {
    DataServer* server = nullptr;
    if (!getInstance(provider, &server)) Fail("GetInstance");
    host_test::Transcript<MicrosoftApi>(*server).Run(directory);
    delete server;  // through slot 0
  }
  if (MassSpectrum::resizeCalls == 0) Fail("no spectrum of the host was resized through the host's table");
}

}  // namespace microsoft_host
