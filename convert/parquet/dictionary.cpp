#include "convert/parquet/dictionary.h"

#include <algorithm>
#include <functional>

namespace zrml::convert::parquet {

std::string_view Dictionary::ValueAt(std::size_t place) const {
  const std::size_t begin = place == 0 ? 0 : ends_[place - 1];
  return std::string_view(bytes_).substr(begin, ends_[place] - begin);
}

std::uint32_t& Dictionary::SlotOf(std::string_view value) {
  const std::size_t mask = slots_.size() - 1;  // their number is a power of two
  std::size_t at = std::hash<std::string_view>()(value) & mask;
  while (slots_[at] != 0 && ValueAt(slots_[at] - 1) != value) at = (at + 1) & mask;
  return slots_[at];
}

void Dictionary::Grow() {
  constexpr std::size_t kFewest = 16;
  slots_.assign(std::max(kFewest, 2 * slots_.size()), 0);
  for (std::size_t place = 0; place < Count(); ++place)
    SlotOf(ValueAt(place)) = static_cast<std::uint32_t>(place + 1);
}

std::uint32_t Dictionary::PlaceOf(std::string_view value) {
  if (2 * Count() >= slots_.size()) Grow();
  std::uint32_t& slot = SlotOf(value);
  if (slot == 0) {
    bytes_ += value;
    ends_.push_back(bytes_.size());
    slot = static_cast<std::uint32_t>(Count());
  }
  return slot - 1;
}

}  // namespace zrml::convert::parquet
