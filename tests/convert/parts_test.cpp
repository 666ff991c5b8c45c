// The parts of the conversion.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "convert/base64.h"
#include "convert/byte_sink.h"
#include "convert/date_time.h"
#include "convert/instrument_model.h"
#include "convert/mzml_arrays.h"
#include "convert/selection.h"
#include "convert/sha1.h"
#include "convert/trace_kind.h"
#include "convert/xml.h"

namespace zrml::convert::test {
namespace {

std::span<const std::byte> BytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

std::string Base64Of(std::string_view text) {
  std::string out = "x";  // existing text stays
  AppendBase64(BytesOf(text), out);
  return out;
}

// RFC 4648, section 10.
TEST(Base64Test, KnownTexts) {
  EXPECT_EQ(Base64Of(""), "x");
  EXPECT_EQ(Base64Of("f"), "xZg==");
  EXPECT_EQ(Base64Of("fo"), "xZm8=");
  EXPECT_EQ(Base64Of("foo"), "xZm9v");
  EXPECT_EQ(Base64Of("foob"), "xZm9vYg==");
  EXPECT_EQ(Base64Of("fooba"), "xZm9vYmE=");
  EXPECT_EQ(Base64Of("foobar"), "xZm9vYmFy");
  EXPECT_EQ(Base64Of("\xFB\xFF\xBF"), "x+/+/");  // 111110 111111 111110 111111
}

// Bit by bit; padded.
std::string PlainBase64Of(std::string_view text) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out = "x";
  for (std::size_t bit = 0; bit < text.size() * 8; bit += 6) {
    unsigned six = 0;
    for (std::size_t at = bit; at < bit + 6; ++at) {
      const unsigned byte = at / 8 < text.size() ? static_cast<unsigned char>(text[at / 8]) : 0;
      six = six << 1 | (byte >> (7 - at % 8) & 1);
    }
    out.push_back(kAlphabet[six]);
  }
  while (out.size() % 4 != 1) out.push_back('=');
  return out;
}

// Also around the lengths of the vectors and blocks used for long texts.
TEST(Base64Test, AllLengthsAndBytes) {
  std::string bytes;
  for (unsigned i = 0; i < 10000; ++i) bytes.push_back(static_cast<char>(i * 167 + i / 256));
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const std::string_view text = std::string_view(bytes).substr(0, size);
    if (size > 1000 && size % 3072 > 20 && size % 3072 < 3060) continue;
    ASSERT_EQ(Base64Of(text), PlainBase64Of(text)) << size;
  }
}

// FIPS 180, the examples.
TEST(Sha1Test, KnownTexts) {
  EXPECT_EQ(Sha1().Finish(), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
  Sha1 whole;
  whole.Add(BytesOf("abc"));
  EXPECT_EQ(whole.Finish(), "a9993e364706816aba3e25717850c26c9cd0d89d");
  Sha1 parts;
  parts.Add(BytesOf("abcdbcdecdefdefgefghfghighij"));
  parts.Add(BytesOf("hijkijkljklmklmnlmnomnopnopq"));
  EXPECT_EQ(parts.Finish(), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
}

TEST(XmlTest, MarkupAndLineEndsBecomeReferences) {
  EXPECT_EQ(XmlText("a&b<c>\"d\"'e'"), "a&amp;b&lt;c&gt;&quot;d&quot;'e'");
  EXPECT_EQ(XmlText("\t\n\r"), "&#9;&#10;&#13;");
  EXPECT_EQ(XmlText("\xC3\xA9"), "\xC3\xA9");
}

TEST(XmlTest, ForbiddenCharactersAreReplaced) {
  constexpr const char* kReplacement = "\xEF\xBF\xBD";
  EXPECT_EQ(XmlText(std::string(1, '\0')), kReplacement);
  EXPECT_EQ(XmlText("\x1F"), kReplacement);
  EXPECT_EQ(XmlText("\xEF\xBF\xBE"), kReplacement);
  EXPECT_EQ(XmlText("\xEF\xBF\xBF"), kReplacement);
  EXPECT_EQ(XmlText("\xE9 \xC3"), kReplacement + std::string(" ") + kReplacement);  // not UTF-8
  EXPECT_EQ(XmlText("\x7F\xEF\xBF\xBD"), std::string("\x7F") + kReplacement);       // allowed
}

TEST(XmlTest, IdentifiersKeepPlainCharacters) {
  EXPECT_EQ(XmlIdPart("run_1-A.b"), "run_1-A.b");
  EXPECT_EQ(XmlIdPart("1 a:\xC3\xA9&"), "1_a___");
}

TEST(DateTimeTest, DaysThatThereAre) {
  for (const char* text :
       {"2026-11-14T09:15:00", "2026-11-14T23:59:59.25", "2024-02-29T00:00:00", "2000-02-29T00:00:00"}) {
    EXPECT_EQ(XmlDateTime(text), text);
  }
}

TEST(DateTimeTest, FormsWithoutDoubt) {
  EXPECT_EQ(XmlDateTime("2021-03-5T09:15:00"), "2021-03-05T09:15:00");
  EXPECT_EQ(XmlDateTime("2021-3-15T9:15:00"), "2021-03-15T09:15:00");
  EXPECT_EQ(XmlDateTime("14-Nov-2026T09:15:00"), "2026-11-14T09:15:00");
  EXPECT_EQ(XmlDateTime("4-OCT-2026T09:15:00.5"), "2026-10-04T09:15:00.5");
}

TEST(DateTimeTest, AnythingElseIsRefused) {
  for (const char* text : {"",
                           "T",
                           "2021-00-05T09:15:00",
                           "2021-13-05T09:15:00",
                           "2021-03-00T09:15:00",
                           "2021-03-32T09:15:00",
                           "2023-02-29T09:15:00",
                           "1900-02-29T09:15:00",
                           "2021-04-31T09:15:00",
                           "2021-03-05T24:00:00",
                           "2021-03-05T09:60:00",
                           "2021-03-05T09:15:60",
                           "2021-03-05T09:15",
                           "2021-03-05T09:15:00.",
                           "2021-03-05T09:15:00+00:00",
                           "0000-03-05T09:15:00",
                           "2021-03-05 09:15:00",
                           "2021-03-05T09:15:0",
                           "2021-03-05T09:5:00",
                           "2021-03-005T09:15:00",
                           "03-05-2021T09:15:00",
                           "5-Mar-21T09:15:00",
                           "5-Mai-2021T09:15:00",
                           "05/03/2021T09:15:00",
                           "-2021-03-05T09:15:00",
                           "2021-03-05-1T09:15:00",
                           "2021-03-05T09:15:00 PM"}) {
    EXPECT_EQ(XmlDateTime(text), std::nullopt) << text;
  }
}

TEST(InstrumentModelTest, UnambiguousNames) {
  EXPECT_EQ(InstrumentModel("Xevo G2 Q-Tof").accession, "MS:1001783");
  EXPECT_EQ(InstrumentModel("XEVO-G2QTOF#YCA123").accession, "MS:1001783");
  EXPECT_EQ(InstrumentModel("SYNAPT G2-Si").accession, "MS:1002726");
  EXPECT_EQ(InstrumentModel("m@ldi lr").accession, "MS:1000171");
}

TEST(InstrumentModelTest, OthersAreAnyModel) {
  for (const char* text : {"", "QTOF-SIM", "Xevo", "Xevo G2 Q-Tof II", "maldi lr", "#GCT"}) {
    EXPECT_EQ(InstrumentModel(text).accession, "MS:1000126");
  }
}

struct TraceCase {
  const char* name;
  const char* ofSample;  // or of a function that records something unknown
  const char* ofMasses;  // of a function with scans of masses
};

// Whole words count, and not those of things that such a function cannot have recorded.
TEST(TraceTypeTest, IsWhatTheNameSays) {
  constexpr const char* kIons = "ion current chromatogram";
  constexpr const char* kAbsorption = "absorption chromatogram";
  const TraceCase cases[] = {
      {"System Pressure", "pressure chromatogram", kIons},
      {"FLOW rate (mL/min)", "flow rate chromatogram", kIons},
      {"PDA - Total Absorbance", kAbsorption, kIons},
      {"UV 254", kAbsorption, kIons},
      {"2: TUV", kAbsorption, kIons},
      {"210nm", kAbsorption, kIons},
      {"%B", kIons, kIons},
      {"", kIons, kIons},
      {"Suva", kIons, kIons},  // no word that counts, only a part of one
      {"Workflow 3 TIC", kIons, "total ion current chromatogram"},
      {"BPI overflow", kIons, "basepeak chromatogram"},
      {"(UV-trig)", kIons, kIons},
      {"ionisation pressure", kIons, kIons},  // of the source, not of a pump
  };
  using source::FunctionKind;
  for (const TraceCase& trace : cases) {
    EXPECT_EQ(TraceType(trace.name).name, trace.ofSample) << trace.name;
    EXPECT_EQ(TraceType(trace.name, FunctionKind::kOther).name, trace.ofSample) << trace.name;
    for (const FunctionKind kind : {FunctionKind::kMs, FunctionKind::kMsMs, FunctionKind::kIonMonitoring})
      EXPECT_EQ(TraceType(trace.name, kind).name, trace.ofMasses) << trace.name;
    EXPECT_EQ(TraceType(trace.name, FunctionKind::kAbsorbance).name, kAbsorption) << trace.name;
  }
}

// The members of a list of numbers from 1 to 9.
std::string Members(const std::string& list) {
  const std::optional<NumberSet> set = NumberSet::Parse(list);
  if (!set) return "none";
  std::string members;
  for (int number = 1; number <= 9; ++number) members += set->Has(number) ? std::to_string(number) : "";
  return members;
}

TEST(SelectionTest, ListsOfNumbers) {
  EXPECT_EQ(Members("3"), "3");
  EXPECT_EQ(Members("1,4-6"), "1456");
  EXPECT_EQ(Members("7-"), "789");
  EXPECT_EQ(Members("9,2-3,3"), "239");
  EXPECT_TRUE(NumberSet::Parse("7-")->Has(2147483647));
  EXPECT_TRUE(NumberSet().Has(1));
  EXPECT_TRUE(NumberSet().IsAll());
  EXPECT_FALSE(NumberSet::Parse("1-")->IsAll());
}

TEST(SelectionTest, OtherTextsAreNoLists) {
  for (const char* text :
       {"", ",", "1,", "0", "-3", "-", "3-2", "1-2-3", "a", "1.5", " 1", "+1", "2147483648"}) {
    EXPECT_EQ(Members(text), "none") << text;
  }
}

// The members of a list among the acquired functions 1 to 4 and processed ones.
std::string FunctionsIn(const std::string& list) {
  const std::optional<FunctionSet> set = FunctionSet::Parse(list);
  if (!set) return "none";
  std::string members;
  for (const char* const name : {"1", "2", "3", "4", "p1", "p2", "p2.2"}) {
    if (set->Has(source::ParseFunctionId(name).value())) members += std::string(name) + " ";
  }
  return members;
}

TEST(SelectionTest, FunctionsAreListedByTheirNames) {
  EXPECT_EQ(FunctionsIn("4"), "4 ");
  EXPECT_EQ(FunctionsIn("1,3-5"), "1 3 4 ");
  EXPECT_EQ(FunctionsIn("2-"), "2 3 4 ");  // acquired ones
  EXPECT_EQ(FunctionsIn("p2"), "p2 ");
  EXPECT_EQ(FunctionsIn("3,p2.2,p1"), "3 p1 p2.2 ");
  EXPECT_TRUE(FunctionSet().Has({.number = 3, .process = 7}));
  EXPECT_TRUE(FunctionSet().IsAll());
  EXPECT_FALSE(FunctionSet::Parse("p1")->IsAll());
  // The raw function behind a processed one does not count.
  EXPECT_TRUE(FunctionSet::Parse("p2")->Has({.number = 3, .process = 2}));
  EXPECT_FALSE(FunctionSet::Parse("3")->Has({.number = 3, .process = 2}));
}

TEST(SelectionTest, OtherTextsAreNoListsOfFunctions) {
  for (const char* text : {"", ",", "1,", "0", "p", "p0", "p1-3", "p2.0", "p2.", "P2", "1,,2", "a", "-3"}) {
    EXPECT_EQ(FunctionsIn(text), "none") << text;
  }
}

TEST(SelectionTest, TimeRanges) {
  Selection selection;
  EXPECT_TRUE(selection.HasTime(std::numeric_limits<double>::quiet_NaN()));
  selection.minutes = ParseTimeRange("0.5-3");
  ASSERT_TRUE(selection.minutes);
  EXPECT_TRUE(selection.HasTime(0.5));
  EXPECT_TRUE(selection.HasTime(3));
  EXPECT_TRUE(selection.HasTime(3.0000001));  // is printed as 3
  EXPECT_FALSE(selection.HasTime(3.000001));
  EXPECT_FALSE(selection.HasTime(0.4999999));
  EXPECT_FALSE(selection.HasTime(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(ParseTimeRange("2-")->high, std::numeric_limits<double>::infinity());
  EXPECT_EQ(ParseTimeRange("-7.25")->low, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(ParseTimeRange("-7.25")->high, 7.25);
  for (const char* text : {"", "-", "3", "3-2", "1-2-3", "a-b", "1e3-2e3", " 1-2"}) {
    EXPECT_FALSE(ParseTimeRange(text)) << text;
  }
}

TEST(SelectionTest, Decimals) {
  const std::vector<std::pair<const char*, double>> numbers = {
      {"0", 0}, {"12.5", 12.5}, {".5", 0.5}, {"5.", 5}, {"007", 7}, {"100000000000000000000", 1e20}};
  for (const auto& [text, number] : numbers) EXPECT_EQ(ParseDecimal(text), number) << text;
  for (const std::string text :
       {"", ".", "1e2", "1E2", "-1", "+1", "1,5", "1.2.3", "0x1", "inf", "nan", " 1", "1 "})
    EXPECT_FALSE(ParseDecimal(text)) << text;
  EXPECT_FALSE(ParseDecimal(std::string(400, '9'))) << "beyond the range of numbers";
}

std::string ArrayOf(Precision precision, const std::vector<double>& values) {
  std::string out;
  ArrayWriter({.isCompressed = false}).Append(out, {cv::kMzArray, &cv::kMzUnit, precision}, values);
  return out;
}

// 100 is 0x42C80000 in single precision: bytes 00 00 C8 42.
TEST(ArrayTest, NumbersOfSinglePrecisionTake32Bits) {
  const std::string array = ArrayOf(Precision::kExact, {100});
  EXPECT_EQ(array,
            "<binaryDataArray encodedLength=\"8\">\n"
            "<cvParam cvRef=\"MS\" accession=\"MS:1000521\" name=\"32-bit float\"/>\n"
            "<cvParam cvRef=\"MS\" accession=\"MS:1000576\" name=\"no compression\"/>\n"
            "<cvParam cvRef=\"MS\" accession=\"MS:1000514\" name=\"m/z array\" unitCvRef=\"MS\" "
            "unitAccession=\"MS:1000040\" unitName=\"m/z\"/>\n"
            "<binary>AADIQg==</binary>\n"
            "</binaryDataArray>\n");
}

// 0.1 is 0x3FB999999999999A: bytes 9A 99 99 99 99 99 B9 3F.
TEST(ArrayTest, OneNumberOfDoublePrecisionMakesAllTake64Bits) {
  const std::string array = ArrayOf(Precision::kExact, {0.1, 1});
  EXPECT_NE(array.find("64-bit float"), std::string::npos);
  EXPECT_NE(array.find("<binary>mpmZmZmZuT8AAAAAAADwPw==<"), std::string::npos) << array;
}

TEST(ArrayTest, RequestedPrecisionIsKept) {
  EXPECT_NE(ArrayOf(Precision::kDouble, {1}).find("<binary>AAAAAAAA8D8=<"), std::string::npos);
  // 0.1 rounds to 0x3DCCCCCD
  EXPECT_NE(ArrayOf(Precision::kSingle, {0.1}).find("<binary>zczMPQ==<"), std::string::npos);
}

TEST(ArrayTest, NumbersThatSinglePrecisionLacks) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto is64 = [](double value) {
    return ArrayOf(Precision::kExact, {value}).find("64-bit") != std::string::npos;
  };
  EXPECT_FALSE(is64(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_FALSE(is64(kInfinity));
  EXPECT_FALSE(is64(-kInfinity));
  EXPECT_FALSE(is64(-0.0));
  EXPECT_FALSE(is64(16777216));
  EXPECT_TRUE(is64(16777217));
  EXPECT_TRUE(is64(1e300));
  EXPECT_TRUE(is64(5e-324));
}

TEST(ArrayTest, OneSuchNumberCountsAtAnyPlace) {
  for (std::size_t size = 1; size <= 9; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      std::vector<double> values(size, 1.5);
      EXPECT_EQ(ArrayOf(Precision::kExact, values).find("64-bit"), std::string::npos) << size;
      values[at] = 0.1;
      EXPECT_NE(ArrayOf(Precision::kExact, values).find("64-bit"), std::string::npos) << at << " of " << size;
    }
  }
}

TEST(ArrayTest, ArrayWithoutNumbersIsNotCompressed) {
  std::string out;
  ArrayWriter({}).Append(out, {cv::kMzArray, &cv::kMzUnit, Precision::kExact}, {});
  EXPECT_NE(out.find("no compression"), std::string::npos);
  EXPECT_NE(out.find("<binary></binary>"), std::string::npos);
}

class Pieces : public ByteSink {
 public:
  void Write(std::string_view bytes) override { all.emplace_back(bytes); }

  std::vector<std::string> all;
};

// With either library; which level is smaller depends on the data.
TEST(DeflaterTest, LevelsDifferAndInflateToTheSame) {
  std::vector<float> values;
  for (int i = 0; i < 4000; ++i) {
    values.push_back(100 + static_cast<float>(i) / 16);
    values.push_back(static_cast<float>(i * 7919 % 1009));
  }
  const std::span<const std::byte> bytes = std::as_bytes(std::span(values));
  std::vector<std::byte> last;
  for (const int level : {1, 9}) {
    Deflater deflater(Deflater::Wrapper::kGzip, level);
    const std::span<const std::byte> packed = deflater.Compress(bytes);
    EXPECT_LT(packed.size(), bytes.size()) << level;
    EXPECT_FALSE(std::ranges::equal(packed, last)) << level;
    last.assign(packed.begin(), packed.end());
    const auto inflated = InflateGzip(packed, bytes.size());
    ASSERT_TRUE(inflated.has_value());
    EXPECT_TRUE(std::ranges::equal(*inflated, bytes));
  }
}

TEST(BufferedSinkTest, GathersShortWritesAndHandsLongOnesOn) {
  Pieces pieces;
  BufferedSink sink(pieces);
  const std::string isLong(1u << 14, 'l');
  sink.Write("a");
  sink.Write("b");
  sink.Write(isLong);
  sink.Write(isLong.substr(1));
  sink.Write("c");
  sink.Finish();
  EXPECT_EQ(pieces.all, (std::vector<std::string>{"ab", isLong, isLong.substr(1) + "c"}));
}

TEST(BufferedSinkTest, NothingIsStillWritten) {
  Pieces pieces;
  BufferedSink sink(pieces);
  sink.Finish();
  EXPECT_EQ(pieces.all, std::vector<std::string>{""});
}

}  // namespace
}  // namespace zrml::convert::test
