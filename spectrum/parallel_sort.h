// Sorts several arrays of equal length together, by the first one.
#pragma once

#include <cstddef>
#include <span>

namespace zrml {

/// What the elements of the key array are.
enum class SortKey : int {
  kInt8 = 0,
  kUint8 = 1,
  kInt16 = 2,
  kUint16 = 3,
  kInt32 = 4,
  kUint32 = 5,
  kFloat = 6,
  kDouble = 7,
};

/// `elementSize` bytes for each of the elements at `data`; null data means that the array is absent.
struct ParallelArray {
  std::size_t elementSize = 0;
  void* data = nullptr;
};

/// Sorts `count` elements of every present array by the first present one, whose elements are of type `key`.
/// Equal keys keep their order; NaN keys come last in either direction. False, with nothing moved, for an
/// unknown key type, a key array of the wrong element size, or when no array is present.
bool SortParallelArrays(int key, bool ascending, std::size_t count, std::span<const ParallelArray> arrays);

}  // namespace zrml
