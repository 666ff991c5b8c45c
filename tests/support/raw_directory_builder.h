// A whole raw directory from a list of functions with scans:
//
//   RawDirectoryBuilder raw;
//   raw.functions.resize(1);
//   raw.functions[0].scans = {ScanFrom<StoredPoint9>(0.5F, {{100, 7}, {200, 9}})};
//   const TempDirectory directory = raw.Build();
//   directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { PatchU32(bytes, 4, 1); });
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/function_table_writer.h"
#include "tests/support/history_writer.h"
#include "tests/support/nearest_points.h"
#include "tests/support/scan_index_writer.h"
#include "tests/support/scan_statistics_writer.h"
#include "tests/support/stored_points.h"
#include "tests/support/temp_directory.h"
#include "tests/support/text_writer.h"
#include "tests/support/trace_writer.h"

namespace zrml {

struct ScanFiles {
  ScanIndexRecord index = {};  ///< its data offset is set by the builder
  FileBytes data = {};
  ScanStatisticsRecord statistics = {};
};

/// A scan with the given points and their total intensity.
template <class Stored>
ScanFiles ScanOf(float retentionTime, const std::vector<Stored>& points) {
  const double total =
      std::accumulate(points.begin(), points.end(), 0.0,
                      [](double sum, const Stored& point) { return sum + IntensityOf(point); });
  return {.index = {.pointCount = static_cast<std::uint32_t>(points.size()),
                    .totalIntensity = static_cast<float>(total),
                    .retentionTime = retentionTime},
          .data = EncodePoints(points)};
}

/// The same from the wanted masses and intensities.
template <class Stored>
ScanFiles ScanFrom(float retentionTime, const std::vector<WantedPoint>& points) {
  return ScanOf(retentionTime, NearestPoints<Stored>(points));
}

/// The "idx", "sts" and "dat" files of a raw or processed function. Data are stored in scan order.
struct FunctionFiles {
  FunctionTableRecord record = {};  ///< meaningless for a processed function
  std::vector<ScanFiles> scans = {};
  std::optional<StatisticsLayout> statistics = {};  ///< no statistics file without it
  std::size_t indexRecordSize = masslynx::scan_index_format::kShortRecordSize;
};

struct ChromTrace {
  std::string name = {};
  std::vector<TracePoint> points = {};
};

enum class Spelling { kUpperCase, kLowerCase };

/// Empty lists make no file; the header, the function table and the files of each function are always made.
struct RawDirectoryBuilder {
  std::vector<std::string> header = {HeaderLine("Version", "01.00"),
                                     HeaderLine("Acquired Name", "acquisition")};
  std::vector<FunctionFiles> functions = {};                 ///< "_FUNC001." and so on
  std::map<int, FunctionFiles> processed = {};               ///< by process number: "_PROC001." and so on
  std::vector<HistoryStep> history = {};                     ///< "_HISTORY.INF"
  HistoryFunctionNumbers historyNumbers = NumbersInOrder();  ///< the table in its header
  std::vector<std::string> labels = {};                      ///< lines of "_EXTERN.INF"
  std::vector<std::string> analogNames = {};                 ///< "_ANALOGS.INF"
  std::vector<AnalogRecord> analogs = {};                    ///< "_ANALOGS.DAT", only with the names
  std::vector<ChromTrace> chroms = {};                       ///< "_CHROMS.INF" and "_CHRO001.DAT" and so on
  LineEnd lineEnd = LineEnd::kCrLf;
  Spelling spelling = Spelling::kUpperCase;

  /// Every file by its name.
  std::map<std::string, FileBytes> Files() const;

  void WriteTo(const std::filesystem::path& directory) const;
  TempDirectory Build(const std::filesystem::path& directoryName = "acquisition.raw") const;
};

}  // namespace zrml
