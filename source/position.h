// Shared by both formats: checks of positions and of room for points, dates.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

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

/// A date and time without the zone that the interface of plug-ins adds: no file has one. No value when only
/// separators are left.
inline std::optional<std::string> LocalDateTime(std::string text, std::string_view nothing) {
  constexpr std::string_view kZone = "+00:00";
  if (text.ends_with(kZone)) text.resize(text.size() - kZone.size());
  return text == nothing ? std::nullopt : std::optional(std::move(text));
}

/// Throws when there is not enough room for the points.
inline void RequireRoom(std::size_t points, std::span<const double> mz, std::span<const double> intensities) {
  if (mz.size() < points || intensities.size() < points)
    throw Error(Status::kWrongArgument, "there is no room for the points of the scan");
}

}  // namespace zrml::source
