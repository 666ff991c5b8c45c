// interface_numbers PLUG-IN SOURCE: prints what the interface gives for a directory's first sample: one line
// for every mass spectrum, absorbance spectrum, total ion chromatogram and trace, with its kind, function,
// number (both from 1; 0: none) and two lists of numbers, bytes in hexadecimal. For tests of conversion;
// shares no code with it.
#include <algorithm>
#include <cstdio>
#include <span>
#include <string>

#include "common/platform/platform.h"
#include "plugin/provider_table.h"
#include "tests/support/loaded_library.h"

namespace zrml {
namespace {

void AppendHex(std::string& line, std::span<const double> numbers) {
  line += '\t';
  for (const std::byte byte : std::as_bytes(numbers)) {
    const auto value = static_cast<unsigned>(byte);
    line += "0123456789abcdef"[value >> 4];
    line += "0123456789abcdef"[value & 15];
  }
}

class Numbers {
 public:
  explicit Numbers(CDataServerImpl& server) : server_(server) {}

  /// False when an item that is counted cannot be read.
  bool PrintAll() {
    const int functions = server_.GetFunctionCount(0);
    for (int function = 0; function < functions; ++function) {
      if (!PrintFunction(function)) return false;
    }
    return PrintAbsorbance(functions + 1) && PrintTraces();
  }

 private:
  bool PrintFunction(int function) {
    CZRChromatogram total;
    if (!server_.GetTotalIonChromatogram(true, 0, function, total)) return false;
    Print("total", function + 1, 0, total.Times(), total.Intensities());
    const int scans = server_.GetScanCount(0, function);
    for (int scan = 0; scan < scans; ++scan) {
      CZRMassSpectrum spectrum;
      if (!server_.GetSpectrum(0, function, scan, spectrum)) return false;
      const auto count = static_cast<std::size_t>(spectrum.GetCount());
      Print("mass", function + 1, scan + 1, std::span(spectrum.MassVector()).first(count),
            std::span(spectrum.IntensityVector()).first(count));
    }
    return true;
  }

  bool PrintAbsorbance(int number) {
    const int scans = server_.HasAbsorbanceData(0) ? server_.GetAbsorbanceScanCount(0) : 0;
    for (int scan = 0; scan < scans; ++scan) {
      CZRAbsorbanceSpectrum spectrum;
      if (!server_.GetAbsorbanceSpectrum(0, scan, spectrum)) return false;
      Print("absorbance", number, scan + 1, spectrum.Wavelengths(), spectrum.Absorbances());
    }
    return true;
  }

  bool PrintTraces() {
    const int traces = server_.GetTraceCount(0);
    for (int trace = 0; trace < traces; ++trace) {
      CZRChromatogram chromatogram;
      if (!server_.GetTrace(0, trace, chromatogram)) return false;
      Print("trace", 0, trace + 1, chromatogram.Times(), chromatogram.Intensities());
    }
    return true;
  }

  void Print(const char* kind, int function, int number, std::span<const double> x,
             std::span<const double> y) {
    line_ = kind;
    line_ += '\t' + std::to_string(function) + '\t' + std::to_string(number);
    AppendHex(line_, x);
    AppendHex(line_, y);
    line_ += '\n';
    std::fwrite(line_.data(), 1, line_.size(), stdout);
  }

  CDataServerImpl& server_;
  std::string line_;
};

}  // namespace
}  // namespace zrml

int main(int argc, char** argv) {
  using namespace zrml;
  if (argc != 3) return 2;
  const LoadedLibrary plugin(argv[1]);
  const auto getInstance = plugin.Get<GetInstanceFunction>("GetInstance");
  if (getInstance == nullptr) return 3;
  const std::unique_ptr<CDataServerImpl> server = CreateServer(getInstance, 0);
  if (server == nullptr || !server->Open(platform::FromNativePath(argv[2]))) return 4;
  return Numbers(*server).PrintAll() ? 0 : 5;
}
