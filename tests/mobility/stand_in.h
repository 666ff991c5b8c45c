// Shared state of the stand-in for the instrument maker's library and its tests. Free-standing: no header of
// a standard library.
#pragma once

namespace zrml {

enum StandInOperation : int {
  kStandInNone,
  kStandInConstruction,  // and Initialise(): leaves the object uninitialised
  kStandInGetNumberOfBlocks,
  kStandInGetScansInBlock,
  kStandInLoadDataBlock,
  kStandInGetScan,
  kStandInGetRT,
  kStandInGetMassAxisLength,
  kStandInGetMassAxis,
  kStandInOperations
};

/// One for all objects of the library, which keeps it as long as it stays loaded.
struct StandInState {
  int failing;  ///< a StandInOperation
  int constructions;
  int initialisations;
  int releases;
  int dataBlocks;
  int misuses;  ///< calls in a wrong order, objects in unsuitable memory
  int function;
  char path[1024];
};

/// The exported function "StandIn".
using StandInFunction = StandInState* (*)();

// The stand-in's data for each function f, a number from 1.
inline constexpr int kStandInBlocks = 3;
inline constexpr int kStandInBins = 4;
inline constexpr int kStandInAxisLength = 64;

/// One bin that cannot be read.
inline constexpr int kStandInBadScan = 2;
inline constexpr int kStandInBadBin = 1;

/// Raw masses.
constexpr float StandInMass(int function, int index) {
  return static_cast<float>(100 * function) + static_cast<float>(index) / 2;
}

constexpr float StandInSeconds(int scan, int bin) {
  return static_cast<float>(60 * (scan + 1)) + static_cast<float>(bin) / 4;
}

/// Bin b has 3 b points, at intervals of 1, 2, 3 and 4 in turn.
constexpr int StandInCount(int bin) { return 3 * bin; }

constexpr int StandInIndex(int scan, int point) {
  int index = scan;
  for (int i = 0; i < point; ++i) index += 1 + i % 4;
  return index;
}

/// Every fifth point has none.
constexpr float StandInIntensity(int scan, int bin, int point) {
  return point % 5 == 4 ? 0 : static_cast<float>(10 * (scan + 1) + bin) + static_cast<float>(point) / 8;
}

}  // namespace zrml
