#include "spectrum/parallel_sort.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <vector>

namespace zrml {
namespace {

using Permutation = std::vector<std::size_t>;

template <class Key>
bool IsNaN(Key key) {
  if constexpr (std::is_floating_point_v<Key>) return std::isnan(key);
  return false;
}

template <class Key>
void SortIndices(const void* data, bool ascending, Permutation& order) {
  const auto* const keys = static_cast<const Key*>(data);
  std::sort(order.begin(), order.end(), [=](std::size_t a, std::size_t b) {
    const Key x = keys[a];
    const Key y = keys[b];
    if (IsNaN(x) != IsNaN(y)) return IsNaN(y);
    if (x < y) return ascending;
    if (y < x) return !ascending;
    return a < b;
  });
}

struct KeyType {
  std::size_t size;
  void (*sort)(const void* data, bool ascending, Permutation& order);
};

template <class Key>
constexpr KeyType kKeyType{sizeof(Key), SortIndices<Key>};

constexpr KeyType kKeyTypes[] = {
    kKeyType<std::int8_t>,  kKeyType<std::uint8_t>,  kKeyType<std::int16_t>, kKeyType<std::uint16_t>,
    kKeyType<std::int32_t>, kKeyType<std::uint32_t>, kKeyType<float>,        kKeyType<double>,
};

void Permute(const ParallelArray& array, const Permutation& order, std::byte* scratch) {
  const auto* const source = static_cast<const std::byte*>(array.data);
  for (std::size_t i = 0; i < order.size(); ++i) {
    std::memcpy(scratch + i * array.elementSize, source + order[i] * array.elementSize, array.elementSize);
  }
  std::memcpy(array.data, scratch, order.size() * array.elementSize);
}

}  // namespace

bool SortParallelArrays(int key, bool ascending, std::size_t count, std::span<const ParallelArray> arrays) {
  const auto isPresent = [](const ParallelArray& array) { return array.data != nullptr; };
  const auto keyArray = std::find_if(arrays.begin(), arrays.end(), isPresent);
  if (key < 0 || key >= static_cast<int>(std::size(kKeyTypes)) || keyArray == arrays.end()) return false;
  const KeyType& type = kKeyTypes[key];
  if (keyArray->elementSize != type.size) return false;

  if (count == 0) return true;
  Permutation order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  type.sort(keyArray->data, ascending, order);

  std::size_t largest = 0;
  for (const ParallelArray& array : arrays) largest = std::max(largest, array.elementSize);
  std::vector<std::byte> scratch(count * largest);
  for (const ParallelArray& array : arrays) {
    if (isPresent(array)) Permute(array, order, scratch.data());
  }
  return true;
}

}  // namespace zrml
