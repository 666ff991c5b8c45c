// Windows: GetSpectrum through the face that hosts bind to, compared with the same provider called directly.
// Takes the plug-in; prints a line for the table of scripts/bench.sh: medians of alternating runs, in
// nanoseconds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "bench/acquisition.h"
#include "plugin/provider_table.h"
#include "plugin/raw_server.h"
#include "tests/support/loaded_library.h"

namespace {

using namespace zrml;

double NanosecondsOf(CDataServerImpl& server, CZRMassSpectrum& spectrum) {
  constexpr int kReads = 20;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kReads; ++i) server.GetSpectrum(0, 0, 0, spectrum);
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / kReads;
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const LoadedLibrary plugin(argv[1]);
  const auto getInstance = plugin.Get<GetInstanceFunction>("GetInstance");
  if (getInstance == nullptr) return 3;
  const auto faced = CreateServer(getInstance, 0);
  plugin::CMLDataServerImpl direct;
  const std::wstring path = bench::AcquisitionOf({9, 100000, true}).WidePath();
  CZRMassSpectrum spectrum;
  CZRMassSpectrum other;
  if (!faced->Open(path) || !direct.Open(path) || !faced->GetSpectrum(0, 0, 0, spectrum) ||
      !direct.GetSpectrum(0, 0, 0, other) || spectrum.MassVector() != other.MassVector()) {
    return 1;
  }
  std::vector<double> ours;
  std::vector<double> floor;
  for (int round = 0; round < 101; ++round) {
    ours.push_back(NanosecondsOf(*faced, spectrum));
    floor.push_back(NanosecondsOf(direct, other));
  }
  std::printf("GetSpectrum 100k points through the Windows face\t%.0f\t%.0f\n", Median(ours), Median(floor));
}
