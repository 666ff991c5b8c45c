// zrml convert: centroids, filters of points, and polarity.
#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

constexpr const char* kTitles = "function\tscan\ttime\tm/z\tintensity\n";

class ConvertPointsTest : public ZrmlTest {
 protected:
  // The survey has a profile of one peak, and one of no peak; the products are profiles, too. Function 6 has
  // peaks.
  static RawDirectoryBuilder Profiles() {
    const auto profile = [](float minutes, const std::vector<WantedPoint>& points) {
      return SmallScan(minutes, CentroidState::kProfile, points);
    };
    RawDirectoryBuilder raw = SmallAcquisition();
    raw.functions[0].scans = {profile(0.5F, {{100, 10}, {100.25, 20}, {100.5, 10}}), profile(1, {})};
    raw.functions[1].scans = {profile(0.75F, {{200, 1}, {200.25, 8}, {200.5, 1}, {200.75, 0}})};
    raw.functions[1].scans[0].statistics.firstBytes = 2;  // a record without a precursor
    raw.functions.resize(6);
    return raw;
  }

  std::string Converted(std::vector<std::string> more) const {
    more.insert(more.begin(), {"convert", path_});
    more.push_back("--stdout");
    const ProcessResult result = Run(more);
    EXPECT_EQ(result.status, 0) << result.errors;
    return result.output;
  }

  std::string Rows(std::vector<std::string> more) const {
    more.insert(more.end(), {"--function", "1,2,6", "--format", "tsv"});
    const std::string output = Converted(more);
    EXPECT_TRUE(output.starts_with(kTitles));
    return output.substr(std::string(kTitles).size());
  }

  std::string path_ = Make("run.raw", Profiles());
};

const std::string kPeak = "6\t1\t0.25\t556.25\t9\n";
const std::string kSurvey = "1\t1\t0.5\t100\t10\n1\t1\t0.5\t100.25\t20\n1\t1\t0.5\t100.5\t10\n";
const std::string kProducts = "2\t1\t0.75\t200\t1\n2\t1\t0.75\t200.25\t8\n2\t1\t0.75\t200.5\t1\n";
const std::string kZero = "2\t1\t0.75\t200.75\t0\n";

void ExpectHas(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// The sums of the samples: 10 + 20 + 10, and 1 + 8 + 1.
TEST_F(ConvertPointsTest, CentroidsAreMadeOfAllLevelsOrOfSome) {
  const std::string survey = "1\t1\t0.5\t100.25\t40\n";
  const std::string products = "2\t1\t0.75\t200.25\t10\n";
  EXPECT_EQ(Rows({}), kPeak + kSurvey + kProducts + kZero);
  EXPECT_EQ(Rows({"--areas", "--centroid"}), kPeak + survey + products);
  EXPECT_EQ(Rows({"--areas", "--centroid", "2-"}), kPeak + kSurvey + products);
  EXPECT_EQ(Rows({"--areas", "--centroid=1"}), kPeak + survey + kProducts + kZero);
}

// ln 10, ln 20 and ln 10: the highest is the middle.
TEST_F(ConvertPointsTest, CentroidsHaveHeights) {
  EXPECT_EQ(Rows({"--centroid", "1", "--scans", "1", "--ms-level", "1", "--top", "1", "--mz", "-200"})
                .substr(0, 15),
            "1\t1\t0.5\t100.25\t");
}

// What follows the option is a path unless it is a list of levels.
TEST_F(ConvertPointsTest, LevelsAreNoPath) {
  const auto convert = [&](const std::vector<std::string>& arguments) {
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    return Count(result.output, "MS:1000127");  // centroid spectrum
  };
  EXPECT_EQ(convert({"convert", "--centroid", path_, "--function", "1,2", "--stdout"}), 3U);
  EXPECT_EQ(convert({"convert", "--centroid", "2", path_, "--function", "1,2", "--stdout"}), 1U);
  ExpectFailure(Run({"convert", path_, "--centroid=one"}), 2,
                "--centroid: \"one\" is not a list of numbers such as 1,3-5 (see zrml convert --help)");
}

// The scan without points has no peaks, either. What the file's own peaks are is not ours.
TEST_F(ConvertPointsTest, MzmlSaysWhatWasDone) {
  const std::string output = Converted({"--centroid", "--areas", "--function", "1,6"});
  ExpectHas(output, R"(<dataProcessingList count="2">
<dataProcessing id="conversion">
<processingMethod order="0" softwareRef="zrml">
<cvParam cvRef="MS" accession="MS:1000544" name="Conversion to mzML"/>
</processingMethod>
</dataProcessing>
<dataProcessing id="centroiding">
<processingMethod order="0" softwareRef="zrml">
<cvParam cvRef="MS" accession="MS:1000544" name="Conversion to mzML"/>
</processingMethod>
<processingMethod order="1" softwareRef="zrml">
<cvParam cvRef="MS" accession="MS:1000035" name="peak picking"/>
<userParam name="intensities" type="xsd:string" value="areas"/>
</processingMethod>
</dataProcessing>
</dataProcessingList>
)");
  ExpectHas(output,
            "id=\"function=1 process=0 scan=1\" defaultArrayLength=\"1\" "
            "dataProcessingRef=\"centroiding\">");
  EXPECT_EQ(Count(output, "dataProcessingRef=\"centroiding\""), 2U);
  EXPECT_EQ(Count(output, "MS:1000127"), 3U);
  EXPECT_EQ(Count(output, "MS:1000128"), 0U);
  ExpectHas(output, "<spectrumList count=\"3\" defaultDataProcessingRef=\"conversion\">");
  EXPECT_EQ(Count(Converted({"--function", "1"}), "peak picking"), 0U);
}

// 10 and 20 of the three points: lowest, highest, base peak and total are of what is written, the total ion
// chromatogram of what was measured.
TEST_F(ConvertPointsTest, MzmlDescribesThePointsThatAreWritten) {
  const std::string output = Converted({"--mz", "100-100.25", "--function", "1", "--scans", "1"});
  ExpectHas(output,
            "id=\"function=1 process=0 scan=1\" defaultArrayLength=\"2\" "
            "dataProcessingRef=\"filtering\">");
  ExpectHas(output, "name=\"highest observed m/z\" value=\"100.25\"");
  ExpectHas(output, "name=\"base peak intensity\" value=\"20\"");
  ExpectHas(output, "name=\"total ion current\" value=\"30\"");
  ExpectHas(output, R"(<dataProcessing id="filtering">
<processingMethod order="0" softwareRef="zrml">
<cvParam cvRef="MS" accession="MS:1000544" name="Conversion to mzML"/>
</processingMethod>
<processingMethod order="1" softwareRef="zrml">
<cvParam cvRef="MS" accession="MS:1001486" name="data filtering"/>
<userParam name="points" type="xsd:string" value="m/z 100 to 100.25"/>
</processingMethod>
</dataProcessing>
)");
}

TEST_F(ConvertPointsTest, FiltersOfPoints) {
  EXPECT_EQ(Rows({"--drop-zeros"}), kPeak + kSurvey + kProducts);
  EXPECT_EQ(Rows({"--min-intensity", "9"}), kPeak + kSurvey);
  EXPECT_EQ(Rows({"--mz", "200-556.25", "--top", "1"}), kPeak + "2\t1\t0.75\t200.25\t8\n");
  EXPECT_EQ(Rows({"--mz", "500-600"}), kPeak);
  // The least intensity is asked of centroids.
  EXPECT_EQ(Rows({"--centroid", "--areas", "--min-intensity", "10"}),
            "1\t1\t0.5\t100.25\t40\n2\t1\t0.75\t200.25\t10\n");
}

TEST_F(ConvertPointsTest, PolarityChoosesFunctions) {
  EXPECT_EQ(Rows({"--polarity", "negative"}), kProducts + kZero);
  EXPECT_EQ(Rows({"--polarity", "positive"}), kPeak + kSurvey);
  const std::string output = Converted({"--polarity", "negative"});
  EXPECT_EQ(Count(output, "<spectrum "), 1U);
  ExpectFailure(Run({"convert", path_, "--function", "1", "--polarity", "negative", "--stdout"}), 2,
                path_ + ": none of its scans is asked for");
}

TEST_F(ConvertPointsTest, MgfOfProfilesHasTheirPeaks) {
  const std::string output = Converted({"--format", "mgf", "--centroid", "--areas"});
  EXPECT_EQ(Count(output, "BEGIN IONS"), 1U);
  ExpectHas(output, "\n200.25 10\nEND IONS\n");
  ExpectFailure(Run({"convert", path_, "--format", "mgf", "--centroid", "1", "--stdout"}), 2,
                path_ +
                    ": scan 1 of function 2 is a profile, and MGF is for peaks (--centroid writes its "
                    "peaks, --profile the profile)");
}

// Filters leave nothing of it: readers of the format refuse spectra without points.
TEST_F(ConvertPointsTest, MgfLeavesOutSpectraWithoutPoints) {
  EXPECT_EQ(Converted({"--format", "mgf", "--centroid", "--mz", "300-400"}), "");
}

// Of a report: 200 and 50 per cent of it, of the first sample's scans of peaks.
TEST_F(ConvertPointsTest, ReportsAreFilteredToo) {
  path_ = Make("vials.rpt", Vials());
  const std::vector<std::string> report = {"--sample", "1", "--format", "tsv", "--top", "1", "--centroid"};
  EXPECT_EQ(Converted(report), kTitles + std::string("1\t1\t0.5\t100\t200\n1\t2\t1.5\t200\t50\n"));
}

}  // namespace
}  // namespace zrml::test
