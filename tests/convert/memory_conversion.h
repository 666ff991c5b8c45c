// Conversions of a source in memory into memory, for tests of what they write.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "convert/convert.h"
#include "convert/error.h"
#include "convert/native_path.h"
#include "tests/convert/fake_source.h"

namespace zrml::convert::test {

using zrml::test::FakeData;
using zrml::test::FakeFunction;
using zrml::test::FakePoints;
using zrml::test::FakeScan;
using zrml::test::KnownData;

class Text : public ByteSink {
 public:
  void Write(std::string_view bytes) override { text += bytes; }
  void Finish() override { isFinished = true; }

  std::string text;
  bool isFinished = false;
};

// Without index, compression and absorbance, which has many spectra.
inline Options Of(const std::string& functions, const std::string& scans = "1-") {
  Options options;
  options.isIndexed = false;
  options.arrays.isCompressed = false;
  options.selection.functions = FunctionSet::Parse(functions).value();
  options.selection.scans = NumberSet::Parse(scans).value();
  return options;
}

inline Options Within(const std::string& minutes) {
  Options options = Of("1-");
  options.selection.functions = {};
  options.selection.hasAbsorbance = true;
  options.selection.minutes = ParseTimeRange(minutes);
  return options;
}

inline Options As(Format format, Options options) {
  options.format = format;
  return options;
}

inline void ExpectHas(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), std::string::npos) << part << "is not in\n" << text;
}
inline void ExpectLacks(const std::string& text, const std::string& part) {
  EXPECT_EQ(text.find(part), std::string::npos) << part << "is in\n" << text;
}

inline std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class ConvertTest : public testing::Test {
 protected:
  ConvertTest() { directory_.WriteText("_DATA.DAT", "valid and sound"); }

  Result Convert(const Options& options, ByteSink& out, int workers = 1, const Hooks& hooks = {}) const {
    const std::string path = PathText(directory_.Path());
    SourceInUse source(path, workers, [&] { return zrml::test::OpenFake(data_, path); });
    return ConvertSample(source, 0, options, out, hooks);
  }

  std::string Converted(const Options& options, int workers = 1) const {
    Text out;
    const Result result = Convert(options, out, workers);
    EXPECT_TRUE(result.losses.empty());
    EXPECT_TRUE(result.notes.empty());
    EXPECT_TRUE(out.isFinished);
    return out.text;
  }

  void ExpectError(const Options& options, ErrorKind kind, const std::string& message,
                   const Hooks& hooks = {}) const {
    Text out;
    try {
      Convert(options, out, 1, hooks);
      ADD_FAILURE() << "no error: " << message;
    } catch (const Error& error) {
      EXPECT_EQ(error.Kind(), kind);
      EXPECT_EQ(error.Message(), message);
    }
    EXPECT_FALSE(out.isFinished);
  }

  FakeScan& Scan(std::size_t function, std::size_t scan) { return data_.functions[function].scans[scan]; }

  FakeData data_ = KnownData();
  TempDirectory directory_{"run.raw"};
};

}  // namespace zrml::convert::test
