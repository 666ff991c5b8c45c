// zrml.hpp, as a program of C++17 uses it. Without headers of the product beside it.
#include <cmath>
#include <string>
#include <zrml/zrml.hpp>

#include <gtest/gtest.h>

#include "tests/library/made_sources.h"

static_assert(__cplusplus < 202002L, "compiled as C++17");

namespace {

using zrml::test::MadeSources;
using Doubles = std::vector<double>;

class LibraryCpp : public testing::Test {
 protected:
  MadeSources made_;
};

TEST_F(LibraryCpp, SourceListsWhatItHolds) {
  const zrml::Source run(made_.Acquisition());
  EXPECT_EQ(run.path(), made_.Acquisition());
  EXPECT_EQ(run.format(), ZRML_RAW_DIRECTORY);
  EXPECT_EQ(run.samples().size(), 1);
  EXPECT_EQ(run.samples()[0].number(), 1);
  EXPECT_EQ(run.samples()[0].name(), "Injection 1");
  std::string ids;
  for (const zrml::Function& function : run.functions()) ids += std::string(function.id()) + " ";
  EXPECT_EQ(ids, "1 2 3 4 6 p1 ");
  const zrml::Function survey = run.functions()[0];
  EXPECT_EQ(survey.number(), 1);
  EXPECT_EQ(survey.process(), 0);
  EXPECT_EQ(survey.repeat(), 1);
  EXPECT_EQ(survey.file(), "_FUNC001.DAT");
  EXPECT_FALSE(survey.name().empty());
  EXPECT_EQ(survey.kind(), ZRML_KIND_MS);
  EXPECT_EQ(survey.kind_name(), "MS");
  EXPECT_EQ(survey.polarity(), ZRML_POLARITY_POSITIVE);
  EXPECT_EQ(survey.polarity_name(), "positive");
  EXPECT_EQ(survey.scan_type(), ZRML_SCAN_TYPE_NONE);
  EXPECT_EQ(survey.scan_type_name(), "");
  EXPECT_EQ(survey.monitoring(), ZRML_MONITORING_NONE);
  EXPECT_EQ(survey.ms_level(), 1);
  EXPECT_FALSE(survey.is_lock_mass());
  EXPECT_TRUE(run.functions()[4].is_lock_mass());
  EXPECT_FALSE(survey.has_mobility());
  EXPECT_EQ(survey.drift_bins(), 0);
  EXPECT_EQ(survey.mass_range().low, 50);
  EXPECT_EQ(survey.mass_range().high, 1200.5);
}

TEST_F(LibraryCpp, ScansReadTheirPoints) {
  const zrml::Source run(made_.Acquisition());
  Doubles minutes;
  std::size_t points = 0;
  for (const zrml::Scan& scan : run.functions()[0].scans()) {
    minutes.push_back(scan.minutes());
    points += scan.mz().size();
    EXPECT_EQ(scan.mz().size(), scan.intensity().size());
    EXPECT_EQ(scan.lost(), 0u);
  }
  EXPECT_EQ(minutes, (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(points, 4u);
  const zrml::Scan first = run.functions()[0][0];
  EXPECT_EQ(first.mz(), (Doubles{100, 200.5, 300.0625}));
  EXPECT_EQ(first.intensity(), (Doubles{10, 3, 1e6}));
  EXPECT_EQ(run.functions()[0][1].mz(), (Doubles{100.25})) << "of a scan that ends with the line";
  EXPECT_EQ(first.number(), 1);
  EXPECT_FALSE(first.is_centroided());
  EXPECT_EQ(first.end_minutes(), 0.75);
  EXPECT_EQ(first.total_intensity(), 1000013);
  EXPECT_TRUE(std::isnan(first.base_peak_intensity()));
  EXPECT_TRUE(std::isnan(first.precursor_mz()));
  EXPECT_EQ(first.scan_value(), 2.5);
  EXPECT_EQ(run.functions()[1][1].precursor_mz(), 445.125);
}

TEST_F(LibraryCpp, ChromatogramsAndSums) {
  const zrml::Source run(made_.Acquisition());
  const zrml::Function survey = run.functions()[0];
  EXPECT_EQ(survey.minutes(), (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(survey.tic().intensity, (Doubles{1000013, 5, 0}));
  EXPECT_EQ(survey.tic().minutes, (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(survey.bpc().intensity, (Doubles{1e6, 5, 0}));
  EXPECT_EQ(survey.range(100, 201).intensity, (Doubles{13, 5, 0}));
  const auto both = survey.ranges({{100, 100}, {100, 400}}, ZRML_LARGEST);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(both[0].intensity, (Doubles{10, 0, 0}));
  EXPECT_EQ(both[1].intensity, (Doubles{1e6, 5, 0}));
  EXPECT_EQ(both[1].minutes, (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(survey.sum(0, 1).mz, (Doubles{100, 200.5, 300.0625}));
  EXPECT_EQ(run.functions()[1].sum(0, 2).intensity, (Doubles{15}));
  zrml::SumOptions options;
  options.is_mean = true;
  options.background = {0};
  const zrml::Sum less = run.functions()[1].sum({1, 0, 1}, options);
  EXPECT_EQ(less.intensity, (Doubles{7.5 - 7})) << "the mean of 7 and 8, less the 7 of the first";
  EXPECT_EQ(less.added, 2);
  EXPECT_EQ(less.background_added, 1);
  EXPECT_EQ(less.left_out + less.background_left_out, 0);
  EXPECT_TRUE(less.is_centroided);
  const zrml::Spectrum profile = {{100, 100.25, 100.5}, {10, 20, 10}};
  EXPECT_EQ(zrml::Centroids(profile, true).intensity, (Doubles{40}));
  EXPECT_EQ(zrml::Centroids(profile).mz.size(), 1u);
  EXPECT_EQ(survey[0].points().mz, survey[0].mz());
  EXPECT_THROW(zrml::Centroids(profile, false, -1), zrml::Error);
}

TEST_F(LibraryCpp, PointsOfScansInOneCall) {
  const zrml::Source run(made_.Acquisition());
  const zrml::Function survey = run.functions()[0];
  const zrml::PointsOfScans all = survey.points(0, 3);
  EXPECT_EQ(all.mz, (Doubles{100, 200.5, 300.0625, 100.25}));
  EXPECT_EQ(all.intensity, (Doubles{10, 3, 1e6, 5}));
  EXPECT_EQ(all.ends, (std::vector<std::size_t>{3, 4, 4}));
  EXPECT_EQ(all.lost, (std::vector<std::size_t>{0, 0, 0}));
  EXPECT_EQ(survey.points(1, 2).ends, (std::vector<std::size_t>{1, 1}));
  EXPECT_TRUE(survey.points(3, 0).mz.empty());
  EXPECT_THROW(survey.points(0, 4), zrml::Error);
  EXPECT_THROW(survey.points(0, -1), zrml::Error);
  EXPECT_THROW(survey.points(0, 2147483647), zrml::Error);
  EXPECT_THROW(run.functions()[3].points(0, 1), zrml::Error) << "of an unknown layout";
}

TEST_F(LibraryCpp, Table) {
  const zrml::Source run(made_.Acquisition());
  const zrml::ScanTable table = run.functions()[0].table();
  EXPECT_EQ(table.number, (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_EQ(table.minutes, (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(table.points, (std::vector<std::uint32_t>{3, 1, 0}));
  EXPECT_EQ(table.total_intensity, (Doubles{1000013, 5, 0}));
  EXPECT_TRUE(std::isnan(table.base_peak_mz[0]));
  EXPECT_EQ(table.scan_value, (Doubles{2.5, 2.5, 2.5}));
  EXPECT_EQ(run.functions()[1].table().precursor_mz[1], 445.125);
  const zrml::ScanTable read = run.functions()[0].table(true);
  EXPECT_EQ(read.base_peak_mz[0], 300.0625);
  EXPECT_EQ(read.base_peak_intensity, (Doubles{1e6, 5, 0}));
}

TEST_F(LibraryCpp, TracesMetadataAbsorbanceFindings) {
  const zrml::Source run(made_.Acquisition());
  ASSERT_EQ(run.traces().size(), 3);
  EXPECT_EQ(run.traces()[0].name(), "Pressure");
  EXPECT_EQ(run.traces()[0].number(), 1);
  EXPECT_EQ(run.traces()[0].read().minutes, (Doubles{0.5, 1}));
  EXPECT_EQ(run.traces()[0].read().intensity, (Doubles{5, 2}));
  EXPECT_TRUE(run.functions()[0].traces().empty());
  std::string name;
  for (const zrml::MetadataItem& item : run.metadata()) {
    if (item.key == "OperatorName") name = item.value.value_or("absent");
    if (item.key == "IonizationMethod") {
      EXPECT_EQ(item.value, std::nullopt);
    }
  }
  EXPECT_EQ(name, "Zo\xC3\xAB \"Z\"");
  EXPECT_EQ(run.functions()[0].metadata().size(), run.metadata().size());
  ASSERT_TRUE(run.absorbance());
  EXPECT_EQ(run.absorbance()->size(), 2);
  EXPECT_EQ(run.absorbance()->minutes(), (Doubles{0.125, 0.25}));
  EXPECT_EQ((*run.absorbance())[0].values, (Doubles{0, 3}));
  EXPECT_EQ((*run.absorbance())[1].wavelengths, (Doubles{210}));
  EXPECT_EQ(run.absorbance()->matrix(), std::nullopt);
  EXPECT_TRUE(run.findings().empty());
}

TEST_F(LibraryCpp, AbsorbanceOfEqualWavelengthsIsAMatrix) {
  const zrml::Source run(made_.EvenAbsorbance());
  const auto matrix = run.absorbance()->matrix();
  ASSERT_TRUE(matrix);
  EXPECT_EQ(matrix->wavelengths, (Doubles{210, 210.5}));
  EXPECT_EQ(matrix->values, (Doubles{0, 3, 0, 3}));
}

TEST_F(LibraryCpp, FindingsOfADamagedSource) {
  const zrml::Source run(made_.CutAcquisition());
  ASSERT_EQ(run.findings().size(), 1);
  const zrml::v1::Finding finding = run.findings()[0];
  EXPECT_EQ(finding.code(), "data-cut");
  EXPECT_EQ(finding.severity(), "lost");
  EXPECT_EQ(finding.file(), "_FUNC006.DAT");
  EXPECT_EQ(finding.function(), "6");
  EXPECT_EQ(finding.subject(), ZRML_ABOUT_FUNCTION);
  EXPECT_EQ(finding.sample(), 0);
  EXPECT_EQ(finding.count(), 1u);
  EXPECT_EQ(finding.first(), 1u);
  EXPECT_FALSE(finding.message().empty());
}

TEST_F(LibraryCpp, ReportHasSamples) {
  const zrml::Source report(made_.Report());
  EXPECT_EQ(report.format(), ZRML_REPORT);
  ASSERT_EQ(report.samples().size(), 3);
  EXPECT_EQ(report.samples()[0].functions().size(), 2);
  EXPECT_EQ(report.samples()[1].functions().size(), 0);
  EXPECT_EQ(report.samples()[1].traces().size(), 2);
  EXPECT_EQ(report.functions()[0].traces()[0].name(), "TIC");
  EXPECT_EQ(report.absorbance(), std::nullopt);
  EXPECT_EQ(report.functions()[0][0].mz(), (Doubles{100, 300}));
}

TEST_F(LibraryCpp, ErrorsHaveAStatus) {
  const auto statusOf = [](auto work) {
    try {
      work();
    } catch (const zrml::Error& error) {
      EXPECT_STRNE(error.what(), "");
      return error.status();
    }
    return ZRML_OK;
  };
  EXPECT_EQ(statusOf([] { zrml::Source("nothing.raw"); }), ZRML_NOT_FOUND);
  zrml::Source run(made_.Acquisition());
  EXPECT_EQ(statusOf([&] { run.functions()[6]; }), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(statusOf([&] { run.functions()[0][3]; }), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(statusOf([&] { run.functions()[3][0].mz(); }), ZRML_DAMAGED);
  EXPECT_EQ(statusOf([&] { run.functions()[0][0].drift_bin(0); }), ZRML_WRONG_ARGUMENT);
  run.set_progress([](std::size_t, std::size_t) { return false; });
  EXPECT_EQ(statusOf([&] { run.functions()[0].bpc(); }), ZRML_CANCELLED);
}

// Also when the progress function throws, and when the source has been moved.
TEST_F(LibraryCpp, ProgressMayThrow) {
  zrml::Source first(made_.Acquisition());
  struct Stop {};
  first.set_progress([](std::size_t, std::size_t all) -> bool {
    EXPECT_EQ(all, 3u);
    throw Stop();
  });
  const zrml::Source run(std::move(first));
  EXPECT_THROW(run.functions()[0].bpc(), Stop);
  EXPECT_THROW(run.functions()[0].bpc(), Stop) << "and again";
  EXPECT_EQ(run.functions()[0].tic().intensity.size(), 3u);
}

TEST_F(LibraryCpp, PathsOfTheStandardLibrary) {
  const zrml::Source run(made_.AcquisitionPath());
  EXPECT_EQ(run.path(), made_.Acquisition());
}

}  // namespace
