#include "source/scan_faults.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <string_view>

#include "common/number_text.h"

namespace zrml::source {
namespace {

// A total and a sum are computed at different times from rounded numbers, and differently for profiles. They
// never differ as much as this.
constexpr double kMostDifference = 2;
// Far below and far above the method's range: no calibration shifts masses as much.
constexpr double kFarOutside = 2;
// Ions that no detector counts in a scan.
constexpr double kMostIntensity = 1e15;

struct FaultText {
  FindingCode code;
  std::string_view text;
};

constexpr FaultText kTexts[] = {
    {FindingCode::kTotalsDiffer, " whose points do not add up to the total in the index"},
    {FindingCode::kMassesFarOutside, " with points far outside of what the function measures"},
    {FindingCode::kIntensitiesAbsurd, " with intensities that no detector gives"},
};

// Absent totals are 0.
bool AreFarApart(double sum, double total) {
  if (total == 0) return false;
  const double share = sum / total;
  return !(share > 1 / kMostDifference && share < kMostDifference);
}

// Processing may move masses anywhere.
bool IsFarOutside(const Function& function, double mz) {
  if (!std::isfinite(mz)) return true;
  if (!function.massRange || function.id.process != 0) return false;
  return mz < function.massRange->low / kFarOutside || mz > function.massRange->high * kFarOutside;
}

struct Sums {
  double sum = 0;
  double size = 0;  // sum of the absolute values
};

// In four independent parts, which do not wait for each other.
Sums SumsOf(std::span<const double> values) {
  constexpr std::size_t kParts = 4;
  double sums[kParts] = {};
  double sizes[kParts] = {};
  std::size_t at = 0;
  for (; at + kParts <= values.size(); at += kParts) {
    for (std::size_t part = 0; part < kParts; ++part) {
      sums[part] += values[at + part];
      sizes[part] += std::abs(values[at + part]);
    }
  }
  for (; at < values.size(); ++at) {
    sums[0] += values[at];
    sizes[0] += std::abs(values[at]);
  }
  return {sums[0] + sums[1] + sums[2] + sums[3], sizes[0] + sizes[1] + sizes[2] + sizes[3]};
}

double LargestOf(std::span<const double> values) {
  return std::accumulate(values.begin(), values.end(), 0.0,
                         [](double largest, double value) { return std::max(largest, std::abs(value)); });
}

std::string TextOf(double low, double high) { return Number(low) + " to " + Number(high); }

}  // namespace

std::vector<ScanFault> FaultsOf(Format format, const Function& function, const Scan& scan,
                                std::span<const double> mz, std::span<const double> intensities) {
  std::vector<ScanFault> faults;
  if (mz.empty() || format == Format::kReport || function.isOfMobility) return faults;
  const auto [sum, size] = SumsOf(intensities);
  const double total = scan.totalIntensity.value_or(0);
  if (AreFarApart(sum, total))
    faults.push_back({FindingCode::kTotalsDiffer, "sum " + Number(sum) + ", total " + Number(total)});
  if (function.hasOwnMasses && (IsFarOutside(function, mz.front()) || IsFarOutside(function, mz.back()))) {
    std::string extent = "m/z " + TextOf(mz.front(), mz.back());
    if (function.massRange) extent += ", range " + TextOf(function.massRange->low, function.massRange->high);
    faults.push_back({FindingCode::kMassesFarOutside, std::move(extent)});
  }
  if (!(size <= kMostIntensity)) {
    const double most = LargestOf(intensities);
    if (!(most <= kMostIntensity))
      faults.push_back({FindingCode::kIntensitiesAbsurd, "up to " + Number(most)});
  }
  return faults;
}

void FaultyScans::Add(const Function& function, int number, const std::vector<ScanFault>& faults) {
  for (const ScanFault& fault : faults) {
    const FunctionId& id = function.id;
    const FindingSubject subject = {FindingSubject::Kind::kFunction, 0, id.number, id.process, id.repeat};
    Entry& entry = entries_[{subject, fault.code}];
    ++entry.count;
    const auto place = static_cast<std::uint64_t>(number);
    if (entry.count > 1 && entry.first < place) continue;
    entry.file = function.file;
    entry.first = place;
    entry.extent = fault.extent;
  }
}

void FaultyScans::AddTo(Findings& findings) const {
  for (const auto& [key, entry] : entries_) {
    const auto text = std::find_if(std::begin(kTexts), std::end(kTexts),
                                   [code = key.second](const FaultText& each) { return each.code == code; });
    findings.Add({.code = key.second,
                  .file = entry.file,
                  .problem = "has " + std::to_string(entry.count) + (entry.count == 1 ? " scan" : " scans") +
                             std::string(text->text) + "; the first is scan " + std::to_string(entry.first) +
                             " (" + entry.extent + ")",
                  .subject = key.first,
                  .count = entry.count,
                  .first = entry.first});
  }
}

}  // namespace zrml::source
