// Positions that callers ask for.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "source/error.h"

namespace zrml::source {

[[noreturn]] inline void ThrowNoSuch(int position, const char* noun) {
  throw Error(Status::kWrongArgument,
              "there is no " + std::string(noun) + " " + std::to_string(std::int64_t{position} + 1));
}

/// The item at a position from 0; throws when there is none.
template <class Item>
Item& At(std::span<Item> items, int position, const char* noun) {
  if (position < 0 || static_cast<std::size_t>(position) >= items.size()) ThrowNoSuch(position, noun);
  return items[static_cast<std::size_t>(position)];
}

/// Throws when points do not fit into the room for them.
inline void RequireRoom(std::size_t points, std::span<const double> mz, std::span<const double> intensities) {
  if (mz.size() < points || intensities.size() < points)
    throw Error(Status::kWrongArgument, "there is no room for the points of the scan");
}

}  // namespace zrml::source
