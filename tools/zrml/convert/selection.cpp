#include "tools/zrml/convert/selection.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace zrml {
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

std::optional<NumberSet> NumberSet::Parse(const std::string& text) {
  NumberSet set;
  for (std::string_view rest = text;;) {
    const std::size_t comma = rest.find(',');
    const std::optional<Range> range = ParseRange(rest.substr(0, comma));
    if (!range) return std::nullopt;
    set.ranges_.push_back(*range);
    if (comma == std::string_view::npos) return set;
    rest.remove_prefix(comma + 1);
  }
}

bool NumberSet::Has(int number) const {
  return IsAll() || std::any_of(ranges_.begin(), ranges_.end(), [&](const Range& range) {
           return number >= range.first && number <= range.last;
         });
}

bool NumberSet::ReachesTo(int number) const {
  return IsAll() || std::any_of(ranges_.begin(), ranges_.end(),
                                [&](const Range& range) { return range.last >= number; });
}

std::optional<NumberRange> ParseTimeRange(const std::string& text) {
  const std::size_t dash = text.find('-');
  if (dash == std::string::npos || text.size() == 1) return std::nullopt;
  NumberRange range = {-std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  const auto parse = [](std::string_view part, double& number) {
    const std::optional<double> parsed = ParseWhole<double>(part, std::chars_format::fixed);
    number = parsed.value_or(number);
    return part.empty() || parsed;
  };
  const std::string_view view = text;
  const bool isRange = parse(view.substr(0, dash), range.low) && parse(view.substr(dash + 1), range.high);
  return isRange && range.low <= range.high ? std::optional(range) : std::nullopt;
}

}  // namespace zrml
