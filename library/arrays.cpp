// Arrays: chromatograms, sums, drift bins, traces, absorbance.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "library/handle.h"
#include "source/position.h"
#include "source/sum_scans.h"

namespace zrml::library {
namespace {

using source::Source;

std::size_t ScansOf(Source& source, int sample, int function) {
  RequireSample(source, sample);
  return static_cast<std::size_t>(source.ScanCount(sample, function));
}

void Copy(const std::vector<double>& values, double* to) { std::copy(values.begin(), values.end(), to); }

// The caller's room for arrays of unknown length.
struct Target {
  double* x;
  double* y;
  std::size_t room;
  std::size_t* count;
  std::size_t* lost = nullptr;
  zrml_sum* sum = nullptr;
};

// Arrays requested without room are kept for the next call.
template <class Read>
void Deliver(zrml_source& handle, const Request& request, const Target& target, Read read) {
  Require(target.count, "count");
  RequireRoom(target.room, target.x, target.room);
  RequireRoom(target.room, target.y, target.room);
  if (!handle.arrays || handle.arrays->first != request) {
    handle.arrays.reset();
    handle.arrays.emplace(request, read());
  }
  const Arrays& arrays = handle.arrays->second;
  *target.count = arrays.x.size();
  if (target.room == 0 && !arrays.x.empty()) return;
  RequireRoom(arrays.x.size(), target.x, target.room);
  Copy(arrays.x, target.x);
  Copy(arrays.y, target.y);
  if (target.lost != nullptr) *target.lost = arrays.lost;
  if (target.sum != nullptr) Fill(target.sum, arrays.sum);
  handle.arrays.reset();
}

Arrays ArraysOf(source::Chromatogram chromatogram) {
  return {std::move(chromatogram.minutes), std::move(chromatogram.intensities)};
}

// The positions in ascending order, each once.
std::vector<int> Sorted(const int* positions, std::size_t count) {
  if (count > 0) Require(positions, "an array of positions");
  std::vector<int> sorted(positions, positions + count);
  std::ranges::sort(sorted);
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  return sorted;
}

SumRequest RequestOf(const int* scans, std::size_t count, const zrml_sum_options* options) {
  SumRequest request = {Sorted(scans, count)};
  if (options == nullptr) return request;
  RequireKnown(*options);
  request.background = Sorted(options->background, options->background_count);
  request.width = options->width;
  request.isPpm = options->is_ppm != 0;
  request.isMean = options->is_mean != 0;
  return request;
}

Arrays SumOf(Source& source, const Request& request, const source::Cancel& cancel) {
  const SumRequest& wanted = request.sum;
  const source::PeakWidth width = {wanted.width, wanted.isPpm};
  source::ScanSum sum = SumScans(source, request.sample, request.function, wanted.scans, width,
                                 source::Unsuited::kAreLeftOut, cancel);
  source::ScanSum background;
  if (!wanted.background.empty()) {
    background =
        SumBackground(source, request.sample, request.function, wanted.background, width, sum, cancel);
    TakeOff(background, width, sum);
  }
  if (wanted.isMean) MakeMean(sum);
  const zrml_sum record = {
      .size = 0,
      .is_centroided = sum.isCentroided ? 1 : 0,
      .added = CountOf(sum.added.size()),
      .left_out = sum.leftOut,
      .background_added = CountOf(background.added.size()),
      .background_left_out = background.leftOut,
      .lost = sum.lost,
  };
  return {std::move(sum.mz), std::move(sum.intensities), sum.lost, record};
}

void DeliverSum(zrml_source& handle, const Request& request, const Target& target) {
  const std::size_t scans = request.sum.scans.size() + request.sum.background.size();
  Deliver(handle, request, target, [&] { return SumOf(*handle.source, request, CancelOf(handle, scans)); });
}

bool AreWavelengths(const std::vector<double>& found, const double* wavelengths, std::size_t columns) {
  return found.size() == columns && std::equal(found.begin(), found.end(), wavelengths);
}

// Whether all spectra have the wavelengths of the first one.
bool ReadMatrix(Source& source, int sample, std::size_t columns, double* wavelengths, double* values,
                const source::Cancel& cancel) {
  const int scans = source.AbsorbanceScanCount(sample);
  std::vector<double> found;
  std::vector<double> row;
  for (int scan = 0; scan < scans; ++scan) {
    source::ThrowIfCancelled(cancel);
    source.ReadAbsorbance(sample, scan, found, row);
    if (scan == 0 && found.size() == columns) Copy(found, wavelengths);
    if (!AreWavelengths(found, wavelengths, columns)) return false;
    Copy(row, values + static_cast<std::size_t>(scan) * columns);
  }
  return true;
}

}  // namespace
}  // namespace zrml::library

using namespace zrml::library;

zrml_status zrml_read_minutes(zrml_source* source, int sample, int function, double* minutes, size_t room) {
  return Run(source, [&](Source& held) {
    RequireRoom(ScansOf(held, sample, function), minutes, room);
    Copy(held.Minutes(sample, function), minutes);
  });
}

zrml_status zrml_read_total_ions(zrml_source* source, int sample, int function, double* intensities,
                                 size_t room) {
  return Run(source, [&](Source& held) {
    RequireRoom(ScansOf(held, sample, function), intensities, room);
    Copy(held.TotalIons(sample, function).intensities, intensities);
  });
}

zrml_status zrml_read_base_peaks(zrml_source* source, int sample, int function, double* intensities,
                                 size_t room) {
  return Run(source, [&](Source& held) {
    const std::size_t scans = ScansOf(held, sample, function);
    RequireRoom(scans, intensities, room);
    Copy(held.BasePeaks(sample, function, CancelOf(*source, scans)).intensities, intensities);
  });
}

zrml_status zrml_read_mass_ranges(zrml_source* source, int sample, int function, const zrml_range* ranges,
                                  size_t range_count, int within, double* intensities, size_t room) {
  return Run(source, [&](Source& held) {
    if (within != ZRML_SUM && within != ZRML_LARGEST) ThrowWrongArgument("`within` is none of its values");
    const std::size_t scans = ScansOf(held, sample, function);
    if (scans == 0 || range_count == 0) return;
    Require(ranges, "ranges");
    if (room / scans < range_count) ThrowWrongArgument("there is too little room for the values");
    Require(intensities, "intensities");
    std::vector<zrml::source::Range> wanted;
    for (const zrml_range& range : std::span(ranges, range_count)) {
      if (std::isnan(range.low) || std::isnan(range.high)) ThrowWrongArgument("an end of a range is NaN");
      wanted.push_back({range.low, range.high});
    }
    held.MassRanges(sample, function, wanted, static_cast<zrml::source::Within>(within),
                    std::span(intensities, room), CancelOf(*source, scans));
  });
}

zrml_status zrml_read_sum(zrml_source* source, int sample, int function, int first, int end, double width,
                          int is_ppm, double* mz, double* intensities, size_t room, size_t* count) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    const int scans = held.ScanCount(sample, function);
    if (first < 0 || first > scans) zrml::source::ThrowNoSuch(first, "scan");
    if (end > scans) zrml::source::ThrowNoSuch(scans, "scan");
    SumRequest wanted = {std::vector<int>(end > first ? static_cast<std::size_t>(end - first) : 0)};
    std::iota(wanted.scans.begin(), wanted.scans.end(), first);
    wanted.width = width;
    wanted.isPpm = is_ppm != 0;
    DeliverSum(*source, {Asked::kSum, sample, function, 0, 0, std::move(wanted)},
               {mz, intensities, room, count});
  });
}

zrml_status zrml_read_sum_of_scans(zrml_source* source, int sample, int function, const int* scans,
                                   size_t scan_count, const zrml_sum_options* options, double* mz,
                                   double* intensities, size_t room, size_t* count, zrml_sum* sum) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    if (sum != nullptr && sum->size < sizeof *sum) ThrowWrongArgument("the size of the record is too small");
    DeliverSum(*source, {Asked::kSum, sample, function, 0, 0, RequestOf(scans, scan_count, options)},
               {mz, intensities, room, count, nullptr, sum});
  });
}

zrml_status zrml_drift_bin_count(zrml_source* source, int sample, int function, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    RequireSample(held, sample);
    zrml::source::At(held.Functions(sample), function, "function");
    *count = held.DriftBinCount(sample, function);
  });
}

zrml_status zrml_read_drift_bin(zrml_source* source, int sample, int function, int scan, int bin, double* mz,
                                double* intensities, size_t room, size_t* count) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    zrml::source::At(held.Functions(sample), function, "function");
    if (bin < 0 || bin >= held.DriftBinCount(sample, function)) zrml::source::ThrowNoSuch(bin, "drift bin");
    const Request request = {Asked::kDriftBin, sample, function, scan, bin};
    Deliver(*source, request, {mz, intensities, room, count}, [&] {
      Arrays arrays;
      held.ReadDriftBin(sample, function, scan, bin, arrays.x, arrays.y);
      return arrays;
    });
  });
}

zrml_status zrml_read_trace(zrml_source* source, int sample, int function, int trace, double* times,
                            double* intensities, size_t room, size_t* count) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    const Request request = {Asked::kTrace, sample, function, trace};
    Deliver(*source, request, {times, intensities, room, count}, [&] {
      return ArraysOf(function == ZRML_OF_SAMPLE ? held.ReadTrace(sample, trace)
                                                 : held.ReadFunctionTrace(sample, function, trace));
    });
  });
}

zrml_status zrml_absorbance_count(zrml_source* source, int sample, int* count) {
  return Run(source, [&](Source& held) {
    Require(count, "count");
    RequireSample(held, sample);
    *count = held.HasAbsorbance(sample) ? held.AbsorbanceScanCount(sample) : -1;
  });
}

zrml_status zrml_read_absorbance_minutes(zrml_source* source, int sample, double* minutes, size_t room) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    const int scans = held.AbsorbanceScanCount(sample);
    RequireRoom(static_cast<std::size_t>(scans), minutes, room);
    for (int scan = 0; scan < scans; ++scan) minutes[scan] = held.AbsorbanceMinutes(sample, scan);
  });
}

zrml_status zrml_read_absorbance(zrml_source* source, int sample, int scan, double* wavelengths,
                                 double* values, size_t room, size_t* count, size_t* lost) {
  return Run(source, [&](Source& held) {
    RequireSample(held, sample);
    const Request request = {Asked::kAbsorbance, sample, 0, scan};
    Deliver(*source, request, {wavelengths, values, room, count, lost}, [&] {
      Arrays arrays;
      arrays.lost = held.ReadAbsorbance(sample, scan, arrays.x, arrays.y).lost;
      return arrays;
    });
  });
}

zrml_status zrml_read_absorbance_matrix(zrml_source* source, int sample, size_t columns, double* wavelengths,
                                        double* values, int* is_matrix) {
  return Run(source, [&](Source& held) {
    Require(is_matrix, "is_matrix");
    RequireSample(held, sample);
    const auto scans = static_cast<std::size_t>(held.AbsorbanceScanCount(sample));
    RequireRoom(columns, wavelengths, columns);
    if (scans > 0) RequireRoom(columns, values, columns);
    *is_matrix = ReadMatrix(held, sample, columns, wavelengths, values, CancelOf(*source, scans)) ? 1 : 0;
  });
}
