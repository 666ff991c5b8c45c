// Decodes scans from bytes given by a test.
#pragma once

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "masslynx/scandata/scan_decoder.h"
#include "plugin/raw_spectra.h"
#include "tests/masslynx/scandata/scan_files.h"
#include "tests/support/byte_writer.h"

namespace zrml::masslynx {

using Values = HostVector<double>;
using Floats = std::vector<float>;

/// A function of one scan at offset 0 of its data file.
inline FunctionRecord FunctionOf(int dataFormat, std::uint32_t pointCount) {
  FunctionRecord function;
  function.number = 1;
  function.typeCode = 0;
  function.dataFormat = dataFormat;
  function.scanIndex.resize(1);
  function.scanIndex[0].pointCount = pointCount;
  return function;
}

/// The same with 32 channels: first the given masses, then 0.
inline FunctionRecord FunctionOf(int dataFormat, std::uint32_t pointCount, Floats startMasses,
                                 Floats endMasses = {}) {
  FunctionRecord function = FunctionOf(dataFormat, pointCount);
  startMasses.resize(32);
  endMasses.resize(32);
  function.startMasses = std::move(startMasses);
  function.endMasses = std::move(endMasses);
  return function;
}

struct Decoded {
  bool ok = false;
  bool unsorted = false;
  CZRMassSpectrum spectrum;

  Values Masses() const { return spectrum.MassVector(); }
  Values Intensities() const { return spectrum.IntensityVector(); }
};

inline Decoded DecodeFile(const platform::File& file, const FunctionRecord& function, int scan = 0,
                          const CZRMassSpectrum& container = {}) {
  Decoded decoded;
  decoded.spectrum = container;
  decoded.ok = plugin::DecodeScan(file, function, scan, decoded.spectrum, decoded.unsorted);
  return decoded;
}

/// Decodes from a data file of the given bytes.
inline Decoded Decode(const FileBytes& bytes, const FunctionRecord& function, int scan = 0,
                      const CZRMassSpectrum& container = {}) {
  return DecodeFile(OpenDataFile(bytes), function, scan, container);
}

inline Decoded Decode(const std::string& hex, const FunctionRecord& function, int scan = 0,
                      const CZRMassSpectrum& container = {}) {
  return Decode(HexToBytes(hex), function, scan, container);
}

/// A container that has been used before: masses 1001, 1002, ... and intensities -1, -2, ...
inline CZRMassSpectrum Used(int count) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(count);
  for (int i = 0; i < count; ++i) {
    spectrum.SetMass(i, 1001 + i);
    spectrum.SetIntensity(i, -1 - i);
  }
  return spectrum;
}

inline void ExpectUntouched(const Decoded& decoded) {
  EXPECT_FALSE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  EXPECT_EQ(decoded.spectrum.GetCount(), 3);
  EXPECT_EQ(decoded.Masses(), (Values{1001, 1002, 1003}));
  EXPECT_EQ(decoded.Intensities(), (Values{-1, -2, -3}));
}

/// 10, 20, 30, ...
inline Floats AscendingMasses(std::size_t count) {
  Floats masses;
  while (masses.size() < count) masses.push_back(10.0F * static_cast<float>(masses.size() + 1));
  return masses;
}

}  // namespace zrml::masslynx
