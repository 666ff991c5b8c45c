// The description of one acquisition function, as the function table, the header and the side files give it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/host_types.h"
#include "common/platform/platform.h"

namespace zrml {

/// One scan of a function.
struct ScanIndexEntry {
  std::uint32_t dataOffset = 0;  ///< in the data file
  std::uint32_t pointCount = 0;  ///< stored points, 22 bits
  std::uint32_t segment = 0;     ///< calibration segment 1 to 31, 0 none
  float totalIntensity = 0;
  float retentionTime = 0;  ///< minutes
  // From the statistics file; 0 without one.
  float auxValue = 0;
  float temperature = 0;
  float temperatureCoefficient = 0;  ///< parts per million per degree
  float precursorMass = 0;           ///< counts when bit 0 of precursorFlags is set
  std::uint16_t precursorFlags = 0;
  std::uint16_t item80Word = 0;
  bool temperatureValid = false;
  bool centroided = false;
  bool preCalibrated = false;  ///< masses are stored calibrated
};

/// A polynomial c0 + c1 x + c2 x^2 + ... Empty: not given. With `root` it works on the square root of the
/// mass.
struct CalibrationPolynomial {
  std::vector<double> coefficients;
  bool root = false;
};

struct FunctionRecord {
  static constexpr int kNoFunction = -1;

  std::uint16_t number = 0;  ///< from 1; the process number of a processed function
  bool processed = false;    ///< from the history
  int typeCode = kNoFunction;
  int ionMode = 0;
  int dataFormat = 0;  ///< scan data layout
  float scanTime = 0;  ///< seconds
  std::array<float, 3> keptTimes{};
  std::uint16_t defaultScanValue = 0;
  std::uint16_t keptScanValue = 0;
  float setMass = 0;  ///< precursor m/z of MS/MS functions
  float keptSetValue = 0;
  std::vector<std::uint32_t> channels;  ///< 32 each, or none (type 17)
  std::vector<float> startMasses;
  std::vector<float> endMasses;

  CalibrationPolynomial dynamicCal;
  CalibrationPolynomial functionCal;
  CalibrationPolynomial staticCal;
  CalibrationPolynomial modificationCal;
  std::vector<CalibrationPolynomial> segmentCals;  ///< segment number - 1
  bool hasUnreachableSegmentCal = false;           ///< a segment was calibrated whose number no scan can have
  float calTemperature = 0;                        ///< reference temperature, degrees

  platform::SystemPath dataFilePath;  ///< where the data file was found last
  std::vector<ScanIndexEntry> scanIndex;
  bool calibrationConstant = false;    ///< every scan converts masses alike
  std::vector<double> cachedMassAxis;  ///< of mobility data, m/z; filled only when calibrationConstant

  std::vector<std::uint16_t> processChain;  ///< process codes, oldest first
  bool hasMobilityData = false;
  std::wstring label;
  bool sharesName = false;  ///< with another function
  bool massRangeKnown = false;
  double lowMass = 0;
  double highMass = 0;
};

}  // namespace zrml
