#include "masslynx/scandata/absorbance_decoder.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/raw_spectra.h"
#include "tests/masslynx/scandata/scan_files.h"
#include "tests/support/byte_writer.h"

namespace zrml::masslynx {
namespace {

using Values = HostVector<double>;

/// An absorbance function of one scan at 2.5 minutes.
FunctionRecord FunctionOf(int dataFormat, std::uint32_t pointCount) {
  FunctionRecord function;
  function.number = 3;
  function.typeCode = 12;
  function.dataFormat = dataFormat;
  function.scanIndex.resize(1);
  function.scanIndex[0].pointCount = pointCount;
  function.scanIndex[0].retentionTime = 2.5F;
  return function;
}

struct Decoded {
  bool ok = false;
  CZRAbsorbanceSpectrum spectrum;
};

Decoded Decode(const FileBytes& bytes, const FunctionRecord& function, int scan = 0,
               const CZRAbsorbanceSpectrum& container = {}) {
  Decoded decoded{false, container};
  decoded.ok = plugin::DecodeAbsorbanceScan(OpenDataFile(bytes), function, scan, decoded.spectrum);
  return decoded;
}

Decoded Decode(const std::string& hex, const FunctionRecord& function, int scan = 0,
               const CZRAbsorbanceSpectrum& container = {}) {
  return Decode(HexToBytes(hex), function, scan, container);
}

/// A container that has been used before: wavelengths 1001, 1002, ... and absorbances -1, -2, ...
CZRAbsorbanceSpectrum Used(int count) {
  CZRAbsorbanceSpectrum spectrum;
  spectrum.SetSize(count);
  for (int i = 0; i < count; ++i) {
    spectrum.SetWavelength(i, 1001 + i);
    spectrum.SetAbsorbance(i, -1 - i);
  }
  spectrum.SetTime(77);
  spectrum.SetScan(88);
  return spectrum;
}

// Words 0x0019 (3 x 4), 0x0010 (2), 0xFFFF (8191 x 4^7) and, of the padding point, 0. Raw 0x019000 = 100 x
// 1024, 0x032000 = 200 x 1024, 0xFFFFFF over 1024, 0.
constexpr const char* kThreePoints1 = "19 00 10 00 00 90 01 00 20 03  FF FF 00 00 FF FF FF 00 00 00";

// -32768 x 4^5 at 2^9 x 0.5 (word 0x80000095); 1 x 4^15 at 2^31 (1 - 2^-23).
constexpr const char* kTwoPoints9 = "00 80 95 00 00 80  01 00 FF FF FF FF";

TEST(AbsorbanceDecoder, Format1DecodesPairs) {
  const Decoded decoded = Decode(kThreePoints1, FunctionOf(1, 3));
  EXPECT_TRUE(decoded.ok);
  EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{100, 200, 16383.9990234375}));
  EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{12, 2, 134201344}));
}

TEST(AbsorbanceDecoder, Format9DecodesPoints) {
  const Decoded decoded = Decode(kTwoPoints9, FunctionOf(9, 2));
  EXPECT_TRUE(decoded.ok);
  EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{256, 2147483392.0}));
  EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{-33554432, 0x1p30}));
}

TEST(AbsorbanceDecoder, TimeIsTheRetentionTimeAndTheScanNumberDeliberatelyThePosition) {
  FunctionRecord function = FunctionOf(9, 1);
  function.scanIndex.resize(3);
  function.scanIndex[2].pointCount = 1;
  function.scanIndex[2].dataOffset = 6;
  function.scanIndex[2].retentionTime = 0.1F;
  const Decoded first = Decode(kTwoPoints9, function, 0, Used(1));
  EXPECT_EQ(first.spectrum.StartTime(), 2.5);
  EXPECT_EQ(first.spectrum.EndTime(), 2.5);
  EXPECT_EQ(first.spectrum.FirstScan(), 0);
  EXPECT_EQ(first.spectrum.LastScan(), 0);
  const Decoded third = Decode(kTwoPoints9, function, 2, Used(1));
  EXPECT_EQ(third.spectrum.Absorbances(), Values{0x1p30});
  EXPECT_EQ(third.spectrum.StartTime(), 0x1.99999ap-4);  // 0.1 in single precision
  EXPECT_EQ(third.spectrum.EndTime(), 0x1.99999ap-4);
  EXPECT_EQ(third.spectrum.FirstScan(), 2);
  EXPECT_EQ(third.spectrum.LastScan(), 2);
}

TEST(AbsorbanceDecoder, OtherFormatsFailAndTouchNothing) {
  for (const int dataFormat :
       {std::numeric_limits<int>::min(), -1, 0, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 16, 17, 25,
        std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(dataFormat);
    FunctionRecord function = FunctionOf(dataFormat, 2);
    function.startMasses.assign(32, 1);
    function.endMasses.assign(32, 2);
    const Decoded decoded = Decode(FileBytes(64, std::byte{0x55}), function, 0, Used(3));
    EXPECT_FALSE(decoded.ok);
    EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{1001, 1002, 1003}));
    EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{-1, -2, -3}));
    EXPECT_EQ(decoded.spectrum.StartTime(), 77.0);
    EXPECT_EQ(decoded.spectrum.FirstScan(), 88);
  }
}

TEST(AbsorbanceDecoder, ScanOutsideTheIndexFailsAndTouchesNothing) {
  for (const int dataFormat : {1, 9}) {
    for (const int scan : {-1, 1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
      const Decoded decoded = Decode(kThreePoints1, FunctionOf(dataFormat, 2), scan, Used(3));
      EXPECT_FALSE(decoded.ok);
      EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{1001, 1002, 1003}));
      EXPECT_EQ(decoded.spectrum.StartTime(), 77.0);
    }
  }
}

TEST(AbsorbanceDecoder, WavelengthsAreNotCalibrated) {
  for (const int dataFormat : {1, 9}) {
    FunctionRecord function = FunctionOf(dataFormat, 2);
    function.functionCal.coefficients = {1000, 2};
    function.scanIndex[0].temperatureValid = true;
    function.scanIndex[0].temperature = 500000;
    function.scanIndex[0].temperatureCoefficient = 1;
    const Decoded decoded = Decode(dataFormat == 1 ? kThreePoints1 : kTwoPoints9, function);
    EXPECT_EQ(decoded.spectrum.Wavelengths()[0], dataFormat == 1 ? 100.0 : 256.0);
  }
}

TEST(AbsorbanceDecoder, ScanOfNoPointsIsAnEmptySpectrumWithItsTime) {
  for (const int dataFormat : {1, 9}) {
    const Decoded decoded = Decode(kThreePoints1, FunctionOf(dataFormat, 0), 0, Used(3));
    EXPECT_TRUE(decoded.ok);
    EXPECT_TRUE(decoded.spectrum.Wavelengths().empty());
    EXPECT_TRUE(decoded.spectrum.Absorbances().empty());
    EXPECT_EQ(decoded.spectrum.StartTime(), 2.5);
    EXPECT_EQ(decoded.spectrum.LastScan(), 0);
  }
}

// Deliberate: here the wavelength decides, in mass spectra of the same layout the mantissa.

TEST(AbsorbanceDecoder, SecondPointWithoutWavelengthIsDeliberatelyNotWritten) {
  const std::string written = "08 00 10 00 00 90 01 01 00 00";     // raw 1
  const std::string notWritten = "08 00 10 00 00 90 01 00 00 00";  // raw 0
  const Decoded control = Decode(written, FunctionOf(1, 2), 0, Used(2));
  EXPECT_EQ(control.spectrum.Wavelengths(), (Values{100, 0x1p-10}));
  EXPECT_EQ(control.spectrum.Absorbances(), (Values{1, 2}));

  const Decoded fresh = Decode(notWritten, FunctionOf(1, 2));
  EXPECT_EQ(fresh.spectrum.Wavelengths(), (Values{100, 0}));
  EXPECT_EQ(fresh.spectrum.Absorbances(), (Values{1, 0}));
  for (const int used : {2, 5}) {
    const Decoded kept = Decode(notWritten, FunctionOf(1, 2), 0, Used(used));
    EXPECT_EQ(kept.spectrum.Wavelengths(), (Values{100, 1002}));
    EXPECT_EQ(kept.spectrum.Absorbances(), (Values{1, -2}));
  }
  const Decoded grown = Decode(notWritten, FunctionOf(1, 2), 0, Used(1));
  EXPECT_EQ(grown.spectrum.Wavelengths(), (Values{100, 0}));
  EXPECT_EQ(grown.spectrum.Absorbances(), (Values{1, 0}));
}

TEST(AbsorbanceDecoder, SecondPointWithoutMantissaIsWritten) {
  const Decoded decoded = Decode("08 00 07 00 00 90 01 00 20 03", FunctionOf(1, 2), 0, Used(2));
  EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{100, 200}));
  EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{1, 0}));
}

TEST(AbsorbanceDecoder, FirstPointIsWrittenWhateverItHolds) {
  const Decoded decoded = Decode("07 00 08 00 00 00 00 00 20 03", FunctionOf(1, 2), 0, Used(2));
  EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{0, 200}));
  EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{0, 1}));
}

TEST(AbsorbanceDecoder, PaddingPointIsNeverWritten) {
  const std::string bytes = "08 00 10 00 00 90 01 00 20 03";
  const Decoded decoded = Decode(bytes, FunctionOf(1, 1), 0, Used(2));
  EXPECT_EQ(decoded.spectrum.Wavelengths(), Values{100});
  EXPECT_EQ(decoded.spectrum.Absorbances(), Values{1});
  EXPECT_EQ(Decode(bytes, FunctionOf(1, 2)).spectrum.Wavelengths(), (Values{100, 200}));  // the control
}

TEST(AbsorbanceDecoder, StartsAtTheDataOffset) {
  FunctionRecord function = FunctionOf(9, 1);
  function.scanIndex[0].dataOffset = 6;
  EXPECT_EQ(Decode(kTwoPoints9, function).spectrum.Wavelengths(), Values{2147483392.0});
  for (const std::uint32_t offset : {12U, 0x80000000U, 0xFFFFFFFFU}) {
    function.scanIndex[0].dataOffset = offset;
    const Decoded behind = Decode(kTwoPoints9, function, 0, Used(1));
    EXPECT_TRUE(behind.ok);
    EXPECT_EQ(behind.spectrum.Wavelengths(), Values{0}) << offset;
    EXPECT_EQ(behind.spectrum.Absorbances(), Values{0}) << offset;
  }
}

TEST(AbsorbanceDecoder, Format9FileCutAtEveryLengthReadsAsZeroBytes) {
  const FileBytes whole = HexToBytes(kTwoPoints9);
  // By the number of bytes left of the first and of the second point.
  const Values firstWavelengths = {0, 0, 0, 0, 0, 0, 256};
  const Values firstAbsorbances = {0, 0, -32768, -33554432, -33554432, -33554432, -33554432};
  const Values secondWavelengths = {
      0, 0, 0, 0, 0x1p31 * 0x7Fp-23, 0x1p31 * 0x7FFFp-23, 0x1p31 * 0x7FFFFFp-23};
  const Values secondAbsorbances = {0, 1, 1, 0x1p30, 0x1p30, 0x1p30, 0x1p30};
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const std::size_t first = std::min<std::size_t>(length, 6);
    const std::size_t second = length - first;
    const Decoded decoded =
        Decode(FileBytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)),
               FunctionOf(9, 2), 0, Used(2));
    EXPECT_TRUE(decoded.ok);
    EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{firstWavelengths[first], secondWavelengths[second]}));
    EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{firstAbsorbances[first], secondAbsorbances[second]}));
  }
}

TEST(AbsorbanceDecoder, Format1FileCutAtEveryLengthReadsAsZeroBytes) {
  // One pair: 1 at 0x010203 / 1024 and 2 at 0x060504 / 1024.
  const FileBytes whole = HexToBytes("08 00 10 00 03 02 01 04 05 06");
  const Values raw0 = {0, 0, 0, 0, 0, 0x03, 0x0203, 0x010203, 0x010203, 0x010203, 0x010203};
  const Values raw1 = {0, 0, 0, 0, 0, 0, 0, 0, 0x04, 0x0504, 0x060504};
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const Decoded decoded = Decode(
        FileBytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), FunctionOf(1, 2));
    EXPECT_TRUE(decoded.ok);
    EXPECT_EQ(decoded.spectrum.Wavelengths(), (Values{raw0[length] / 1024, raw1[length] / 1024}));
    const double secondAbsorbance = raw1[length] != 0 ? 2 : 0;
    EXPECT_EQ(decoded.spectrum.Absorbances(), (Values{length > 0 ? 1.0 : 0.0, secondAbsorbance}));
  }
}

}  // namespace
}  // namespace zrml::masslynx
