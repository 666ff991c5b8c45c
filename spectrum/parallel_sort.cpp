#include "spectrum/parallel_sort.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

namespace zrml {
namespace {

// A key as an unsigned number of the same order, and the element's place, which decides between equal keys.
using PlacedKey = std::pair<std::uint64_t, std::size_t>;

constexpr std::uint64_t kHighestBit = std::uint64_t{1} << 63;

template <class Key>
std::uint64_t OrderedNumber(Key key) {
  if constexpr (std::is_unsigned_v<Key>) {
    return key;
  } else if constexpr (std::is_integral_v<Key>) {
    return static_cast<std::uint64_t>(std::int64_t{key}) ^ kHighestBit;
  } else {
    // Both zeros are one key; the bits of negative numbers run backwards.
    const auto bits = std::bit_cast<std::uint64_t>(double{key} + 0.0);
    return (bits & kHighestBit) != 0 ? ~bits : bits | kHighestBit;
  }
}

template <class Key>
std::vector<PlacedKey> PlacedKeys(const void* data, bool ascending, std::size_t count) {
  const auto* const keys = static_cast<const Key*>(data);
  std::vector<PlacedKey> placed(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t number = OrderedNumber(keys[i]);
    const bool isNumber = keys[i] == keys[i];
    placed[i] = {isNumber ? (ascending ? number : ~number) : ~std::uint64_t{0}, i};  // NaN last either way
  }
  return placed;
}

// False also for keys that are no numbers.
template <class Key>
bool IsInOrder(const void* data, bool ascending, std::size_t count) {
  const auto* const keys = static_cast<const Key*>(data);
  for (std::size_t i = 1; i < count; ++i) {
    if (!(ascending ? keys[i - 1] <= keys[i] : keys[i - 1] >= keys[i])) return false;
  }
  return true;
}

struct KeyType {
  std::size_t size;
  bool (*isInOrder)(const void* data, bool ascending, std::size_t count);
  std::vector<PlacedKey> (*placedKeys)(const void* data, bool ascending, std::size_t count);
};

template <class Key>
constexpr KeyType kKeyType{sizeof(Key), IsInOrder<Key>, PlacedKeys<Key>};

constexpr KeyType kKeyTypes[] = {
    kKeyType<std::int8_t>,  kKeyType<std::uint8_t>,  kKeyType<std::int16_t>, kKeyType<std::uint16_t>,
    kKeyType<std::int32_t>, kKeyType<std::uint32_t>, kKeyType<float>,        kKeyType<double>,
};

template <std::size_t kSize>
void Permute(const std::vector<PlacedKey>& order, const std::byte* source, std::byte* target) {
  for (std::size_t i = 0; i < order.size(); ++i)
    std::memcpy(target + i * kSize, source + order[i].second * kSize, kSize);
}

void Permute(const ParallelArray& array, const std::vector<PlacedKey>& order, std::byte* scratch) {
  auto* const data = static_cast<std::byte*>(array.data);
  const std::size_t size = array.elementSize;
  if (size == sizeof(double)) {
    Permute<sizeof(double)>(order, data, scratch);
  } else {
    for (std::size_t i = 0; i < order.size(); ++i)
      std::memcpy(scratch + i * size, data + order[i].second * size, size);
  }
  std::memcpy(data, scratch, order.size() * size);
}

}  // namespace

bool SortParallelArrays(int key, bool ascending, std::size_t count, std::span<const ParallelArray> arrays) {
  const auto isPresent = [](const ParallelArray& array) { return array.data != nullptr; };
  const auto keyArray = std::find_if(arrays.begin(), arrays.end(), isPresent);
  if (key < 0 || key >= static_cast<int>(std::size(kKeyTypes)) || keyArray == arrays.end()) return false;
  const KeyType& type = kKeyTypes[key];
  if (keyArray->elementSize != type.size) return false;
  if (type.isInOrder(keyArray->data, ascending, count)) return true;

  std::vector<PlacedKey> order = type.placedKeys(keyArray->data, ascending, count);
  std::sort(order.begin(), order.end());
  std::size_t largest = 0;
  for (const ParallelArray& array : arrays) largest = std::max(largest, array.elementSize);
  std::vector<std::byte> scratch(count * largest);
  for (const ParallelArray& array : arrays) {
    if (isPresent(array)) Permute(array, order, scratch.data());
  }
  return true;
}

}  // namespace zrml
