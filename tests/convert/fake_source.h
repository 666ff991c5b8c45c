// A source in memory with known content, and with losses wherever a test wants them. Its folder, which
// conversions list and watch, is real.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "convert/convert.h"
#include "source/source.h"
#include "tests/support/temp_directory.h"

namespace zrml::test {

struct FakePoints {
  std::vector<double> positions = {};
  std::vector<double> intensities = {};
};

struct FakeScan {
  double minutes = 0;
  FakePoints points = {};
  double precursor = 0;
  bool isCentroided = true;
  std::string process = {};
  std::size_t lost = 0;                 // points that the index declares beside those
  bool isUnreadable = false;            // the points, or the drift bins
  std::map<int, FakePoints> bins = {};  // by position
};

struct FakeFunction {
  source::Function info = {};
  std::vector<FakeScan> scans = {};
  std::vector<double> totals = {};  // computed from the points if fewer than the scans
  bool hasNoTotals = false;         // they cannot be read
  int binCount = 0;
  std::vector<source::MetadataItem> metadata = {};
};

struct FakeTrace {
  std::string name = {};
  source::Chromatogram points = {};
  bool isUnreadable = false;
};

struct FakeData {
  source::Format format = source::Format::kRawDirectory;
  std::vector<FakeFunction> functions = {};
  std::optional<FakeFunction> absorbance = {};
  std::vector<FakeTrace> traces = {};
  std::map<int, std::vector<FakeTrace>> functionTraces = {};  // by position
  std::vector<source::MetadataItem> metadata = {};
  std::vector<Finding> findings = {};
};

/// A survey and a product function, one without scans, one with drift bins; absorbance; two traces.
FakeData KnownData();

/// The data of `data` at `path`.
std::unique_ptr<source::Source> OpenFake(const FakeData& data, const std::string& path);

}  // namespace zrml::test
