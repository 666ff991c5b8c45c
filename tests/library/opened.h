// A source that a test has opened through the C library, and short ways to ask for what it holds.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"
#include "zrml/zrml.h"

namespace zrml::test {

inline std::string PathOf(const TempDirectory& directory, const char* name = nullptr) {
  const std::u8string path = (name == nullptr ? directory.Path() : directory.Path() / name).u8string();
  return {path.begin(), path.end()};
}

class Opened {
 public:
  explicit Opened(const std::string& path) {
    EXPECT_EQ(zrml_open(path.c_str(), &source_), ZRML_OK) << zrml_open_message();
  }
  explicit Opened(const TempDirectory& directory) : Opened(PathOf(directory)) {}
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  ~Opened() { zrml_close(source_); }

  zrml_source* Get() const { return source_; }

 private:
  zrml_source* source_ = nullptr;
};

/// The record that `get` fills.
template <class Record, class Function, class... Places>
Record Get(Function get, zrml_source* source, Places... places) {
  Record record = {};
  record.size = sizeof record;
  EXPECT_EQ(get(source, places..., &record), ZRML_OK) << zrml_message(source);
  return record;
}

using Doubles = std::vector<double>;

struct Arrays {
  Doubles x;
  Doubles y;
  std::size_t lost = 0;

  bool operator==(const Arrays&) const = default;
};

inline Arrays PointsOf(zrml_source* source, int sample, int function, int scan) {
  const std::size_t room = Get<zrml_scan>(zrml_get_scan, source, sample, function, scan).points;
  Arrays read = {Doubles(room), Doubles(room)};
  std::size_t count = 0;
  EXPECT_EQ(zrml_read_points(source, sample, function, scan, read.x.data(), read.y.data(), room, &count,
                             &read.lost),
            ZRML_OK)
      << zrml_message(source);
  EXPECT_LE(count, room);
  read.x.resize(count);
  read.y.resize(count);
  return read;
}

/// The points of the scans that one call reads, in that order.
inline std::vector<Arrays> PointsOfScans(zrml_source* source, int function, int first, int scans,
                                         std::size_t room) {
  Arrays all = {Doubles(room), Doubles(room)};
  std::vector<std::size_t> ends(static_cast<std::size_t>(scans));
  std::vector<std::size_t> lost(ends.size());
  int count = -1;
  EXPECT_EQ(zrml_read_points_of_scans(source, 0, function, first, scans, all.x.data(), all.y.data(), room,
                                      ends.data(), lost.data(), &count),
            ZRML_OK)
      << zrml_message(source);
  std::vector<Arrays> read;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); begin = ends[i++]) {
    const auto part = [&](const Doubles& from) {
      return Doubles(from.data() + begin, from.data() + ends[i]);
    };
    read.push_back({part(all.x), part(all.y), lost[i]});
  }
  return read;
}

/// Arrays of unknown length, of `read` with the arrays, their room and the count.
template <class Read>
Arrays ReadTwice(zrml_source* source, Read read) {
  std::size_t count = 0;
  EXPECT_EQ(read(nullptr, nullptr, std::size_t{0}, &count), ZRML_OK) << zrml_message(source);
  Arrays arrays = {Doubles(count), Doubles(count)};
  std::size_t again = 0;
  EXPECT_EQ(read(arrays.x.data(), arrays.y.data(), count, &again), ZRML_OK) << zrml_message(source);
  EXPECT_EQ(again, count);
  return arrays;
}

}  // namespace zrml::test
