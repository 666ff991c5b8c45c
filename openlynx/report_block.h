// Reads one block of a report: its lines, the values of keys, its data list, its text. A block begins with
// its marker line and ends with the brace that closes it, or with the file.
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

/// Walks the lines of a block from its marker line on. When the second line does not open a brace the block
/// ends with it and is empty.
class BlockWalk {
 public:
  BlockWalk(ReportStream& stream, std::uint64_t position) : stream_(stream) { stream_.Seek(position); }

  /// False after the block's last line.
  bool Next(std::string_view& line);

  /// The same, but skips inner lines that begin with neither a bracket nor a brace.
  bool NextMarked(std::string_view& line);

  /// Where the line last given by either begins.
  std::uint64_t Position() const { return position_; }

  /// Whether that line is between the block's braces; the opening one counts, the closing one does not.
  bool IsInside() const { return depth_ > 0; }

  /// How many braces are open after that line.
  std::int64_t Depth() const { return depth_; }

 private:
  bool IsOver() const { return lines_ > 1 && depth_ <= 0; }
  void Count(std::string_view line);

  ReportStream& stream_;
  std::uint64_t position_ = 0;
  std::int64_t lines_ = 0;
  std::int64_t depth_ = 0;
};

/// A key to look for, and its value: the trimmed rest of the key's line.
struct KeyValue {
  std::string_view key;
  std::string value = {};
};

/// The rest of a line that begins with the key: trimmed, up to a NUL.
std::string_view ValueOf(std::string_view line, std::string_view key);

bool Contains(std::string_view value, std::string_view part);

/// Fills the empty values from the block at `position`, nested blocks included; the first value that is not
/// empty counts. Keys match by prefix, deliberately: "Timestamp 3" gives "Time" the value "stamp 3". Keys may
/// come in any order, since none is a prefix of another.
///
/// Also finds where a data list begins: after the first line inside the block that begins with `list`. No
/// value when there is none or none is requested.
std::optional<std::uint64_t> ReadKeys(ReportStream& stream, std::uint64_t position, std::span<KeyValue> keys,
                                      std::string_view list = {});

/// What a comma between digits does, as some systems write it for the point: it ends the number, deliberately
/// so in the slots of the contract, or nobody knows the number. Where numbers are hidden, so is what stands
/// in place of one and is none.
enum class DecimalCommas { kEndNumbers, kHideNumbers };

/// "210,05"
bool HasDecimalComma(std::string_view text);

/// The number in a value by the rules of C's strtod; no value without a number.
std::optional<double> NumberIn(std::string_view value, DecimalCommas commas);

/// The intensity that is 100 percent; 100 when it is missing or zero.
double FullScaleOf(std::optional<double> number);

/// Calls `use(line)` for each line of the data list at `position` that may hold numbers. The list ends with
/// the first line that begins with a closing brace; opening braces do not count.
template <class Use>
void ForEachDataLine(ReportStream& stream, std::uint64_t position, Use use) {
  stream.Seek(position);
  std::string_view line;
  while (stream.Next(line) && line.front() != report_format::kClose) {
    if (line.front() != report_format::kComment && line.front() != report_format::kOpen) use(line);
  }
}

/// Calls `use(x, y)` for each line of the data list at `position` that holds two numbers, and gives how many
/// have a hidden one. Lines are not copied: that would take a quarter of the reading time.
template <class Use>
std::size_t ReadDataList(ReportStream& stream, std::uint64_t position, DecimalCommas commas, Use use) {
  std::size_t hidden = 0;
  // Of the number that `rest` follows. A NUL is in place of its further digits.
  const auto isHidden = [&](std::string_view rest) {
    if (commas != DecimalCommas::kHideNumbers || rest.empty()) return false;
    return rest[0] == '\0' || (rest[0] == ',' && rest.size() > 1 && rest[1] >= '0' && rest[1] <= '9');
  };
  ForEachDataLine(stream, position, [&](std::string_view& line) {
    const std::optional<double> x = TakeDouble(line);
    if (x && isHidden(line)) return void(++hidden);
    const std::optional<double> y = x ? TakeDouble(line) : std::nullopt;
    const bool isAlone = x && !y && commas == DecimalCommas::kHideNumbers;
    if (isAlone || (y && isHidden(line))) return void(++hidden);
    if (y) use(*x, *y);
  });
  return hidden;
}

inline constexpr std::uint64_t kNoLimit = static_cast<std::uint64_t>(-1);

/// The lines of the block at `position` that begin before `end`, with their line ends; stops when there are
/// more than `enough` bytes.
std::string ReadBlockText(ReportStream& stream, std::uint64_t position, std::size_t enough,
                          std::uint64_t end = kNoLimit);

}  // namespace zrml::openlynx
