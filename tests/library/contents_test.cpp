// What a source holds, as records, of sources that are known by heart.
#include <cmath>

#include "masslynx/scandata/scan_statistics_format.h"
#include "tests/library/opened.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"

namespace zrml::test {
namespace {

class LibraryContents : public testing::Test {
 protected:
  zrml_function Function(zrml_source* source, int sample, int position) {
    return Get<zrml_function>(zrml_get_function, source, sample, position);
  }

  int Count(zrml_status (*count)(zrml_source*, int, int*), zrml_source* source, int sample = 0) {
    int found = -9;
    EXPECT_EQ(count(source, sample, &found), ZRML_OK) << zrml_message(source);
    return found;
  }

  std::vector<std::string> Traces(zrml_source* source, int sample, int function) {
    int count = 0;
    EXPECT_EQ(zrml_trace_count(source, sample, function, &count), ZRML_OK);
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
      const auto trace = Get<zrml_trace>(zrml_get_trace, source, sample, function, i);
      EXPECT_EQ(trace.number, i + 1);
      names.emplace_back(trace.name);
    }
    return names;
  }

  std::string Metadata(zrml_source* source, int sample, int function, const std::string& key) {
    int count = 0;
    EXPECT_EQ(zrml_metadata_count(source, sample, function, &count), ZRML_OK);
    for (int i = 0; i < count; ++i) {
      const auto item = Get<zrml_metadata>(zrml_get_metadata, source, sample, function, i);
      if (item.key == key) return item.value != nullptr ? item.value : "null";
    }
    return "none";
  }

  TempDirectory raw_ = SmallAcquisition().Build();
  TempDirectory folder_{"reports"};

  std::string Report() {
    folder_.WriteText("vials.rpt", ReportText(Vials()));
    return PathOf(folder_, "vials.rpt");
  }
};

TEST_F(LibraryContents, VersionIsTheProjects) { EXPECT_STREQ(zrml_version(), ZRML_VERSION); }

TEST_F(LibraryContents, SourceHasPathAndFormat) {
  const Opened raw(raw_);
  EXPECT_EQ(zrml_path(raw.Get()), PathOf(raw_));
  EXPECT_EQ(zrml_format_of(raw.Get()), ZRML_RAW_DIRECTORY);
  const std::string path = Report();
  const Opened report(path);
  EXPECT_EQ(zrml_path(report.Get()), path);
  EXPECT_EQ(zrml_format_of(report.Get()), ZRML_REPORT);
}

TEST_F(LibraryContents, Samples) {
  const Opened raw(raw_);
  int count = 0;
  EXPECT_EQ(zrml_sample_count(raw.Get(), &count), ZRML_OK);
  EXPECT_EQ(count, 1);
  EXPECT_STREQ((Get<zrml_sample>(zrml_get_sample, raw.Get(), 0).name), "Injection 1");
  const Opened report(Report());
  EXPECT_EQ(zrml_sample_count(report.Get(), &count), ZRML_OK);
  EXPECT_EQ(count, 3);
  EXPECT_STREQ((Get<zrml_sample>(zrml_get_sample, report.Get(), 0).name), "VIAL_1");
  EXPECT_EQ((Get<zrml_sample>(zrml_get_sample, report.Get(), 2).number), 3);
}

TEST_F(LibraryContents, FunctionsOfARawDirectory) {
  const Opened raw(raw_);
  ASSERT_EQ(Count(zrml_function_count, raw.Get()), 6) << "without absorbance, with the processed one";
  const zrml_function survey = Function(raw.Get(), 0, 0);
  EXPECT_EQ(survey.number, 1);
  EXPECT_EQ(survey.process, 0);
  EXPECT_EQ(survey.repeat, 1);
  EXPECT_STREQ(survey.id, "1");
  EXPECT_STREQ(survey.file, "_FUNC001.DAT");
  EXPECT_EQ(survey.kind, ZRML_KIND_MS);
  EXPECT_STREQ(survey.kind_name, "MS");
  EXPECT_EQ(survey.monitoring, ZRML_MONITORING_NONE);
  EXPECT_EQ(survey.scan_type, ZRML_SCAN_TYPE_NONE);
  EXPECT_STREQ(survey.scan_type_name, "");
  EXPECT_EQ(survey.polarity, ZRML_POLARITY_POSITIVE);
  EXPECT_STREQ(survey.polarity_name, "positive");
  EXPECT_EQ(survey.ms_level, 1);
  EXPECT_EQ(survey.is_lock_mass, 0);
  EXPECT_EQ(survey.has_mobility, 0);
  EXPECT_EQ(survey.mass_low, 50);
  EXPECT_EQ(survey.mass_high, 1200.5);
  const zrml_function products = Function(raw.Get(), 0, 1);
  EXPECT_EQ(products.kind, ZRML_KIND_MSMS);
  EXPECT_STREQ(products.kind_name, "MS/MS");
  EXPECT_EQ(products.scan_type, ZRML_SCAN_TYPE_PRODUCT);
  EXPECT_STREQ(products.scan_type_name, "product");
  EXPECT_EQ(products.polarity, ZRML_POLARITY_NEGATIVE);
  EXPECT_EQ(products.ms_level, 2);
  const zrml_function lockMass = Function(raw.Get(), 0, 4);
  EXPECT_EQ(lockMass.number, 6) << "the fifth is absorbance";
  EXPECT_EQ(lockMass.is_lock_mass, 1);
  const zrml_function processed = Function(raw.Get(), 0, 5);
  EXPECT_EQ(processed.number, 1);
  EXPECT_EQ(processed.process, 1);
  EXPECT_STREQ(processed.id, "p1");
  EXPECT_STREQ(processed.file, "_PROC001.DAT");
}

TEST_F(LibraryContents, FunctionsOfAReport) {
  const Opened report(Report());
  ASSERT_EQ(Count(zrml_function_count, report.Get()), 2) << "without the analog one";
  const zrml_function survey = Function(report.Get(), 0, 0);
  EXPECT_STREQ(survey.file, "");
  EXPECT_EQ(survey.polarity, ZRML_POLARITY_NEGATIVE);
  EXPECT_TRUE(std::isnan(survey.mass_low));
  EXPECT_TRUE(std::isnan(survey.mass_high));
  const zrml_function targets = Function(report.Get(), 0, 1);
  EXPECT_EQ(targets.kind, ZRML_KIND_ION_MONITORING);
  EXPECT_EQ(targets.monitoring, ZRML_MONITORING_IONS);
  EXPECT_EQ(targets.polarity, ZRML_POLARITY_UNKNOWN);
  EXPECT_STREQ(targets.polarity_name, "");
  EXPECT_EQ(Count(zrml_function_count, report.Get(), 1), 0);
}

TEST_F(LibraryContents, OnlyReportsHaveTextOfFunctions) {
  const char* text = "";
  std::size_t length = 1;
  const Opened raw(raw_);
  EXPECT_EQ(zrml_function_text(raw.Get(), 0, 0, &text, &length), ZRML_OK);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(length, 0u);
  const Opened report(Report());
  ASSERT_EQ(zrml_function_text(report.Get(), 0, 1, &text, &length), ZRML_OK);
  EXPECT_EQ(std::string(text).size(), length);
  EXPECT_NE(std::string(text).find("caffeine"), std::string::npos);
  EXPECT_EQ(std::string(text).find("survey"), std::string::npos);
}

TEST_F(LibraryContents, TracesOfSampleAndFunctions) {
  const Opened raw(raw_);
  EXPECT_EQ(Traces(raw.Get(), 0, ZRML_OF_SAMPLE),
            (std::vector<std::string>{"Pressure", "UV\x1B[31m 254", "PDA - Total Absorbance"}));
  EXPECT_TRUE(Traces(raw.Get(), 0, 0).empty());
  const Opened report(Report());
  EXPECT_EQ(Traces(report.Get(), 0, ZRML_OF_SAMPLE), (std::vector<std::string>{"Pressure", "Temperature"}));
  EXPECT_EQ(Traces(report.Get(), 0, 0), (std::vector<std::string>{"TIC", "Function Trace 2"}));
  EXPECT_EQ(Traces(report.Get(), 0, 1), (std::vector<std::string>{"caffeine"}));
  EXPECT_TRUE(Traces(report.Get(), 2, ZRML_OF_SAMPLE).empty());
}

TEST_F(LibraryContents, MetadataIsUtf8) {
  const Opened raw(raw_);
  EXPECT_EQ(Metadata(raw.Get(), 0, ZRML_OF_SAMPLE, "OperatorName"), "Zo\xC3\xAB \"Z\"");
  EXPECT_EQ(Metadata(raw.Get(), 0, ZRML_OF_SAMPLE, "IonizationMethod"), "null") << "of functions alone";
  EXPECT_NE(Metadata(raw.Get(), 0, 0, "IonizationMethod"), "null");
  EXPECT_EQ(Metadata(raw.Get(), 0, 0, "OperatorName"), "Zo\xC3\xAB \"Z\"");
  const Opened report(Report());
  EXPECT_EQ(Metadata(report.Get(), 0, ZRML_OF_SAMPLE, "OperatorName"), "someone");
  EXPECT_NE(Metadata(report.Get(), 1, ZRML_OF_SAMPLE, "OperatorName"), "someone") << "each sample its own";
}

TEST_F(LibraryContents, AbsorbanceFunctionIsApart) {
  const Opened raw(raw_);
  EXPECT_EQ(Count(zrml_absorbance_count, raw.Get()), 2);
  const auto function = Get<zrml_function>(zrml_get_absorbance_function, raw.Get(), 0);
  EXPECT_EQ(function.number, 5);
  EXPECT_EQ(function.kind, ZRML_KIND_ABSORBANCE);
  EXPECT_STREQ(function.file, "_FUNC005.DAT");
  const Opened report(Report());
  EXPECT_EQ(Count(zrml_absorbance_count, report.Get()), -1);
}

// The points of the first function end at byte 36, 12 a scan.
TEST_F(LibraryContents, Findings) {
  const TempDirectory directory = SoundDirectory().Build();
  const Opened sound(directory);
  int count = -1;
  EXPECT_EQ(zrml_finding_count(sound.Get(), &count), ZRML_OK);
  EXPECT_EQ(count, 0);
  directory.Truncate("_FUNC001.DAT", 12);
  const Opened damaged(directory);
  ASSERT_EQ(zrml_finding_count(damaged.Get(), &count), ZRML_OK);
  ASSERT_EQ(count, 1);
  const auto finding = Get<zrml_finding>(zrml_get_finding, damaged.Get(), 0);
  EXPECT_STREQ(finding.code, "data-cut");
  EXPECT_STREQ(finding.severity, "lost");
  EXPECT_STREQ(finding.file, "_FUNC001.DAT");
  EXPECT_STREQ(finding.message, "ends before 2 of 3 scans do; the first is scan 2");
  EXPECT_EQ(finding.subject, ZRML_ABOUT_FUNCTION);
  EXPECT_STREQ(finding.function, "1");
  EXPECT_EQ(finding.sample, 0);
  EXPECT_EQ(finding.count, 2u);
  EXPECT_EQ(finding.first, 2u);
}

TEST_F(LibraryContents, FindingsOfAReportHaveASample) {
  folder_.WriteText("cut.rpt", "[SAMPLE]\n{\n}\n[SAMPLE]\n{\n");
  const Opened report(PathOf(folder_, "cut.rpt"));
  int count = 0;
  ASSERT_EQ(zrml_finding_count(report.Get(), &count), ZRML_OK);
  ASSERT_GE(count, 1);
  const auto finding = Get<zrml_finding>(zrml_get_finding, report.Get(), 0);
  EXPECT_EQ(finding.sample, 2);
  EXPECT_STREQ(finding.function, "");
  EXPECT_STREQ(finding.severity, "lost");
}

// Texts stay until the source is closed, whatever is asked for meanwhile.
TEST_F(LibraryContents, TextsStay) {
  const Opened report(Report());
  const zrml_function first = Function(report.Get(), 0, 0);
  const auto sample = Get<zrml_sample>(zrml_get_sample, report.Get(), 0);
  const auto item = Get<zrml_metadata>(zrml_get_metadata, report.Get(), 0, -1, 0);
  const std::string name = first.name;
  const std::string key = item.key;
  for (int s = 0; s < 3; ++s) {
    Get<zrml_sample>(zrml_get_sample, report.Get(), s);
    Traces(report.Get(), s, ZRML_OF_SAMPLE);
    Metadata(report.Get(), s, ZRML_OF_SAMPLE, "none");
    for (int i = 0; i < 100; ++i) Function(report.Get(), 0, i % 2);
  }
  EXPECT_EQ(first.name, name);
  EXPECT_EQ(item.key, key);
  EXPECT_STREQ(sample.name, "VIAL_1");
  EXPECT_EQ(first.name, Function(report.Get(), 0, 0).name) << "kept once";
}

}  // namespace
}  // namespace zrml::test
