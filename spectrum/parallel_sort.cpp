#include "spectrum/parallel_sort.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

namespace zrml {
namespace {

// A key as an unsigned number that sorts the same way, and the element's place, which decides between equal
// keys.
using PlacedKey = std::pair<std::uint64_t, std::size_t>;

constexpr std::uint64_t kHighestBit = std::uint64_t{1} << 63;

template <class Key>
std::uint64_t OrderedNumber(Key key) {
  if constexpr (std::is_unsigned_v<Key>) {
    return key;
  } else if constexpr (std::is_integral_v<Key>) {
    return static_cast<std::uint64_t>(std::int64_t{key}) ^ kHighestBit;
  } else {
    // Both zeros are one key; the bits of negative numbers sort backwards.
    const auto bits = std::bit_cast<std::uint64_t>(double{key} + 0.0);
    return (bits & kHighestBit) != 0 ? ~bits : bits | kHighestBit;
  }
}

// NaN comes last in either direction.
template <class Key>
std::uint64_t SortNumber(Key key, bool ascending) {
  if constexpr (std::is_floating_point_v<Key>) {
    if (std::isnan(key)) return ~std::uint64_t{0};
  }
  return ascending ? OrderedNumber(key) : ~OrderedNumber(key);
}

template <class Key>
std::vector<PlacedKey> PlacedKeys(const void* data, bool ascending, std::size_t count) {
  const auto* const keys = static_cast<const Key*>(data);
  std::vector<PlacedKey> placed(count);
  for (std::size_t i = 0; i < count; ++i) placed[i] = {SortNumber(keys[i], ascending), i};
  return placed;
}

// Number of elements before the longest sorted tail. A tail of two or more has no NaN.
template <class Key>
std::size_t HeadLength(const void* data, bool ascending, std::size_t count) {
  const auto* const keys = static_cast<const Key*>(data);
  std::size_t head = count;
  if (head > 0) --head;
  while (head > 0 && (ascending ? keys[head - 1] <= keys[head] : keys[head - 1] >= keys[head])) --head;
  return head;
}

// The first element of the sorted range [begin, end) that does not come before `number`.
template <class Key>
std::size_t FindPlace(const void* data, bool ascending, std::size_t begin, std::size_t end,
                      std::uint64_t number) {
  const auto* const keys = static_cast<const Key*>(data);
  const auto isBefore = [&](Key key, std::uint64_t bound) { return SortNumber(key, ascending) < bound; };
  return static_cast<std::size_t>(std::lower_bound(keys + begin, keys + end, number, isBefore) - keys);
}

struct KeyType {
  std::size_t size;
  std::size_t (*headLength)(const void* data, bool ascending, std::size_t count);
  std::vector<PlacedKey> (*placedKeys)(const void* data, bool ascending, std::size_t count);
  std::size_t (*findPlace)(const void* data, bool ascending, std::size_t begin, std::size_t end,
                           std::uint64_t number);
};

template <class Key>
constexpr KeyType kKeyType{sizeof(Key), HeadLength<Key>, PlacedKeys<Key>, FindPlace<Key>};

constexpr KeyType kKeyTypes[] = {
    kKeyType<std::int8_t>,  kKeyType<std::uint8_t>,  kKeyType<std::int16_t>, kKeyType<std::uint16_t>,
    kKeyType<std::int32_t>, kKeyType<std::uint32_t>, kKeyType<float>,        kKeyType<double>,
};

// An element of the head: where it comes from, and the element of the tail that it precedes.
struct HeadElement {
  std::size_t from;
  std::size_t before;
};

// With `head` elements sorted and the rest already in order. Equal keys keep their order: those of the head
// come first.
std::vector<HeadElement> MergeOrder(const KeyType& type, const void* data, bool ascending, std::size_t head,
                                    std::size_t count) {
  std::vector<PlacedKey> sorted = type.placedKeys(data, ascending, head);
  std::sort(sorted.begin(), sorted.end());
  std::vector<HeadElement> order(head);
  std::size_t before = head;
  for (std::size_t i = 0; i < head; ++i) {
    before = type.findPlace(data, ascending, before, count, sorted[i].first);
    order[i] = {sorted[i].second, before};
  }
  return order;
}

// Merges the head's elements into the tail from the front: writing never overtakes reading.
template <std::size_t kSize>
void Merge(const ParallelArray& array, std::size_t count, const std::vector<HeadElement>& order,
           std::byte* scratch) {
  const std::size_t size = kSize != 0 ? kSize : array.elementSize;
  auto* const data = static_cast<std::byte*>(array.data);
  std::memcpy(scratch, data, order.size() * size);
  std::byte* out = data;
  std::size_t tail = order.size();
  const auto moveTail = [&](std::size_t end) {
    std::memmove(out, data + tail * size, (end - tail) * size);
    out += (end - tail) * size;
    tail = end;
  };
  for (const HeadElement& element : order) {
    if (element.before != tail) moveTail(element.before);
    std::memcpy(out, scratch + element.from * size, size);
    out += size;
  }
  moveTail(count);
}

}  // namespace

bool SortParallelArrays(int key, bool ascending, std::size_t count, std::span<const ParallelArray> arrays) {
  const auto isPresent = [](const ParallelArray& array) { return array.data != nullptr; };
  const auto keyArray = std::find_if(arrays.begin(), arrays.end(), isPresent);
  if (key < 0 || key >= static_cast<int>(std::size(kKeyTypes)) || keyArray == arrays.end()) return false;
  const KeyType& type = kKeyTypes[key];
  if (keyArray->elementSize != type.size) return false;
  // Sorted scans, and damaged ones whose missing points all have the same value, cost little more than the
  // check.
  const std::size_t head = type.headLength(keyArray->data, ascending, count);
  if (head == 0) return true;

  const std::vector<HeadElement> order = MergeOrder(type, keyArray->data, ascending, head, count);
  std::size_t largest = 0;
  for (const ParallelArray& array : arrays) largest = std::max(largest, array.elementSize);
  std::vector<std::byte> scratch(head * largest);
  for (const ParallelArray& array : arrays) {
    if (!isPresent(array)) continue;
    const auto merge = array.elementSize == sizeof(double) ? Merge<sizeof(double)> : Merge<0>;
    merge(array, count, order, scratch.data());
  }
  return true;
}

}  // namespace zrml
