// microsoft_host process|runtime PLUG-IN SOURCE: writes the transcript of a directory or report as a host
// built by Microsoft's compiler sees it, with its allocations on the process heap or on that of the runtime
// library.
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

// Two objects at once are independent, and each ends in its own way: destroyed only, or destroyed and freed.
void CheckTwoObjects(const Plugin& plugin, const wchar_t* directory) {
  DataServer* const one = plugin.Create(0);
  DataServer* const other = plugin.Create(0);
  if (!one->Open(directory)) Fail("the first of two objects does not open");
  if (other->GetFunctionCount(0) != 0) Fail("the second object is open with the first");
  if (!other->Open(directory)) Fail("the second of two objects does not open");
  MassSpectrum first;
  MassSpectrum second;
  const bool read = one->GetSpectrum(0, 0, 0, first) && other->GetSpectrum(0, 0, 0, second);
  if (!read || first.count != second.count) Fail("two objects read differently");
  one->~DataServer();  // slot 0 with flags 0; the memory stays
  if (!other->GetSpectrum(0, 0, 1, second)) Fail("one object's end has touched the other");
  delete other;  // flags 1
}

void* const* TableOf(const MassSpectrum& spectrum) {
  return *reinterpret_cast<void* const* const*>(&spectrum);
}

// A host's vector of the host's own spectra grows: ours replace them and keep their points. The stand-in's
// bin 1 of scan 2 cannot be read, so nothing is written after the growth.
void CheckVectorOfSpectra(const Plugin& plugin, const wchar_t* directory) {
  constexpr int kPoints = 600;
  DataServer* const server = plugin.Create(0);
  if (!server->Open(directory)) Fail("the directory does not open");
  int function = 0;
  while (function < server->GetFunctionCount(0) && server->GetMobilityBinCount(0, function) == 0) ++function;
  if (function < server->GetFunctionCount(0)) {
    Vector<MassSpectrum> spectra;
    spectra.Make(2);
    MassSpectrum& second = spectra.begin()[1];
    second.Resize(kPoints, false, false, false, false);
    second.masses.begin()[kPoints - 1] = 7;
    void* const* const hostTable = TableOf(second);
    const bool read = server->GetMobilitySpectra(0, function, 2, 1, 3, spectra);
    if (read || spectra.size() != 3) Fail("the vector of spectra was not sized");
    const MassSpectrum& moved = spectra.begin()[1];
    if (moved.count != kPoints || moved.masses.begin()[kPoints - 1] != 7) Fail("a spectrum lost its points");
    for (const MassSpectrum& spectrum : spectra) {
      if (TableOf(spectrum) == hostTable) Fail("a spectrum made by the plug-in has the host's table");
      if (TableOf(spectrum)[-1] != nullptr) Fail("the word before a spectrum's table is not null");
    }
    spectra.Free();  // through the plug-in's table, with flags 0

    if (!server->GetMobilitySpectra(0, function, 0, 2, 2, spectra)) Fail("a drift bin is not read");
    delete spectra.Take();  // a block of one spectrum, through the plug-in's table with flags 1
  }
  delete server;
}

bool IsDirectory(const Plugin& plugin, const wchar_t* source) {
  DataServer* const server = plugin.Create(0);
  const bool opens = server->Open(source);
  delete server;
  return opens;
}

}  // namespace

void Main(wchar_t* arguments) {
  NextArgument(arguments)[0] == L'r' ? UseRuntimeHeap() : UseProcessHeap();
  const Plugin plugin = LoadPlugin(NextArgument(arguments));
  const wchar_t* const source = NextArgument(arguments);
  for (unsigned provider = 0; provider < 2; ++provider) {
    DataServer* const server = plugin.Create(provider);
    host_test::Transcript<MicrosoftApi>(*server).Run(source);
    delete server;
  }
  if (IsDirectory(plugin, source)) {
    CheckTwoObjects(plugin, source);
    CheckVectorOfSpectra(plugin, source);
  }
  if (MassSpectrum::resizeCalls == 0) Fail("no spectrum of the host was resized through the host's table");
  UnloadPlugin(plugin);
}

}  // namespace microsoft_host
