#include "openlynx/report_index.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "openlynx/block_sweep.h"
#include "openlynx/report_block.h"

namespace zrml::openlynx {
namespace {

using namespace report_format;

using Positions = std::vector<std::uint64_t>;

// The marker lines of one kind inside blocks: a run of the list for each block, and for each line the number
// of its innermost block.
struct MarkerLines {
  Positions positions;
  std::vector<std::size_t> owners;
  std::vector<Run> runs;

  void Add(std::uint64_t position, std::size_t owner) {
    positions.push_back(position);
    owners.push_back(owner);
  }
  // Sorts the lines by owner; the runs are those of the owners then.
  void GroupByOwner();
};

void MarkerLines::GroupByOwner() {
  std::fill(runs.begin(), runs.end(), Run());
  for (const std::size_t owner : owners) ++runs[owner].last;
  std::size_t end = 0;
  for (Run& run : runs) {
    const std::size_t first = std::exchange(end, end + run.last);
    run = {first, first};
  }
  Positions grouped(positions.size());
  for (std::size_t i = 0; i < positions.size(); ++i) grouped[runs[owners[i]].last++] = positions[i];
  positions = std::move(grouped);
}

struct FoundBlocks {
  MarkerLines spectra;
  MarkerLines chromatograms;
};

class MarkerSweep {
 public:
  static constexpr bool kEveryLine = false;

  explicit MarkerSweep(FoundBlocks& found) : found_(found) {}

  void Line(std::string_view, std::span<const std::size_t>) {}

  void Inside(std::string_view line, std::uint64_t position) {
    if (line.starts_with(kSpectrum)) found_.spectra.Add(position, open_.back());
    if (line.starts_with(kChromatogram)) found_.chromatograms.Add(position, open_.back());
  }

  void Began(std::span<const std::size_t> open) {
    const std::size_t number = open.back();
    open_.push_back(number);
    found_.spectra.runs[number].first = found_.spectra.positions.size();
    found_.chromatograms.runs[number].first = found_.chromatograms.positions.size();
  }

  void Ended(std::size_t stillOpen) {
    const std::size_t number = open_[stillOpen];
    open_.pop_back();
    found_.spectra.runs[number].last = found_.spectra.positions.size();
    found_.chromatograms.runs[number].last = found_.chromatograms.positions.size();
  }

  bool IsSatisfied(std::size_t) const { return false; }

 private:
  FoundBlocks& found_;
  std::vector<std::size_t> open_;
};

FoundBlocks FindBlocksAt(ReportStream& stream, std::span<const std::uint64_t> functions) {
  FoundBlocks found;
  found.spectra.runs.resize(functions.size());
  found.chromatograms.runs.resize(functions.size());
  MarkerSweep visitor(found);
  BlockSweep(stream, functions, visitor).Run();
  return found;
}

// Returns where the items of `added` begin in `list`.
std::size_t Append(Positions& list, Positions added) {
  const std::size_t at = list.size();
  if (list.empty()) {
    list = std::move(added);
  } else {
    list.insert(list.end(), added.begin(), added.end());
  }
  return at;
}

// For the functions that are analog, or not, and have no known blocks. The lists last, the runs after them:
// when memory runs out, the functions are unchanged.
void FindBlocksOf(ReportStream& stream, Sample& sample, std::span<Function> functions, bool areAnalog) {
  const auto isOpen = [=](const Function& function) {
    return function.isAnalog == areAnalog && !function.HasBlocks();
  };
  Positions positions;
  for (const Function& function : functions) {
    if (isOpen(function)) positions.push_back(function.position);
  }
  FoundBlocks found = FindBlocksAt(stream, positions);
  const std::size_t spectra = Append(sample.spectra, std::move(found.spectra.positions));
  const std::size_t chromatograms = Append(sample.chromatograms, std::move(found.chromatograms.positions));
  std::size_t number = 0;
  for (Function& function : functions) {
    if (!isOpen(function)) continue;
    const Run& spectrumRun = found.spectra.runs[number];
    const Run& chromatogramRun = found.chromatograms.runs[number];
    function.spectra = {spectra + spectrumRun.first, spectra + spectrumRun.last};
    function.chromatograms = {chromatograms + chromatogramRun.first, chromatograms + chromatogramRun.last};
    ++number;
  }
}

void SetSought(Function& function) {
  function.blocks = function.HasBlocks() ? Sought::kFound : Sought::kInVain;
}

// The "[FUNCTION]" lines inside a sample, each with the first of those that it may be nested in.
std::vector<Function> FindFunctionLines(ReportStream& stream, std::uint64_t sample) {
  std::vector<Function> found;
  std::int64_t groupDepth = 0;
  BlockWalk walk(stream, sample);
  std::string_view line;
  while (walk.NextMarked(line)) {
    if (!walk.IsInside() || !line.starts_with(kFunction)) continue;
    const bool isOwn = found.empty() || walk.Depth() <= groupDepth;
    if (isOwn) groupDepth = walk.Depth();
    const std::uint64_t group = isOwn ? walk.Position() : found.back().group;
    found.push_back({.position = walk.Position(), .group = group});
  }
  return found;
}

using TextMember = TextNumber Function::*;

// Reads the keys of all the functions, each value once.
template <std::size_t N>
void ReadTexts(ReportStream& stream, std::span<Function> functions, std::vector<std::string>& texts,
               const std::array<std::string_view, N>& keys, const std::array<TextMember, N>& members) {
  Positions positions;
  for (Function& function : functions) positions.push_back(function.position);
  std::vector<std::array<TextNumber, N>> numbers(functions.size());  // empty texts so far
  std::vector<std::array<bool, N>> areHidden(functions.size());
  ReadKeysOfAll(stream, positions, keys,
                [&](std::size_t key, const LineValue& value, std::span<const std::size_t> blocks) {
                  if (!value.text.empty()) texts.emplace_back(value.text);
                  for (const std::size_t block : blocks) {
                    numbers[block][key] = value.text.empty() ? 0 : texts.size();
                    areHidden[block][key] = value.isCut;
                  }
                });
  for (std::size_t i = 0; i < functions.size(); ++i) {
    for (std::size_t key = 0; key < N; ++key) {
      functions[i].*members[key] = numbers[i][key];
      if (keys[key] == kTypeKey) functions[i].isTypeHidden = stream.IsCareful() && areHidden[i][key];
    }
  }
}

constexpr std::array kNameKeys = {kDescriptionKey, kTypeKey};
constexpr std::array kNameMembers = {&Function::description, &Function::type};

// By number. Texts are parsed once, however many functions share them.
std::vector<bool> TextsWith(const std::vector<std::string>& texts, std::string_view part) {
  std::vector<bool> with = {false};
  for (const std::string& text : texts) with.push_back(Contains(text, part));
  return with;
}

// Walks through the sample's block. The stream is then after it, or at the marker of the next sample where
// that is inside it. Returns how many braces are open there, or no value when the block has ended.
std::optional<std::int64_t> DepthBehindSample(ReportStream& stream) {
  const std::uint64_t position = stream.Position();
  BlockWalk walk(stream, position);
  bool isMarkerAlone = true;
  for (std::string_view line; walk.NextMarked(line);) {
    if (walk.Position() == position) continue;
    isMarkerAlone = false;
    if (!line.starts_with(kSample)) continue;
    stream.Seek(walk.Position());
    break;
  }
  return walk.Depth() > 0 || isMarkerAlone ? std::optional(walk.Depth()) : std::nullopt;
}

std::string EndProblem(std::int64_t depth) {
  if (depth == 0) return "ends where its last sample begins";
  return "ends inside " + std::to_string(depth) + (depth == 1 ? " block" : " blocks");
}

// A file that the system cannot read to its end is not considered cut.
void AddUnended(ReportStream& stream, const std::string& name, int sample, std::int64_t depth,
                Findings& findings) {
  Finding finding = {.code = FindingCode::kSampleUnended,
                     .file = name,
                     .problem = "has no end of sample " + std::to_string(sample),
                     .subject = {.kind = FindingSubject::Kind::kSample, .sample = sample}};
  if (!stream.Find(kSample)) {
    finding.code = FindingCode::kReportCut;
    finding.problem = EndProblem(depth);
    if (stream.IsRefused()) return;
  }
  findings.Add(std::move(finding));
}

}  // namespace

std::string_view Sample::Text(TextNumber number) const {
  return number == 0 ? std::string_view() : std::string_view(texts[number - 1]);
}

std::span<const std::uint64_t> Sample::SpectraOf(const Function& function) const {
  return std::span(spectra).subspan(function.spectra.first, function.spectra.Size());
}

std::span<const std::uint64_t> Sample::ChromatogramsOf(const Function& function) const {
  return std::span(chromatograms).subspan(function.chromatograms.first, function.chromatograms.Size());
}

std::span<Function> Sample::GroupOf(const Function& function) {
  const auto range = std::equal_range(functions.begin(), functions.end(), function,
                                      [](const Function& a, const Function& b) { return a.group < b.group; });
  return {range.first, range.second};
}

void Sample::ForgetTexts() {
  texts.clear();
  for (Function& function : functions) {
    function.description = function.type = function.ionMode = kUnreadText;
    if (function.blocks != Sought::kFound) function.spectra = function.chromatograms = {};
  }
}

std::vector<Sample> FindSamples(ReportStream& stream, const std::string& name, Findings* findings) {
  std::vector<Sample> samples;
  std::string_view marker;
  stream.Forget();  // left by an earlier failed search
  stream.Seek(0);
  stream.TakeRefusal();
  while (stream.Find(kSample)) {
    samples.emplace_back().position = stream.Position();
    if (findings == nullptr) {
      stream.Next(marker);
    } else if (const std::optional<std::int64_t> depth = DepthBehindSample(stream)) {
      AddUnended(stream, name, static_cast<int>(samples.size()), *depth, *findings);
    }
  }
  if (findings != nullptr && stream.TakeRefusal())
    findings->Add({.code = FindingCode::kFileUnreadable, .file = name, .problem = stream.Refusal()});
  return samples;
}

// Fills the record last, so that it is unchanged when memory runs out.
void FindFunctions(ReportStream& stream, Sample& sample) {
  std::vector<Function> functions = FindFunctionLines(stream, sample.position);
  const std::uint64_t end = stream.Position();
  std::vector<std::string> texts;
  ReadTexts(stream, functions, texts, kNameKeys, kNameMembers);
  const std::vector<bool> saysAnalog = TextsWith(texts, kAnalogMark);
  const std::vector<bool> saysDad = TextsWith(texts, kDadMark);
  for (Function& function : functions)
    function.isAnalog = saysAnalog[function.description] || saysDad[function.type];
  sample.end = end;
  sample.areFunctionsSought = true;
  sample.functions = std::move(functions);
  sample.texts = std::move(texts);
  sample.spectra.clear();
  sample.chromatograms.clear();
}

void FindBlocks(ReportStream& stream, Sample& sample, Function& function) {
  if (function.blocks == Sought::kFound) return;
  if (!function.HasBlocks()) {
    if (function.blocks == Sought::kInVain) stream.Forget();
    FindBlocksOf(stream, sample, sample.GroupOf(function), function.isAnalog);
  }
  SetSought(function);
}

void FindAllBlocks(ReportStream& stream, Sample& sample, bool areAnalog) {
  const auto isSoughtInVain = [=](const Function& function) {
    return function.isAnalog == areAnalog && function.blocks == Sought::kInVain;
  };
  if (std::any_of(sample.functions.begin(), sample.functions.end(), isSoughtInVain)) stream.Forget();
  FindBlocksOf(stream, sample, sample.functions, areAnalog);
  for (Function& function : sample.functions) {
    if (function.isAnalog == areAnalog) SetSought(function);
  }
}

void FindOwnBlocks(ReportStream& stream, Sample& sample) {
  Positions positions;
  for (const Function& function : sample.functions) positions.push_back(function.position);
  FoundBlocks found = FindBlocksAt(stream, positions);
  found.spectra.GroupByOwner();
  found.chromatograms.GroupByOwner();
  for (std::size_t i = 0; i < positions.size(); ++i) {
    Function& function = sample.functions[i];
    function.spectra = found.spectra.runs[i];
    function.chromatograms = found.chromatograms.runs[i];
    SetSought(function);
  }
  sample.spectra = std::move(found.spectra.positions);
  sample.chromatograms = std::move(found.chromatograms.positions);
}

void ReadNames(ReportStream& stream, Sample& sample, const Function& function) {
  if (function.type == kUnreadText)
    ReadTexts(stream, sample.GroupOf(function), sample.texts, kNameKeys, kNameMembers);
}

void ReadIonMode(ReportStream& stream, Sample& sample, const Function& function) {
  if (function.ionMode == kUnreadText) {
    ReadTexts(stream, sample.GroupOf(function), sample.texts, std::array{kIonModeKey},
              std::array{&Function::ionMode});
  }
}

}  // namespace zrml::openlynx
