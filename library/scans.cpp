// Scans one by one and as a table, and their points.
#include <algorithm>
#include <span>

#include "common/platform/platform.h"
#include "library/handle.h"
#include "source/position.h"

namespace zrml::library {
namespace {

using source::Source;

zrml_scan RecordOf(const source::Scan& scan, int position) {
  return {
      .size = 0,
      .number = position + 1,
      .is_centroided = scan.representation == source::Representation::kUnknown
                           ? -1
                           : static_cast<int>(scan.representation),
      .minutes = scan.minutes,
      .end_minutes = scan.endMinutes,
      .points = scan.points,
      .total_intensity = scan.totalIntensity.value_or(kAbsent),
      .base_peak_intensity = scan.basePeakIntensity.value_or(kAbsent),
      .precursor_mz = scan.precursorMz.value_or(kAbsent),
      .is_precursor_of_method = scan.isPrecursorOfMethod ? 1 : 0,
      .scan_value = scan.scanValue.value_or(kAbsent),
  };
}

template <class Value, class Given>
void Set(Value* column, std::size_t row, Given value) {
  if (column != nullptr) column[row] = static_cast<Value>(value);
}

void SetFromPoints(const zrml_scan_table& table, std::size_t row, const source::PointsRead& read,
                   const std::vector<double>& mz, const std::vector<double>& intensities) {
  const auto largest = std::max_element(intensities.begin(), intensities.end());
  const bool hasPeak = largest != intensities.end();
  const double ofNone = read.lost > 0 ? kAbsent : 0;
  Set(table.points, row, read.count);
  Set(table.base_peak_mz, row,
      hasPeak ? mz[static_cast<std::size_t>(largest - intensities.begin())] : kAbsent);
  Set(table.base_peak_intensity, row, hasPeak ? *largest : ofNone);
}

// The requested scans and their function.
struct Rows {
  int sample;
  int function;
  int first;
  int count;
};

void PreferLargePages(const zrml_scan_table& table, int count) {
  const auto prefer = [&](auto* column) {
    if (column != nullptr)
      platform::PreferLargePages(column, static_cast<std::size_t>(count) * sizeof *column);
  };
  prefer(table.number);
  prefer(table.minutes);
  prefer(table.end_minutes);
  prefer(table.points);
  prefer(table.is_centroided);
  prefer(table.total_intensity);
  prefer(table.base_peak_mz);
  prefer(table.base_peak_intensity);
  prefer(table.precursor_mz);
  prefer(table.scan_value);
}

void FillFromIndex(Source& source, const Rows& rows, const zrml_scan_table& table) {
  const auto count = static_cast<std::size_t>(rows.count);
  const auto wanted = [count]<class Value>(Value* column) {
    return std::span<Value>(column, column != nullptr ? count : 0);
  };
  int number = rows.first;
  for (std::int32_t& each : wanted(table.number)) each = ++number;
  std::ranges::fill(wanted(table.base_peak_mz), kAbsent);
  source.ReadScans(rows.sample, rows.function, rows.first, rows.count,
                   {.minutes = wanted(table.minutes),
                    .endMinutes = wanted(table.end_minutes),
                    .areCentroided = wanted(table.is_centroided),
                    .points = wanted(table.points),
                    .totalIntensities = wanted(table.total_intensity),
                    .basePeakIntensities = wanted(table.base_peak_intensity),
                    .precursorMz = wanted(table.precursor_mz),
                    .scanValues = wanted(table.scan_value)});
}

void FillFromPoints(Source& source, const Rows& rows, const zrml_scan_table& table,
                    const source::Cancel& cancel) {
  std::vector<double> mz;
  std::vector<double> intensities;
  for (int i = 0; i < rows.count; ++i) {
    source::ThrowIfCancelled(cancel);
    const source::PointsRead read =
        source.ReadPoints(rows.sample, rows.function, rows.first + i, mz, intensities);
    SetFromPoints(table, static_cast<std::size_t>(i), read, mz, intensities);
  }
}

void RequireRows(Source& source, const Rows& rows) {
  RequireSample(source, rows.sample);
  const int scans = source.ScanCount(rows.sample, rows.function);
  if (rows.first < 0 || rows.first > scans) source::ThrowNoSuch(rows.first, "scan");
  if (rows.count < 0) ThrowWrongArgument("the number of scans is negative");
  if (rows.count > scans - rows.first) source::ThrowNoSuch(scans, "scan");
}

// Returns how many of the scans were read: up to one that fails or does not fit. The first one must not fail.
int FillFromScans(Source& source, const Rows& rows, std::span<double> mz, std::span<double> intensities,
                  std::size_t* ends, std::size_t* lost) {
  std::size_t end = 0;
  int done = 0;
  try {
    for (; done < rows.count; ++done) {
      const source::PointsRead read = source.ReadPoints(rows.sample, rows.function, rows.first + done,
                                                        mz.subspan(end), intensities.subspan(end));
      ends[done] = end += read.count;
      if (lost != nullptr) lost[done] = read.lost;
    }
  } catch (...) {
    if (done == 0) throw;  // the failure of another one is for the call that begins with it
  }
  return done;
}

}  // namespace
}  // namespace zrml::library

using namespace zrml::library;

zrml_status zrml_scan_count(zrml_source* source, int sample, int function, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    RequireSample(held, sample);
    *count = held.ScanCount(sample, function);
  });
}

zrml_status zrml_get_scan(zrml_source* source, int sample, int function, int scan, zrml_scan* record) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    Fill(record, RecordOf(held.ScanAt(sample, function, scan), scan));
  });
}

zrml_status zrml_read_scan_table(zrml_source* source, int sample, int function, int first, int count,
                                 const zrml_scan_table* table) {
  return Run(source, [&](Source& held) {
    Require(table, "table");
    RequireKnown(*table);
    const Rows rows = {sample, function, first, count};
    RequireRows(held, rows);
    PreferLargePages(*table, count);
    FillFromIndex(held, rows, *table);
    if (table->reads_points != 0)
      FillFromPoints(held, rows, *table, CancelOf(*source, static_cast<std::size_t>(count)));
  });
}

zrml_status zrml_read_points(zrml_source* source, int sample, int function, int scan, double* mz,
                             double* intensities, size_t room, size_t* count, size_t* lost) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    RequireRoom(room, mz, room);
    RequireRoom(room, intensities, room);
    RequireSample(held, sample);
    const zrml::source::PointsRead read =
        held.ReadPoints(sample, function, scan, std::span(mz, room), std::span(intensities, room));
    *count = read.count;
    if (lost != nullptr) *lost = read.lost;
  });
}

zrml_status zrml_read_points_of_scans(zrml_source* source, int sample, int function, int first, int scans,
                                      double* mz, double* intensities, size_t room, size_t* ends,
                                      size_t* lost, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    RequireRoom(room, mz, room);
    RequireRoom(room, intensities, room);
    const Rows rows = {sample, function, first, scans};
    RequireRows(held, rows);
    if (scans > 0) Require(ends, "ends");
    *count = FillFromScans(held, rows, std::span(mz, room), std::span(intensities, room), ends, lost);
  });
}

zrml_status zrml_find_precursor(zrml_source* source, int sample, int function, int scan,
                                int* precursor_function, int* precursor_scan) {
  return Run(source, [&](Source& held) {
    Require(precursor_function, "precursor_function");
    Require(precursor_scan, "precursor_scan");
    RequireSample(held, sample);
    const auto found =
        held.FindPrecursor(sample, function, scan).value_or(zrml::source::ScanPosition{-1, -1});
    *precursor_function = found.function;
    *precursor_scan = found.scan;
  });
}
