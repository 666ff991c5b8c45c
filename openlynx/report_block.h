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

/// How deep the blocks of a marker are meant to be: 0 for samples, 1 for functions, 2 for spectra and
/// chromatograms, 3 for lists; kNoRank when the line begins with no marker.
inline constexpr int kFunctionRank = 1;
inline constexpr int kNoRank = 4;
int RankOfMarker(std::string_view marker);
inline int RankOf(std::string_view line) {
  return line.front() == report_format::kBracket ? RankOfMarker(line) : kNoRank;
}

/// Whether a marker is not meant to be inside a block. A function may be in another one, which then goes on.
constexpr bool IsOutside(int marker, int block) {
  return marker <= block && !(marker == kFunctionRank && block == kFunctionRank);
}

/// Walks the lines of a block from its marker line on. When the second line does not open a brace the block
/// ends with it and is empty. For careful readers a block also ends ahead of a marker that is not meant to be
/// inside it, as where its closing brace is lost.
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
  bool IsOver() const { return isCut_ || (lines_ > 1 && depth_ <= 0); }
  bool Take(std::string_view line);

  ReportStream& stream_;
  std::uint64_t position_ = 0;
  std::int64_t lines_ = 0;
  std::int64_t depth_ = 0;
  int rank_ = -1;  // of the block, for careful readers
  bool isCut_ = false;
};

/// A key to look for, and its value: the trimmed rest of the key's line.
struct KeyValue {
  std::string_view key;
  std::string value = {};
  /// Zeros (NUL) or the end of the file cut it; or it has none, but zeros or the end of another line may be
  /// it.
  bool isHidden = false;
};

/// The rest of a line that begins with the key: trimmed, up to a NUL.
struct LineValue {
  std::string_view text;
  bool isCut = false;  ///< it may go on: right behind it is a NUL, or the end of the file without a line end
};
/// `isLast` when the file ends with the line, which may be a piece of one.
LineValue ValueOf(std::string_view line, std::string_view key, bool isLast = false);

bool Contains(std::string_view value, std::string_view part);

/// Fills the empty values from the block at `position`, nested blocks included; the first value that is not
/// empty counts. Keys match by prefix, deliberately: "Timestamp 3" gives "Time" the value "stamp 3". Keys may
/// come in any order, since none is a prefix of another.
///
/// Also finds where a data list begins: after the first line inside the block that begins with `list`. No
/// value when there is none or none is requested.
std::optional<std::uint64_t> ReadKeys(ReportStream& stream, std::uint64_t position, std::span<KeyValue> keys,
                                      std::string_view list = {});

/// "210,05", as some systems write a number. To hosts the comma ends it, deliberately; careful readers do not
/// know the number.
bool HasDecimalComma(std::string_view text);

/// The number in a value by the rules of C's strtod; no value without a number, or for careful readers with
/// another one behind it, as of thousands: "1.000.000" is 1 to hosts, deliberately.
std::optional<double> NumberIn(std::string_view value, bool isCareful);

/// The intensity that is 100 percent; 100 when it is missing or zero.
double FullScaleOf(std::optional<double> number);

/// Calls `use(line)` for each line of the data list at `position` that may hold numbers, and
/// `useBraced(text)` with what stands behind a brace. The list ends with the first line that begins with a
/// closing brace, for careful readers also ahead of any marker; opening braces do not count.
template <class Use, class UseBraced>
void ForEachDataLine(ReportStream& stream, std::uint64_t position, Use use, UseBraced useBraced) {
  stream.Seek(position);
  bool isOver = false;
  for (std::string_view line; !isOver && stream.Next(line);) {
    if (stream.IsCareful() && RankOf(line) != kNoRank) return;
    isOver = line.front() == report_format::kClose;
    if (isOver || line.front() == report_format::kOpen) {
      useBraced(line.substr(1));
    } else if (line.front() != report_format::kComment) {
      use(line);
    }
  }
}

/// Where a number begins on the rest of a line, behind blanks or a single byte in their place. Words such as
/// "information", which begin with one, do not count.
std::size_t BeginOfNumber(std::string_view rest);

/// Whether there is one. Nearly all lines of a list end with their second number.
inline bool HasNumber(std::string_view rest) {
  return !rest.empty() && rest.front() != '\r' && rest.front() != '\n' &&
         BeginOfNumber(rest) != std::string_view::npos;
}

/// Whether a value of `Continuum` says what a spectrum is.
bool IsRepresentation(std::string_view value);

/// Whether `Continuum` and its value, in letters of any size, stand behind other text of the line, which may
/// go on.
bool HasRepresentationBehind(std::string_view line);

/// Whether a key and its number stand behind other text of the line. `Process`, and keys that are not known,
/// may say anything, such as "STATIC 5" or "Combine Time 5": behind them only the base peak counts, which
/// points are in percent of.
bool EndsWithNumberOf(std::string_view key, std::string_view line);

/// Whether lines of a list with more than two numbers are each two lines that have become one: others, as
/// many at least, have two. Otherwise all of the list has more columns.
constexpr bool AreJoined(std::size_t longer, std::size_t lines) { return longer > 0 && 2 * longer <= lines; }

/// Whether a point stands behind a brace, where it is not read.
bool HasPoint(std::string_view braced);

/// How many zeros (NUL) at least are in place of the end of a block and the front of the next one: of samples
/// "}", a line end and "[", of lists, which spectra are around, "}", "}", "[SPECTRUM]", "{", "[" and four
/// line ends.
inline constexpr std::size_t kZerosBetweenSamples = 3;
inline constexpr std::size_t kZerosBetweenLists = 18;
bool HasZeros(std::string_view text, std::size_t count);

/// Whether what follows a number begins with a point, as in "59.98.98": bytes of one or two numbers are lost.
inline bool HasSecondPoint(std::string_view rest) { return rest.starts_with('.'); }

/// Calls `use(x, y, rest)` for each line of the data list at `position` that holds two numbers, and gives how
/// many have a hidden one. Lines are not copied: that would take a quarter of the reading time.
template <class Use>
std::size_t ReadDataList(ReportStream& stream, std::uint64_t position, Use use) {
  std::size_t hidden = 0;
  const bool hides = stream.IsCareful();
  // Of the number that `rest` follows. A NUL is in place of its further digits, or of those of its exponent,
  // and so is the end of the file without a line end.
  const auto isHidden = [&](std::string_view rest) {
    if (!hides) return false;
    const std::size_t end = rest.find_first_not_of("eE+-");
    if (end == std::string_view::npos) return stream.IsAtEnd();
    if (rest[end] == '\0' || HasSecondPoint(rest)) return true;
    return rest[0] == ',' && rest.size() > 1 && rest[1] >= '0' && rest[1] <= '9';
  };
  // Enough zeros may be in place of the end of this list and the front of another one.
  bool isBehindZeros = false;
  const auto hide = [&](std::string_view line, std::size_t points) {
    hidden += points;
    isBehindZeros = isBehindZeros || HasZeros(line, kZerosBetweenLists);
  };
  const auto useLine = [&](std::string_view& line) {
    const std::string_view whole = line;
    const std::optional<double> x = TakeDouble(line);
    if (x && isHidden(line)) return hide(whole, 1);
    const std::optional<double> y = x ? TakeDouble(line) : std::nullopt;
    if (!y) return hides ? hide(whole, x ? 1 : 0) : void();
    if (isBehindZeros || isHidden(line)) return hide(whole, 1);
    use(*x, *y, line);
    if (hides && line.size() > 2) hide(line, 0);
  };
  ForEachDataLine(stream, position, useLine,
                  [&](std::string_view braced) { hidden += hides && HasPoint(braced) ? 1 : 0; });
  return hidden;
}

inline constexpr std::uint64_t kNoLimit = static_cast<std::uint64_t>(-1);

/// The lines of the block at `position` that begin before `end`, with their line ends; stops when there are
/// more than `enough` bytes.
std::string ReadBlockText(ReportStream& stream, std::uint64_t position, std::size_t enough,
                          std::uint64_t end = kNoLimit);

}  // namespace zrml::openlynx
