// The description of one acquisition function, from the function table, the header and the side files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/platform/platform.h"

namespace zrml::masslynx {

/// One scan of a function.
struct ScanIndexEntry {
  std::uint32_t dataOffset = 0;  ///< in the data file, its low 32 bits
  std::uint32_t pointCount = 0;  ///< stored points, 22 bits
  float totalIntensity = 0;
  float retentionTime = 0;  ///< minutes
  // From the statistics file; 0 if there is none.
  float auxValue = 0;
  float temperature = 0;
  float temperatureCoefficient = 0;  ///< parts per million per degree
  float precursorMass = 0;           ///< valid when bit 0 of precursorFlags is set
  std::uint16_t precursorFlags = 0;
  std::uint16_t dataOffsetHigh = 0;  ///< of an offset that the index omits; see IndexView
  std::uint8_t segment = 0;          ///< of the calibration, 1 to 31; 0 none
  bool temperatureValid = false;
  bool centroided = false;
  bool preCalibrated = false;  ///< masses are stored calibrated

  std::uint64_t DataOffset() const { return std::uint64_t{dataOffsetHigh} << 32 | dataOffset; }

  /// As far as an entry reaches. No file is as long: a scan whose offset is lost has this one.
  static constexpr std::uint64_t kLostOffset = (std::uint64_t{1} << 48) - 1;
  bool HasLostOffset() const { return DataOffset() == kLostOffset; }
  void SetDataOffset(std::uint64_t offset) {
    dataOffset = static_cast<std::uint32_t>(offset);
    dataOffsetHigh = static_cast<std::uint16_t>(offset >> 32);
  }
};

static_assert(sizeof(ScanIndexEntry) == 40, "there are millions of them");

/// A polynomial c0 + c1 x + c2 x^2 + ... Empty: not given. With `root` it applies to the square root of the
/// mass.
struct CalibrationPolynomial {
  std::vector<double> coefficients;
  bool root = false;
};

struct FunctionRecord {
  static constexpr int kNoFunction = -1;
  /// Type, ionisation mode and layout of a record that is lost: their codes have five bits at most.
  static constexpr int kLostCode = 32;

  /// A label may have given it a type.
  bool IsLost() const { return dataFormat == kLostCode; }

  std::uint16_t number = 0;     ///< from 1; the process number of a processed function
  bool processed = false;       ///< made by a later processing step; from the history
  std::uint16_t rawNumber = 0;  ///< of a processed function: its original raw function
  int repeat = 1;               ///< among processed functions that share a process number
  bool hasDataFile = false;     ///< that can be opened
  int typeCode = kNoFunction;
  int ionMode = 0;
  int dataFormat = 0;  ///< scan data layout
  float scanTime = 0;  ///< seconds
  std::uint16_t defaultScanValue = 0;
  float setMass = 0;               ///< precursor m/z of MS/MS functions
  std::vector<float> startMasses;  ///< of the 32 channels; none for type 17
  std::vector<float> endMasses;

  CalibrationPolynomial dynamicCal;
  CalibrationPolynomial functionCal;
  CalibrationPolynomial staticCal;
  CalibrationPolynomial modificationCal;
  std::vector<CalibrationPolynomial> segmentCals;  ///< segment number - 1
  bool hasUnreachableSegmentCal = false;  ///< a calibrated segment has a number that no scan can have
  float calTemperature = 0;               ///< reference temperature, degrees

  platform::SystemPath dataFilePath;  ///< where the data file was last found
  std::vector<ScanIndexEntry> scanIndex;
  bool calibrationConstant = false;    ///< every scan converts masses the same way
  std::vector<double> cachedMassAxis;  ///< of mobility data, m/z; filled only when calibrationConstant

  std::vector<std::uint16_t> processChain;  ///< process codes, oldest first
  bool hasMobilityData = false;
  std::wstring label;
  bool sharesName = false;  ///< with another function
  bool massRangeKnown = false;
  double lowMass = 0;
  double highMass = 0;
};

}  // namespace zrml::masslynx
