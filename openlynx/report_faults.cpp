#include "openlynx/report_faults.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/text.h"
#include "openlynx/report_block.h"

namespace zrml::openlynx {
namespace {

using namespace report_format;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

enum class Block { kNone, kSample, kFunction, kSpectrum, kChromatogram, kList };

// A marker begins a block, and counts inside a block of another kind.
struct Marker {
  std::string_view text;
  Block block;
  Block parent;
  std::string_view owner;  // of the parent, for people
};

constexpr std::array<Marker, 6> kMarkers = {{
    {kSample, Block::kSample, Block::kNone, ""},
    {kFunction, Block::kFunction, Block::kSample, "sample"},
    {kSpectrum, Block::kSpectrum, Block::kFunction, "function"},
    {kChromatogram, Block::kChromatogram, Block::kFunction, "function"},
    {kMassList, Block::kList, Block::kSpectrum, "spectrum"},
    {kTraceList, Block::kList, Block::kChromatogram, "chromatogram"},
}};

// Keys whose values are numbers, or TRUE and FALSE.
struct ValueKey {
  std::string_view key;
  Block block;
};

constexpr std::array<ValueKey, 5> kValueKeys = {{
    {kTimeKey, Block::kSpectrum},
    {kBpiKey, Block::kSpectrum},
    {kTicKey, Block::kSpectrum},
    {kContinuumKey, Block::kSpectrum},
    {kMaxIntensityKey, Block::kChromatogram},
}};

struct FaultText {
  FindingCode code;
  std::string_view one;
  std::string_view many;
};

constexpr FaultText kTexts[] = {
    {FindingCode::kByteOrderMark, "a byte-order mark before a marker, which is not read then", ""},
    {FindingCode::kLineEnds, "a line with CR alone in place of a line end",
     "lines with CR alone in place of line ends"},
    {FindingCode::kMarkerMisplaced, "a marker outside of its block", "markers outside of their blocks"},
    {FindingCode::kMarkerUnread,
     "a marker that is indented, in small letters or behind other text, which is not read",
     "markers that are indented, in small letters or behind other text, which are not read"},
    {FindingCode::kBlockUnopened, "a marker without a line that begins with { behind it",
     "markers without a line that begins with { behind them"},
    {FindingCode::kBraceMissing, "a marker with } missing before it", "markers with } missing before them"},
    {FindingCode::kBraceStray, "a brace that closes no block", "braces that close no block"},
    {FindingCode::kBytesZeroed, "a line with zeros in place of text", "lines with zeros in place of text"},
    {FindingCode::kLineCut, "a last line without an end, whose value may be cut", ""},
    {FindingCode::kDecimalComma, "a line with a comma in a number", "lines with commas in numbers"},
    {FindingCode::kNumberUnread, "a value that is no number", "values that are no numbers"},
    {FindingCode::kRepresentationUnread, "a Continuum that is neither TRUE nor FALSE, or behind other text",
     "values of Continuum that are neither TRUE nor FALSE, or behind other text"},
    {FindingCode::kPointsUnread, "a point of which only one number is read",
     "points of which only one number is read"},
    {FindingCode::kLinesJoined, "two lines that have become one", "pairs of lines that have become one"},
    {FindingCode::kLinesSkipped, "a line of a data list that is no point",
     "lines of data lists that are no points"},
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Followed by more than a line end.
bool HasLoneCr(std::string_view line) {
  const std::size_t cr = line.find('\r');
  return cr != std::string_view::npos && line.find_first_not_of("\r\n", cr) != std::string_view::npos;
}

// Two numbers of plain digits, as in nearly all lines of a list: a quick check.
bool IsPlainPoint(std::string_view line) {
  const char* at = line.data();
  const char* const end = at + line.size();
  const auto skipDigits = [&] {
    while (at != end && IsDigit(*at)) ++at;
  };
  const auto takeNumber = [&] {
    const char* const begin = at;
    skipDigits();
    if (at == begin) return false;
    if (at != end && *at == '.') ++at;
    skipDigits();
    return true;
  };
  if (!takeNumber() || at == end || (*at != '\t' && *at != ' ')) return false;
  ++at;
  if (!takeNumber()) return false;
  while (at != end && (*at == '\r' || *at == '\n')) ++at;
  return at == end;
}

const Marker* MarkerOf(std::string_view line) {
  const auto marker = std::find_if(kMarkers.begin(), kMarkers.end(),
                                   [&](const Marker& each) { return line.starts_with(each.text); });
  return marker == kMarkers.end() ? nullptr : &*marker;
}

bool EndsWithMarker(std::string_view text) {
  return std::any_of(kMarkers.begin(), kMarkers.end(),
                     [&](const Marker& each) { return text.ends_with(each.text); });
}

bool IsKeyLine(std::string_view text) {
  return std::any_of(std::begin(kAllKeys), std::end(kAllKeys), [&](std::string_view key) {
    return text.starts_with(key) && text.size() > key.size() &&
           (text[key.size()] == ' ' || text[key.size()] == '\t');
  });
}

// Whether what stands behind something else on a line is a line of its own, also with another byte ahead of
// it in place of its end.
bool IsLine(std::string_view text) {
  const auto isLine = [](std::string_view line) {
    return !line.empty() &&
           (line.front() == kOpen || line.front() == kClose || MarkerOf(line) != nullptr || IsKeyLine(line));
  };
  return isLine(Trim(text)) || (text.size() > 1 && isLine(text.substr(1)));
}

bool IsBehindText(std::string_view key, std::string_view line) {
  return key == kContinuumKey ? HasRepresentationBehind(line) : EndsWithNumberOf(key, line);
}

class FaultSearch {
 public:
  FaultSearch(ReportStream& stream, const std::string& name, Findings& findings)
      : stream_(stream), name_(name), findings_(findings) {}

  void Run() {
    stream_.Seek(0);
    bool isFront = true;      // of a line: further pieces are the rest of a long line
    bool holdsValue = false;  // the last line
    for (std::string_view piece; stream_.Next(piece);) {
      if (isFront) ++number_;
      if (number_ == 1 && isFront) LookAtFirst(piece);
      if (isFront || piece.front() == kBracket || piece.front() == kOpen || piece.front() == kClose) {
        LookAt(piece);
      } else if (!isInList_) {
        LookAtKeys(piece);  // readers find keys there, too
      }
      LookForZeros(piece);
      if (isFront) holdsValue = piece.back() != '\n' && HoldsValue(piece);
      isFront = piece.back() == '\n';
    }
    if (!isFront && holdsValue) Add(FindingCode::kLineCut, number_);
    End(0);
    EndList();
    AddLongerLines();
    AddFindings();
  }

 private:
  struct Open {
    Block block = Block::kNone;
    int rank = 0;                                              // of its marker
    std::int64_t depth = 0;                                    // outside of it
    std::array<bool, kValueKeys.size()> isKnown = {};          // which keys have a value
    std::array<std::uint64_t, kValueKeys.size()> inText = {};  // the line that has a key behind other text
    std::uint64_t joined = 0;                                  // the last line with a value and another line
  };

  // Of the open blocks. The first values that are not empty count, also those in blocks of other kinds.
  struct OpenFunction {
    bool hasDescription = false;
    bool hasType = false;
    bool isAnalog = false;
    std::uint64_t spectra = 0;
    std::uint64_t firstSpectrum = 0;  // its line
  };

  // Lines with one fault in one sample.
  struct Fault {
    std::uint64_t count = 0;
    std::uint64_t first = 0;
    std::string why;  // of the first
  };

  // Of an open list, or of all lists of a kind.
  struct ListLines {
    std::uint64_t all = 0;  // with two numbers or more
    std::uint64_t longer = 0;
    std::uint64_t firstLonger = 0;
  };

  void Add(FindingCode code, std::uint64_t line, std::string why = {}, std::uint64_t count = 1) {
    AddOf(sample_, code, line, std::move(why), count);
  }

  void AddOf(int sample, FindingCode code, std::uint64_t line, std::string why, std::uint64_t count) {
    Fault& fault = faults_[{sample, code}];
    if (fault.count == 0 || line < fault.first) {
      fault.first = line;
      fault.why = std::move(why);
    }
    fault.count += count;
  }

  void LookAtFirst(std::string_view line) {
    if (!line.starts_with(kByteOrderMark)) return;
    if (MarkerOf(line.substr(kByteOrderMark.size())) != nullptr) Add(FindingCode::kByteOrderMark, number_);
  }

  // No text has a NUL. Outside of all blocks it may be in place of samples, and so may several in a row: then
  // it is about all of them.
  void LookForZeros(std::string_view piece) {
    if (piece.find('\0') == std::string_view::npos) return;
    const bool mayHideSamples = open_.empty() || HasZeros(piece, kZerosBetweenSamples);
    const std::uint64_t known = mayHideSamples ? hiding_ : std::max(zeroed_, hiding_);
    if (known == number_) return;
    (mayHideSamples ? hiding_ : zeroed_) = number_;
    AddOf(mayHideSamples ? 0 : sample_, FindingCode::kBytesZeroed, number_, {}, 1);
  }

  // A value or a part of a point, which the end of the file may cut.
  bool HoldsValue(std::string_view line) const {
    constexpr std::string_view kNoPoints = "[{};";
    if (open_.empty()) return false;
    if (isInList_) return !Trim(line).empty() && !Contains(kNoPoints, line.substr(0, 1));
    return std::any_of(std::begin(kAllKeys), std::end(kAllKeys), [&](std::string_view key) {
      return line.starts_with(key) && !ValueOf(line, key).text.empty();
    });
  }

  std::size_t& CountOf(Block block) { return counts_[static_cast<std::size_t>(block)]; }

  void LookAt(std::string_view line) {
    if (isInList_ && IsPlainPoint(line)) return void(++lines_.all);
    const Marker* const pending = std::exchange(pending_, nullptr);
    if (line.front() == kOpen && trailing_ != 0 && trailing_ + 1 == number_)
      Add(FindingCode::kMarkerUnread, trailing_);
    if (pending != nullptr) Begin(*pending, line);
    if (HasLoneCr(line)) Add(FindingCode::kLineEnds, number_);
    switch (line.front()) {
      case kOpen:
        LookBehind(line, 1, isInList_);
        ++depth_;
        break;
      case kClose:
        LookBehind(line, 1, isInList_);
        Close();
        break;
      case kBracket:
        if (const Marker* const marker = MarkerOf(line)) {
          LookAtMarker(*marker, line);
        } else {
          LookAtText(line);
        }
        break;
      default:
        LookAtText(line);
    }
  }

  // The line after a marker opens the block, otherwise there is none.
  void Begin(const Marker& marker, std::string_view line) {
    if (marker.block == Block::kList) {
      isInList_ = true;
      list_ = &marker;
    } else if (line.front() == kOpen) {
      open_.push_back({marker.block, RankOf(marker.text), depth_});
      ++CountOf(marker.block);
      if (marker.block == Block::kFunction) BeginFunction();
    } else {
      Add(FindingCode::kBlockUnopened, number_ - 1, std::string(marker.text));
    }
  }

  // The function around it has no values from behind its marker, and neither have those around that one,
  // since its own marker.
  void BeginFunction() {
    if (!functions_.empty()) functions_.back().hasDescription = functions_.back().hasType = true;
    functions_.emplace_back();
  }

  // A brace or a marker leaves no room for what else a line is meant to be.
  void LookBehind(std::string_view line, std::size_t size, bool isList) {
    const std::string_view text = line.substr(size);
    if (IsLine(text) || (isList && HasPoint(text))) Add(FindingCode::kLinesJoined, number_);
  }

  void LookAtMarker(const Marker& marker, std::string_view line) {
    LookForMissingBraces(marker);
    const bool isList = marker.block == Block::kList;
    const bool isUnopened = !isList && Trim(line.substr(marker.text.size())).starts_with(kOpen);
    if (!isUnopened) LookBehind(line, marker.text.size(), isList);
    pending_ = &marker;
    if (marker.block == Block::kSample) {
      depth_ = missing_ = 0;
      ++sample_;
    } else if (CountOf(marker.parent) == 0) {
      Add(FindingCode::kMarkerMisplaced, number_,
          std::string(marker.text) + " outside of a " + std::string(marker.owner));
    } else if (marker.block == Block::kSpectrum) {
      OpenFunction& function = functions_.back();
      if (function.spectra++ == 0) function.firstSpectrum = number_;
    }
  }

  // A marker ends the list and the blocks that it is not meant to be inside. Braces of blocks that are
  // missing are so for all later markers of the sample, and count for the first. Blocks that are open at the
  // marker of a sample are reported where samples are found.
  void LookForMissingBraces(const Marker& marker) {
    const int rank = RankOf(marker.text);
    std::size_t left = open_.size();
    while (left > 0 && IsOutside(rank, open_[left - 1].rank)) --left;
    const std::int64_t missing = depth_ - rank;
    const bool isInside = left < open_.size() && rank > 0 && missing > missing_;
    if (isInList_ || isInside) Add(FindingCode::kBraceMissing, number_, std::string(marker.text));
    missing_ = missing;
    EndList();
    End(left);
  }

  void Close() {
    EndList();
    if (open_.empty() && depth_ == 0) return Add(FindingCode::kBraceStray, number_);
    --depth_;
    std::size_t left = open_.size();
    while (left > 0 && open_[left - 1].depth >= depth_) --left;
    End(left);
  }

  // Ends all but this many blocks. Spectra of an analog function are not read.
  void End(std::size_t left) {
    for (; open_.size() > left; open_.pop_back()) {
      --CountOf(open_.back().block);
      LookForKeysInTexts(open_.back());
      if (open_.back().block != Block::kFunction) continue;
      const OpenFunction& ended = functions_.back();
      if (ended.isAnalog && ended.spectra > 0)
        Add(FindingCode::kMarkerMisplaced, ended.firstSpectrum, "[SPECTRUM] in an analog function",
            ended.spectra);
      functions_.pop_back();
    }
  }

  // A text may say anything, unless the block lacks what it says. A line that is two counts once.
  void LookForKeysInTexts(const Open& ended) {
    for (std::size_t i = 0; i < kValueKeys.size(); ++i) {
      if (ended.inText[i] == 0 || ended.inText[i] == ended.joined || ended.isKnown[i]) continue;
      const bool isNumber = kValueKeys[i].key != kContinuumKey;
      Add(isNumber ? FindingCode::kLinesJoined : FindingCode::kRepresentationUnread, ended.inText[i]);
    }
  }

  void LookAtText(std::string_view line) {
    if (isInList_) return LookAtPoint(line);
    const std::string_view text = Trim(line);
    if (text.starts_with(kBracket) && MarkerOf(ToUpper(text)) != nullptr)
      return Add(FindingCode::kMarkerUnread, number_);
    if (EndsWithMarker(text) && !text.starts_with(kByteOrderMark)) trailing_ = number_;
    LookAtKeys(line);
  }

  void LookAtKeys(std::string_view line) {
    if (open_.empty()) return;
    const Block block = open_.back().block;
    for (std::size_t i = 0; i < kValueKeys.size(); ++i) {
      if (kValueKeys[i].block != block) continue;
      if (line.starts_with(kValueKeys[i].key)) LookAtValue(line, i);
      if (IsBehindText(kValueKeys[i].key, line)) open_.back().inText[i] = number_;
    }
    LookAtName(line, kDescriptionKey, kAnalogMark, &OpenFunction::hasDescription);
    LookAtName(line, kTypeKey, kDadMark, &OpenFunction::hasType);
  }

  // The first value that is not empty counts.
  void LookAtValue(std::string_view line, std::size_t position) {
    const std::string_view key = kValueKeys[position].key;
    const LineValue value = ValueOf(line, key, stream_.IsAtEnd());
    if (value.text.empty() || std::exchange(open_.back().isKnown[position], true)) return;
    if (key != kContinuumKey) return LookAtNumber(value.text, key);
    if (!value.isCut && !IsRepresentation(value.text)) LookAtRepresentation(value.text);
  }

  void LookAtNumber(std::string_view value, std::string_view key) {
    if (HasDecimalComma(value)) {
      Add(FindingCode::kDecimalComma, number_, std::string(key));
    } else if (!TakeDouble(value) || HasNumber(value)) {
      Add(FindingCode::kNumberUnread, number_, std::string(key));
    } else {
      LookBehindValue(value);
    }
  }

  void LookAtRepresentation(std::string_view value) {
    for (const std::string_view word : {kCentroided, kContinuum}) {
      if (value.starts_with(word) && LookBehindValue(value.substr(word.size()))) return;
    }
    Add(FindingCode::kRepresentationUnread, number_);
  }

  bool LookBehindValue(std::string_view rest) {
    if (!IsLine(rest)) return false;
    Add(FindingCode::kLinesJoined, number_);
    open_.back().joined = number_;
    trailing_ = 0;
    return true;
  }

  void LookAtName(std::string_view line, std::string_view key, std::string_view mark,
                  bool OpenFunction::*isKnown) {
    if (!line.starts_with(key)) return;
    const std::string_view value = ValueOf(line, key).text;
    if (value.empty() || functions_.empty()) return;
    OpenFunction& function = functions_.back();
    if (!std::exchange(function.*isKnown, true))
      function.isAnalog = function.isAnalog || Contains(value, mark);
  }

  void LookAtPoint(std::string_view line) {
    if (line.front() == kComment || Trim(line).empty()) return;
    if (HasDecimalComma(line)) return Add(FindingCode::kDecimalComma, number_);
    const bool hasNumber = TakeDouble(line).has_value();
    if (hasNumber && HasSecondPoint(line)) return AddJoined();
    if (hasNumber && TakeDouble(line)) return HasSecondPoint(line) ? AddJoined() : LookBehindPoint(line);
    Add(hasNumber ? FindingCode::kPointsUnread : FindingCode::kLinesSkipped, number_);
  }

  void AddJoined() {
    ++lines_.all;
    Add(FindingCode::kLinesJoined, number_);
  }

  void LookBehindPoint(std::string_view rest) {
    ++lines_.all;
    if (IsLine(rest)) return Add(FindingCode::kLinesJoined, number_);
    if (HasNumber(rest) && lines_.longer++ == 0) lines_.firstLonger = number_;
  }

  // Where most lines of a list are longer, those of others of its kind tell whether that is their form.
  void EndList() {
    if (!std::exchange(isInList_, false)) return;
    const ListLines lines = std::exchange(lines_, {});
    if (AreJoined(lines.longer, lines.all)) {
      return AddOf(sample_, FindingCode::kLinesJoined, lines.firstLonger, {}, lines.longer);
    }
    ListLines& all = all_[list_->text == kMassList ? 0 : 1];
    all.all += lines.all;
    all.longer += lines.longer;
    if (lines.longer == 0) return;
    ListLines& inSample = longer_[{sample_, list_->text}];
    if (inSample.longer == 0) inSample.firstLonger = lines.firstLonger;
    inSample.longer += lines.longer;
  }

  void AddLongerLines() {
    for (const auto& [key, lines] : longer_) {
      const auto& [sample, list] = key;
      const ListLines& all = all_[list == kMassList ? 0 : 1];
      if (AreJoined(all.longer, all.all))
        AddOf(sample, FindingCode::kLinesJoined, lines.firstLonger, {}, lines.longer);
    }
  }

  void AddFindings() const {
    for (const auto& [key, fault] : faults_) {
      const auto& [sample, code] = key;
      const auto text = std::find_if(std::begin(kTexts), std::end(kTexts),
                                     [code = code](const FaultText& each) { return each.code == code; });
      const std::string what = fault.count == 1 ? std::string(text->one)
                                                : std::to_string(fault.count) + ' ' + std::string(text->many);
      findings_.Add({.code = code,
                     .file = name_,
                     .problem = "has " + what + (fault.count == 1 ? ": line " : "; the first is line ") +
                                std::to_string(fault.first) +
                                (fault.why.empty() ? "" : " (" + fault.why + ")"),
                     .subject = SubjectOf(sample),
                     .count = fault.count,
                     .first = fault.first});
    }
  }

  // Before the first sample, and zeros between samples, apply to all samples.
  static FindingSubject SubjectOf(int sample) {
    if (sample == 0) return {};
    return {.kind = FindingSubject::Kind::kSample, .sample = sample};
  }

  ReportStream& stream_;
  const std::string& name_;
  Findings& findings_;
  std::uint64_t number_ = 0;  // of the line
  std::uint64_t zeroed_ = 0;  // the last line with zeros
  std::uint64_t hiding_ = 0;  // the last one with zeros that may be in place of samples
  int sample_ = 0;
  std::int64_t depth_ = 0;
  std::int64_t missing_ = 0;  // braces, ahead of the last marker
  std::vector<Open> open_;
  std::vector<OpenFunction> functions_;
  std::array<std::size_t, 6> counts_ = {};  // of open blocks, by kind
  const Marker* pending_ = nullptr;         // of the line before
  bool isInList_ = false;
  const Marker* list_ = nullptr;                                  // the open list, or the last one
  ListLines lines_;                                               // of it
  std::array<ListLines, 2> all_;                                  // of lists of masses, of traces
  std::map<std::pair<int, std::string_view>, ListLines> longer_;  // by sample and marker
  std::uint64_t trailing_ = 0;                                    // the last line that ends with a marker
  std::map<std::pair<int, FindingCode>, Fault> faults_;
};

}  // namespace

void NoticeFaultyLines(ReportStream& stream, const std::string& name, Findings& findings) {
  FaultSearch(stream, name, findings).Run();
}

}  // namespace zrml::openlynx
