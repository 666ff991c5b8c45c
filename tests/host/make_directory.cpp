// make_directory DIRECTORY: a raw directory with a function of every type and data format, made of arbitrary
// bits, to reveal differences between hosts on different platforms.
#include <bit>
#include <cstdio>

#include "tests/support/raw_directory_builder.h"

namespace {

using namespace zrml;

// The same numbers everywhere.
class Noise {
 public:
  std::uint32_t Next() {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>(state_ >> 32);
  }

  FileBytes Bytes(std::size_t count) {
    FileBytes bytes(count);
    for (std::byte& byte : bytes) byte = static_cast<std::byte>(Next() & 0xFF);
    return bytes;
  }

 private:
  std::uint64_t state_ = 1;
};

constexpr std::uint32_t kPoints = 37;  // odd, so groups are incomplete

// A host's spectrum that is reused grows and shrinks around blocks of 4,096 bytes, and well beyond.
constexpr std::uint32_t kSizes[] = {255, 256, 511, 512, 255, 100000, 512, 0, 511};
constexpr std::size_t kLargestPoint = 12;

ScanFiles NoisyScan(Noise& noise, float retentionTime, std::uint32_t points = kPoints) {
  ScanFiles scan;
  scan.index.pointCount = points;
  scan.index.retentionTime = retentionTime;
  scan.index.totalIntensity = static_cast<float>(noise.Next() % 100000);
  scan.data = noise.Bytes(points * kLargestPoint);
  return scan;
}

FunctionFiles NoisyFunction(Noise& noise, unsigned type, unsigned format) {
  FunctionFiles function;
  function.record.type = type;
  function.record.ionMode = noise.Next() % 18;
  function.record.dataFormat = format;
  for (const float time : {0.5F, 0.25F, 1.0F}) function.scans.push_back(NoisyScan(noise, time));
  return function;
}

std::vector<TracePoint> NoisyTrace(Noise& noise, int points) {
  std::vector<TracePoint> trace;
  for (int i = 0; i < points; ++i)
    trace.push_back({std::bit_cast<float>(noise.Next()), std::bit_cast<float>(noise.Next())});
  return trace;
}

// Ascending masses, so every point is kept.
FunctionFiles SizedFunction(Noise& noise) {
  FunctionFiles function;
  function.record.dataFormat = 3;
  float time = 0;
  for (const std::uint32_t size : kSizes) function.scans.push_back(NoisyScan(noise, time += 0.5F, size));
  return function;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Noise noise;
  RawDirectoryBuilder raw;
  raw.header.insert(raw.header.end(),
                    {"$$ Acquired Date: 5-Mar-2021", "$$ Acquired Time: 09:15:00",
                     "$$ Instrument: " + std::string(3000, 'i') + "\xb5", "$$ User Name: sevenCh",
                     "$$ Sample Description: eight \xb5"
                     "ch",
                     "$$ Cal MS1 Static: 0.01,0.999,1.5e-6,T1", "$$ Cal MS2 Dynamic: -0.5,1.001,-2e-7",
                     "$$ Cal Function 9: 0.1,0.9,1e-5,-1e-9,1e-13,T1", "$$ Cal Modification 9: 0.2,1.1"});
  for (unsigned type = 0; type < 32; ++type) raw.functions.push_back(NoisyFunction(noise, type, type % 15));
  raw.functions.push_back(SizedFunction(noise));
  raw.labels = {"Created by MassLynx v4.2", "Function Parameters - Function 1 - REFERENCE",
                "Function Parameters - Function 12 - A label of its own",
                "Function Parameters - Function 14 - " + std::string(3000, 'l')};
  raw.chroms = {{"", {}}, {"Pressure \xb5", NoisyTrace(noise, 1000)}, {"Total", NoisyTrace(noise, 1)}};
  const std::filesystem::path directory = argv[1];
  std::filesystem::create_directory(directory);
  raw.WriteTo(directory);
  // Mobility functions, one of them MS/MS. The reader next to the plug-in makes up their data.
  for (const char* const name : {"_FUNC005.CDT", "_FUNC017.CDT"}) WriteFileBytes(directory / name, {});
}
