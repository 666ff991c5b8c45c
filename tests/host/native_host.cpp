// native_host PLUG-IN SOURCE: writes the transcript of a directory or report as a host from our own compiler
// sees it.
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "common/platform/platform.h"
#include "plugin/provider_table.h"
#include "tests/host/transcript.h"
#include "tests/support/loaded_library.h"

namespace {

using namespace zrml;

struct NativeApi {
  using Server = CDataServerImpl;
  using String = std::wstring;
  using OutString = std::wstring;
  using Strings = std::vector<std::wstring>;
  using Doubles = HostVector<double>;
  using Spectra = HostVector<CZRMassSpectrum>;
  using Spectrum = CZRMassSpectrum;
  using Chromatogram = CZRChromatogram;
  using Absorbance = CZRAbsorbanceSpectrum;

  static std::wstring Text(const wchar_t* text) { return text; }
  static void Write(const char* text, std::size_t size) { std::fwrite(text, 1, size, stdout); }

  static const Doubles& Wavelengths(const Absorbance& a) { return a.Wavelengths(); }
  static const Doubles& Absorbances(const Absorbance& a) { return a.Absorbances(); }
  static double StartTime(const Absorbance& a) { return a.StartTime(); }
  static int FirstScan(const Absorbance& a) { return a.FirstScan(); }

  static std::wstring Name(const Chromatogram& c) { return std::wstring(std::wstring_view(c.Name())); }
  static const Doubles& Times(const Chromatogram& c) { return c.Times(); }
  static const Doubles& Intensities(const Chromatogram& c) { return c.Intensities(); }

  static const Doubles& Masses(const Spectrum& s) { return s.MassVector(); }
  static const Doubles& Intensities(const Spectrum& s) { return s.IntensityVector(); }

  template <class Visit>
  static void ForEachAttribute(const Spectrum& s, Visit visit) {
    visit(" count", s.GetCount());
    visit(" title", std::wstring(std::wstring_view(s.GetTitle())));
    visit(" centroided", s.IsCentroided());
    visit(" stale", s.AreStatisticsStale());
    visit(" MS level", s.GetMSLevel());
    visit(" precursor", s.GetPrecursorMass());
    visit(" polarity", s.GetPolarity());
    visit(" scan type", s.GetScanType());
    visit(" start", s.GetStartTime());
    visit(" end", s.GetEndTime());
    visit(" first drift value", s.GetFirstDriftValue());
    visit(" last drift value", s.GetLastDriftValue());
    visit(" first scan", s.GetFirstScan());
    visit(" last scan", s.GetLastScan());
    visit(" first drift bin", s.GetFirstDriftBin());
    visit(" last drift bin", s.GetLastDriftBin());
    visit(" aux value", s.GetScanAuxValue());
    visit(" scale", s.GetScale());
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const LoadedLibrary plugin(argv[1]);
  const auto getInstance = plugin.Get<GetInstanceFunction>("GetInstance");
  if (getInstance == nullptr) return 3;
  for (const std::uint64_t provider : {0, 1}) {
    const std::unique_ptr<CDataServerImpl> server = CreateServer(getInstance, provider);
    host_test::Transcript<NativeApi>(*server).Run(platform::FromNativePath(argv[2]).c_str());
  }
}
