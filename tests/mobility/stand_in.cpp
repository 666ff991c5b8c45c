// A library that exports the same class as the instrument maker's, with known data. Its variants export less
// or differently: STAND_IN_CONST has const operations, STAND_IN_HIDDEN_DESTRUCTOR leaves the destructor to
// the class's table, STAND_IN_INCOMPLETE lacks getRT, STAND_IN_THROWING throws an exception of its own class
// where it would fail.
#include "tests/mobility/stand_in.h"

#ifdef _WIN32
#define STAND_IN_EXPORT __declspec(dllexport)
#else
#define STAND_IN_EXPORT __attribute__((visibility("default")))
#endif
#ifdef STAND_IN_CONST
#define STAND_IN_QUALIFIER const
#else
#define STAND_IN_QUALIFIER
#endif
#ifdef STAND_IN_HIDDEN_DESTRUCTOR
#define STAND_IN_EXPORT_DESTRUCTOR
#else
#define STAND_IN_EXPORT_DESTRUCTOR STAND_IN_EXPORT
#endif
#ifdef STAND_IN_INCOMPLETE
#define STAND_IN_EXPORT_GET_RT
#else
#define STAND_IN_EXPORT_GET_RT STAND_IN_EXPORT
#endif

using namespace zrml;

namespace {

[[maybe_unused]] constexpr int kFailure = 7;

StandInState state;

#ifdef STAND_IN_THROWING
class Thrown {
 public:
  virtual ~Thrown() = default;
};

int Fail() { throw Thrown(); }
#else
int Fail() { return kFailure; }
#endif

}  // namespace

extern "C" {
STAND_IN_EXPORT StandInState* StandIn() { return &state; }
#ifdef _WIN32
int _fltused = 0;  // the compiler refers to it in code with floating point
#endif
}

class CompressedDataCluster {
 public:
  STAND_IN_EXPORT CompressedDataCluster(const char* path, int function);
  // Must not be mistaken for a constructor.
  STAND_IN_EXPORT CompressedDataCluster(const CompressedDataCluster&);
  STAND_IN_EXPORT_DESTRUCTOR virtual ~CompressedDataCluster();

  STAND_IN_EXPORT void Initialise(const char* path, int function);
  STAND_IN_EXPORT bool isInitialised() STAND_IN_QUALIFIER;
  STAND_IN_EXPORT int getNumberOfBlocks(int& blocks) STAND_IN_QUALIFIER;
  STAND_IN_EXPORT int getScansInBlock(int& bins) STAND_IN_QUALIFIER;
  STAND_IN_EXPORT int loadDataBlock(int scan);
  STAND_IN_EXPORT int getScan(int scan, int bin, int* indices, float* intensities,
                              int& count) STAND_IN_QUALIFIER;
  STAND_IN_EXPORT_GET_RT int getRT(int scan, int bin, float& seconds) STAND_IN_QUALIFIER;
  STAND_IN_EXPORT int getMassAxisLength(int& length) STAND_IN_QUALIFIER;
  STAND_IN_EXPORT int getMassAxis(float* axis) STAND_IN_QUALIFIER;

 private:
  // A large object that leaves most of its memory uninitialised.
  static constexpr int kWorkspace = 7500;

  void Turn(const char* path, int function);
  int Result(StandInOperation operation) const;

  double workspace_[kWorkspace];
  bool isInitialised_;
  int block_;
};

CompressedDataCluster::CompressedDataCluster(const char* path, int function) {
  ++state.constructions;
  const bool isAligned = reinterpret_cast<unsigned long long>(this) % 16 == 0;
  if (!isAligned || isInitialised_ || workspace_[kWorkspace - 1] != 0) ++state.misuses;
  workspace_[kWorkspace - 1] = 1;
  Turn(path, function);
}

CompressedDataCluster::CompressedDataCluster(const CompressedDataCluster&) { ++state.misuses; }
CompressedDataCluster::~CompressedDataCluster() { ++state.releases; }

void CompressedDataCluster::Initialise(const char* path, int function) {
  ++state.initialisations;
  Turn(path, function);
}

void CompressedDataCluster::Turn(const char* path, int function) {
  int length = 0;
  while (path[length] != 0 && length + 1 < static_cast<int>(sizeof(state.path))) {
    state.path[length] = path[length];
    ++length;
  }
  state.path[length] = 0;
  state.function = function;
  isInitialised_ = state.failing != kStandInConstruction;
  block_ = -1;
#ifdef STAND_IN_THROWING
  if (!isInitialised_) Fail();
#endif
}

int CompressedDataCluster::Result(StandInOperation operation) const {
  if (!isInitialised_) ++state.misuses;
  return state.failing == operation ? Fail() : 0;
}

bool CompressedDataCluster::isInitialised() STAND_IN_QUALIFIER { return isInitialised_; }

int CompressedDataCluster::getNumberOfBlocks(int& blocks) STAND_IN_QUALIFIER {
  blocks = kStandInBlocks;
  return Result(kStandInGetNumberOfBlocks);
}

int CompressedDataCluster::getScansInBlock(int& bins) STAND_IN_QUALIFIER {
  bins = kStandInBins;
  return Result(kStandInGetScansInBlock);
}

int CompressedDataCluster::loadDataBlock(int scan) {
  ++state.dataBlocks;
  block_ = scan;
  return Result(kStandInLoadDataBlock);
}

int CompressedDataCluster::getScan(int scan, int bin, int* indices, float* intensities,
                                   int& count) STAND_IN_QUALIFIER {
  if (scan != block_) ++state.misuses;
  count = StandInCount(bin);
  for (int i = 0; i < count; ++i) {
    indices[i] = StandInIndex(scan, i);
    intensities[i] = StandInIntensity(scan, bin, i);
  }
  return Result(kStandInGetScan);
}

int CompressedDataCluster::getRT(int scan, int bin, float& seconds) STAND_IN_QUALIFIER {
  seconds = StandInSeconds(scan, bin);
  if (scan == kStandInBadScan && bin == kStandInBadBin) return Fail();
  return Result(kStandInGetRT);
}

int CompressedDataCluster::getMassAxisLength(int& length) STAND_IN_QUALIFIER {
  length = kStandInAxisLength;
  return Result(kStandInGetMassAxisLength);
}

int CompressedDataCluster::getMassAxis(float* axis) STAND_IN_QUALIFIER {
  for (int i = 0; i < kStandInAxisLength; ++i) axis[i] = StandInMass(state.function, i);
  return Result(kStandInGetMassAxis);
}

#ifdef _WIN32
void operator delete(void*) noexcept { ++state.misuses; }  // the memory is not its own
#endif
