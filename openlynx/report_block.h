// Reading one block of a report: its lines, the values of keys, its data list, its text. A block begins at
// the position of its marker line and ends with the brace that closes it, or with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/number.h"
#include "openlynx/report_stream.h"

namespace zrml::openlynx {

/// Walks the lines of a block from its marker line on. When the second line opens no brace the block ends
/// with it, and nothing is inside.
class BlockWalk {
 public:
  BlockWalk(ReportStream& stream, std::uint64_t position) : stream_(stream) { stream_.Seek(position); }

  /// False behind the block's last line.
  bool Next(std::string_view& line);

  /// The same, without the lines inside that begin with neither a bracket nor a brace.
  bool NextMarked(std::string_view& line);

  /// Where the line begins that either has given.
  std::uint64_t Position() const { return position_; }

  /// Whether that line stands between the block's braces; its opening one does, its closing one
  /// does not.
  bool IsInside() const { return depth_ > 0; }

  /// How many braces are open behind that line.
  std::int64_t Depth() const { return depth_; }

 private:
  bool IsOver() const { return lines_ > 1 && depth_ <= 0; }
  void Count(std::string_view line);

  ReportStream& stream_;
  std::uint64_t position_ = 0;
  std::int64_t lines_ = 0;
  std::int64_t depth_ = 0;
};

/// A key to look for, and its value: all that follows the key on its line, trimmed.
struct KeyValue {
  std::string_view key;
  std::string value = {};
};

/// What follows the key on a line that begins with it: trimmed, and up to a NUL.
std::string_view ValueOf(std::string_view line, std::string_view key);

bool Contains(std::string_view value, std::string_view part);

/// Fills the empty values from the block at `position`, nested blocks included; the first value that is not
/// empty counts. Keys match by prefix, deliberately: "Timestamp 3" gives "Time" the value "stamp 3". Keys may
/// come in any order, since none begins another one.
///
/// In the same pass finds where a data list begins: behind the first line inside the block that begins with
/// `list`. No value when there is none, or none is asked for.
std::optional<std::uint64_t> ReadKeys(ReportStream& stream, std::uint64_t position, std::span<KeyValue> keys,
                                      std::string_view list = {});

/// A value's number by the rules of C's strtod; no value when there is none.
std::optional<double> NumberIn(std::string_view value);

/// What 100 percent is: 100 stands for a missing or zero one.
double FullScaleOf(std::optional<double> number);

/// Calls `use(line)` for each line of the data list at `position` that may hold numbers. The list ends with
/// the first line that begins with a closing brace; an opening one is not counted.
template <class Use>
void ForEachDataLine(ReportStream& stream, std::uint64_t position, Use use) {
  stream.Seek(position);
  std::string_view line;
  while (stream.Next(line) && line.front() != report_format::kClose) {
    if (line.front() != report_format::kComment && line.front() != report_format::kOpen) use(line);
  }
}

/// Calls `use(x, y)` for each line of the data list at `position` that holds two numbers. Lines are not
/// copied: it would cost a quarter of the time that reading takes.
template <class Use>
void ReadDataList(ReportStream& stream, std::uint64_t position, Use use) {
  ForEachDataLine(stream, position, [&](std::string_view& line) {
    const std::optional<double> x = TakeDouble(line);
    const std::optional<double> y = x ? TakeDouble(line) : std::nullopt;
    if (y) use(*x, *y);
  });
}

inline constexpr std::uint64_t kNoLimit = static_cast<std::uint64_t>(-1);

/// The lines of the block at `position` that begin before `end`, with their line ends, until more than
/// `enough` bytes are gathered.
std::string ReadBlockText(ReportStream& stream, std::uint64_t position, std::size_t enough,
                          std::uint64_t end = kNoLimit);

}  // namespace zrml::openlynx
