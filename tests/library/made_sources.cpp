#include "tests/library/made_sources.h"

#include "tests/library/opened.h"
#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"

namespace zrml::test {
namespace {

RawDirectoryBuilder WithEvenAbsorbance() {
  RawDirectoryBuilder acquisition = SmallAcquisition();
  std::vector<ScanFiles>& scans = acquisition.functions[4].scans;
  scans[1].data = scans[0].data;
  scans[1].index.pointCount = scans[0].index.pointCount;
  return acquisition;
}

}  // namespace

struct MadeSources::Directories {
  TempDirectory acquisition = SmallAcquisition().Build(u8"\u00e9chantillon.raw");
  TempDirectory even = WithEvenAbsorbance().Build();
  TempDirectory cut = SmallAcquisition().Build();
  TempDirectory reports{"reports"};
};

MadeSources::MadeSources() : made_(std::make_unique<Directories>()) {
  made_->cut.Truncate("_FUNC006.DAT", 1);
  made_->reports.WriteText("vials.rpt", ReportText(Vials()));
}
MadeSources::~MadeSources() = default;

std::string MadeSources::Acquisition() const { return PathOf(made_->acquisition); }
std::filesystem::path MadeSources::AcquisitionPath() const { return made_->acquisition.Path(); }
std::string MadeSources::EvenAbsorbance() const { return PathOf(made_->even); }
std::string MadeSources::CutAcquisition() const { return PathOf(made_->cut); }
std::string MadeSources::Report() const { return PathOf(made_->reports, "vials.rpt"); }

}  // namespace zrml::test
