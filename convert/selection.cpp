#include "convert/selection.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace zrml::convert {
namespace {

// All of `text` as a number without sign or exponent.
template <class Number, class... Format>
std::optional<Number> ParseWhole(std::string_view text, Format... format) {
  constexpr std::string_view kAllowed = "0123456789.";
  Number number = 0;
  if (text.empty() || text.find_first_not_of(kAllowed) != std::string_view::npos) return std::nullopt;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, format...);
  return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

// Whether `text` is a comma-separated list of items that `take` accepts.
template <class Take>
bool EachItem(std::string_view text, Take take) {
  for (;;) {
    const std::size_t comma = text.find(',');
    if (!take(text.substr(0, comma))) return false;
    if (comma == std::string_view::npos) return true;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace

std::optional<NumberSet::Range> NumberSet::ParseRange(std::string_view text) {
  const std::size_t dash = text.find('-');
  const std::optional<int> first = ParseWhole<int>(text.substr(0, dash));
  if (!first || *first < 1) return std::nullopt;
  if (dash == std::string_view::npos) return Range{*first, *first};
  const std::string_view behind = text.substr(dash + 1);
  if (behind.empty()) return Range{*first, std::numeric_limits<int>::max()};
  const std::optional<int> last = ParseWhole<int>(behind);
  return last && *last >= *first ? std::optional(Range{*first, *last}) : std::nullopt;
}

std::optional<NumberSet> NumberSet::Parse(std::string_view text) {
  NumberSet set;
  const bool isList = EachItem(text, [&](std::string_view item) {
    const std::optional<Range> range = ParseRange(item);
    if (range) set.ranges_.push_back(*range);
    return range.has_value();
  });
  return isList ? std::optional(set) : std::nullopt;
}

bool NumberSet::Has(std::optional<int> number) const {
  return IsAll() || std::any_of(ranges_.begin(), ranges_.end(), [&](const Range& range) {
           return number && *number >= range.first && *number <= range.last;
         });
}

std::optional<FunctionSet> FunctionSet::Parse(std::string_view text) {
  FunctionSet set;
  const bool isList = EachItem(text, [&](std::string_view item) { return set.Add(item); });
  return isList ? std::optional(set) : std::nullopt;
}

bool FunctionSet::Add(std::string_view text) {
  if (!text.starts_with('p')) {
    const std::optional<NumberSet::Range> range = NumberSet::ParseRange(text);
    if (range) acquired_.ranges_.push_back(*range);
    return range.has_value();
  }
  const std::optional<source::FunctionId> id = source::ParseFunctionId(text);
  if (id) processed_.push_back(*id);
  return id.has_value();
}

std::vector<int> NumberSet::Named() const {
  std::vector<int> named;
  for (const Range& range : ranges_) {
    if (range.first == range.last) named.push_back(range.first);
  }
  return named;
}

std::vector<source::FunctionId> FunctionSet::Named() const {
  std::vector<source::FunctionId> named;
  for (const int number : acquired_.Named()) named.push_back({.number = number});
  named.insert(named.end(), processed_.begin(), processed_.end());
  return named;
}

std::optional<source::FunctionId> FunctionSet::First() const {
  if (acquired_.ranges_.empty()) return std::nullopt;
  return source::FunctionId{.number = acquired_.ranges_.front().first};
}

std::optional<source::FunctionId> FunctionSet::Only() const {
  const std::vector<source::FunctionId> named = Named();
  const bool isOne = acquired_.ranges_.size() + processed_.size() == 1 && named.size() == 1;
  return isOne ? std::optional(named.front()) : std::nullopt;
}

bool FunctionSet::Has(const source::FunctionId& id) const {
  if (IsAll()) return true;
  if (id.process == 0) return !acquired_.IsAll() && acquired_.Has(id.number);
  return std::any_of(processed_.begin(), processed_.end(), [&](const source::FunctionId& listed) {
    return listed.process == id.process && listed.repeat == id.repeat;
  });
}

std::optional<source::Range> ParseTimeRange(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos || text.size() == 1) return std::nullopt;
  source::Range range = {-std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  const auto parse = [](std::string_view part, double& number) {
    const std::optional<double> parsed = ParseWhole<double>(part, std::chars_format::fixed);
    number = parsed.value_or(number);
    return part.empty() || parsed;
  };
  const bool isRange = parse(text.substr(0, dash), range.low) && parse(text.substr(dash + 1), range.high);
  return isRange && range.low <= range.high ? std::optional(range) : std::nullopt;
}

std::optional<double> ParseDecimal(std::string_view text) {
  return ParseWhole<double>(text, std::chars_format::fixed);
}

}  // namespace zrml::convert
