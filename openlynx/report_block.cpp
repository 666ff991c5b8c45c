#include "openlynx/report_block.h"

#include <algorithm>
#include <iterator>

#include "common/text.h"

namespace zrml::openlynx {
namespace {

using namespace report_format;

// A NUL ends the text of a line, as in a line buffer.
std::string_view TextOf(std::string_view piece) { return piece.substr(0, piece.find('\0')); }

// The first open key that the line begins with takes the rest of the line; an empty rest leaves it open.
void TryKeys(std::string_view line, bool isLast, std::span<KeyValue> keys) {
  const auto key = std::find_if(keys.begin(), keys.end(), [&](const KeyValue& entry) {
    return entry.value.empty() && line.starts_with(entry.key);
  });
  if (key == keys.end()) return;
  const LineValue value = ValueOf(line, key->key, isLast);
  if (value.text.empty()) return;
  key->value = value.text;
  key->isHidden = value.isCut;
}

// Zeros may be in place of any key that has no value yet, and another line may have become one with its own.
// A later value counts all the same.
void FindHidden(std::string_view line, std::span<KeyValue> keys) {
  const bool hasZeros = line.find('\0') != std::string_view::npos;
  for (KeyValue& each : keys)
    each.isHidden = each.isHidden || (each.value.empty() && (hasZeros || EndsWithNumberOf(each.key, line)));
}

// Nearly all lines of a list begin with a digit.
void FindRepresentation(std::string_view line, std::span<KeyValue> keys) {
  if (line.front() >= '0' && line.front() <= '9') return;
  const auto key = std::ranges::find(keys, kContinuumKey, &KeyValue::key);
  if (key != keys.end() && key->value.empty() && HasRepresentationBehind(line)) key->isHidden = true;
}

// What follows many zeros may be another block, whose points are in percent of something else.
void HideScale(std::span<KeyValue> keys) {
  for (KeyValue& each : keys)
    each.isHidden = each.isHidden || each.key == kBpiKey || each.key == kMaxIntensityKey;
}

struct Rank {
  std::string_view marker;
  int rank;
};

constexpr Rank kRanks[] = {
    {kSample, 0},    {kFunction, kFunctionRank}, {kSpectrum, 2}, {kChromatogram, 2}, {kMassList, 3},
    {kTraceList, 3},
};

}  // namespace

int RankOfMarker(std::string_view marker) {
  for (const Rank& each : kRanks) {
    if (marker.starts_with(each.marker)) return each.rank;
  }
  return kNoRank;
}

// A marker that ends the block is not part of it, and is left to be read.
bool BlockWalk::Take(std::string_view line) {
  if (lines_ == 0 && stream_.IsCareful()) rank_ = RankOf(line);
  if (IsInside() && IsOutside(RankOf(line), rank_)) {
    isCut_ = true;
    stream_.Seek(stream_.Position() - line.size());
    return false;
  }
  position_ = stream_.Position() - line.size();
  ++lines_;
  if (line.front() == kOpen) ++depth_;
  if (line.front() == kClose) --depth_;
  return true;
}

bool BlockWalk::Next(std::string_view& line) { return !IsOver() && stream_.Next(line) && Take(line); }

// The second line counts whatever it begins with, and only inside the others do not matter.
bool BlockWalk::NextMarked(std::string_view& line) {
  if (!IsInside() || isCut_) return Next(line);
  return stream_.NextMarked(line) && Take(line);
}

LineValue ValueOf(std::string_view line, std::string_view key, bool isLast) {
  const std::string_view text = TextOf(line);
  const std::string_view value = Trim(text.substr(key.size()));
  const bool mayGoOn = isLast || text.size() < line.size();
  return {value, mayGoOn && !value.empty() && text.ends_with(value)};
}

bool Contains(std::string_view value, std::string_view part) {
  return value.find(part) != std::string_view::npos;
}

std::optional<std::uint64_t> ReadKeys(ReportStream& stream, std::uint64_t position, std::span<KeyValue> keys,
                                      std::string_view list) {
  const auto isFilled = [](const KeyValue& entry) { return !entry.value.empty(); };
  BlockWalk walk(stream, position);
  std::optional<std::uint64_t> found;
  bool areFilled = false;
  bool isListSought = !list.empty();
  bool isBehindZeros = false;
  std::string_view line;
  while ((!areFilled || isListSought) && (areFilled ? walk.NextMarked(line) : walk.Next(line))) {
    if (isListSought && walk.IsInside() && line.starts_with(list)) {
      found = stream.Position();
      isListSought = false;
    }
    if (areFilled) continue;
    if (stream.IsCareful()) FindRepresentation(line, keys);
    if (line.front() == kClose) continue;
    if (isListSought) FindHidden(line, keys);
    isBehindZeros =
        isBehindZeros || (isListSought && stream.IsCareful() && HasZeros(line, kZerosBetweenLists));
    TryKeys(line, stream.IsAtEnd(), keys);
    areFilled = std::all_of(keys.begin(), keys.end(), isFilled);
  }
  if (isBehindZeros) HideScale(keys);
  return found;
}

std::size_t BeginOfNumber(std::string_view rest) {
  constexpr std::string_view kBlanks = " \t\v\f";
  constexpr std::string_view kNoSeparators = "+-.,;\r\n0123456789";
  const auto isDigit = [&](std::size_t at) { return at < rest.size() && rest[at] >= '0' && rest[at] <= '9'; };
  const bool hasOther =
      !rest.empty() && !Contains(kBlanks, rest.substr(0, 1)) && !Contains(kNoSeparators, rest.substr(0, 1));
  const std::size_t begin = hasOther ? 1 : rest.find_first_not_of(kBlanks);
  const bool isNumber = begin < rest.size() && isDigit(rest.find_first_not_of("+-.", begin));
  return isNumber ? begin : std::string_view::npos;
}

bool IsRepresentation(std::string_view value) { return value == kCentroided || value == kContinuum; }

bool HasRepresentationBehind(std::string_view line) {
  const std::size_t at = line.rfind(kContinuumKey);
  if (at == 0 || at == std::string_view::npos) return false;
  const std::string_view rest = line.substr(at + kContinuumKey.size());
  const std::size_t begin = rest.find_first_not_of(" \t");
  if (begin == 0 || begin == std::string_view::npos) return false;
  const std::string value = ToUpper(rest.substr(begin, kCentroided.size()));
  return value.starts_with(kCentroided) || value.starts_with(kContinuum);
}

bool EndsWithNumberOf(std::string_view key, std::string_view line) {
  const std::size_t at = line.rfind(key);
  if (at == 0 || at == std::string_view::npos) return false;
  const auto begins = [&](std::string_view each) { return line.starts_with(each); };
  const bool isKnown = std::any_of(std::begin(kAllKeys), std::end(kAllKeys), begins) && !begins(kProcessKey);
  if (!isKnown && key != kBpiKey) return false;
  std::string_view value = Trim(line.substr(at + key.size()));
  return TakeDouble(value).has_value() && value.empty();
}

bool HasPoint(std::string_view braced) {
  const std::size_t begin = BeginOfNumber(braced);
  if (begin == std::string_view::npos) return false;
  braced.remove_prefix(begin);
  return TakeDouble(braced).has_value() && (HasNumber(braced) || HasDecimalComma(braced));
}

bool HasDecimalComma(std::string_view text) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  for (std::size_t at = text.find(','); at < text.size(); at = text.find(',', at + 1)) {
    if (at > 0 && at + 1 < text.size() && isDigit(text[at - 1]) && isDigit(text[at + 1])) return true;
  }
  return false;
}

bool HasZeros(std::string_view text, std::size_t count) {
  const std::size_t first = text.find('\0');
  if (first == std::string_view::npos) return false;
  const auto zeros =
      std::search_n(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), count, '\0');
  return zeros != text.end();
}

std::optional<double> NumberIn(std::string_view value, bool isCareful) {
  if (isCareful && HasDecimalComma(value)) return std::nullopt;
  const std::optional<double> number = TakeDouble(value);
  return isCareful && HasNumber(value) ? std::nullopt : number;
}

double FullScaleOf(std::optional<double> number) {
  return number.value_or(0.0) == 0.0 ? kFullScale : *number;
}

std::string ReadBlockText(ReportStream& stream, std::uint64_t position, std::size_t enough,
                          std::uint64_t end) {
  std::string text;
  BlockWalk walk(stream, position);
  std::string_view line;
  while (text.size() <= enough && walk.Next(line) && walk.Position() < end) text += TextOf(line);
  return text;
}

}  // namespace zrml::openlynx
