#include "openlynx/report_index.h"

#include <algorithm>
#include <array>
#include <utility>

#include "openlynx/block_sweep.h"
#include "openlynx/report_block.h"

namespace zrml {
namespace {

using namespace report_format;

using Positions = std::vector<std::uint64_t>;

// The marker lines that lie in blocks: a run of each list for each block.
struct FoundBlocks {
  Positions spectra;
  Positions chromatograms;
  std::vector<Run> spectrumRuns;
  std::vector<Run> chromatogramRuns;
};

class MarkerSweep {
 public:
  static constexpr bool kEveryLine = false;

  explicit MarkerSweep(FoundBlocks& found) : found_(found) {}

  void Line(std::string_view, std::span<const std::size_t>) {}

  void Inside(std::string_view line, std::uint64_t position) {
    if (line.starts_with(kSpectrum)) found_.spectra.push_back(position);
    if (line.starts_with(kChromatogram)) found_.chromatograms.push_back(position);
  }

  void Began(std::span<const std::size_t> open) {
    const std::size_t number = open.back();
    open_.push_back(number);
    found_.spectrumRuns[number].first = found_.spectra.size();
    found_.chromatogramRuns[number].first = found_.chromatograms.size();
  }

  void Ended(std::size_t stillOpen) {
    const std::size_t number = open_[stillOpen];
    open_.pop_back();
    found_.spectrumRuns[number].last = found_.spectra.size();
    found_.chromatogramRuns[number].last = found_.chromatograms.size();
  }

  bool IsSatisfied(std::size_t) const { return false; }

 private:
  FoundBlocks& found_;
  std::vector<std::size_t> open_;
};

FoundBlocks FindBlocks(ReportStream& stream, std::span<const std::uint64_t> functions) {
  FoundBlocks found;
  found.spectrumRuns.resize(functions.size());
  found.chromatogramRuns.resize(functions.size());
  MarkerSweep visitor(found);
  BlockSweep(stream, functions, visitor).Run();
  return found;
}

// Gives where in `list` the items of `added` begin.
std::size_t Append(Positions& list, Positions added) {
  const std::size_t at = list.size();
  if (list.empty()) {
    list = std::move(added);
  } else {
    list.insert(list.end(), added.begin(), added.end());
  }
  return at;
}

// The lists last, the runs after them: memory that runs out leaves the functions as they were.
void FindBlocksOf(ReportStream& stream, ReportSampleRecord& sample,
                  std::span<ReportFunctionRecord> functions) {
  const auto isOpen = [](const ReportFunctionRecord& function) { return !function.HasBlocks(); };
  Positions positions;
  for (const ReportFunctionRecord& function : functions) {
    if (isOpen(function)) positions.push_back(function.position);
  }
  FoundBlocks found = FindBlocks(stream, positions);
  const std::size_t spectra = Append(sample.spectra, std::move(found.spectra));
  const std::size_t chromatograms = Append(sample.chromatograms, std::move(found.chromatograms));
  std::size_t number = 0;
  for (ReportFunctionRecord& function : functions) {
    if (!isOpen(function)) continue;
    const Run& spectrumRun = found.spectrumRuns[number];
    const Run& chromatogramRun = found.chromatogramRuns[number];
    function.spectra = {spectra + spectrumRun.first, spectra + spectrumRun.last};
    function.chromatograms = {chromatograms + chromatogramRun.first, chromatograms + chromatogramRun.last};
    ++number;
  }
}

void SetSought(ReportFunctionRecord& function) {
  function.blocksSought = true;
  function.blocksIndexed = function.HasBlocks();
}

// "[FUNCTION]" lines inside a sample, and for each the first of those that it may lie in.
struct FoundFunctions {
  Positions positions;
  Positions groups;
};

FoundFunctions FindFunctions(ReportStream& stream, std::uint64_t sample) {
  FoundFunctions found;
  std::int64_t groupDepth = 0;
  BlockWalk walk(stream, sample);
  std::string_view line;
  while (walk.NextMarked(line)) {
    if (!walk.IsInside() || !line.starts_with(kFunction)) continue;
    const bool isOwn = found.groups.empty() || walk.Depth() <= groupDepth;
    if (isOwn) groupDepth = walk.Depth();
    found.groups.push_back(isOwn ? walk.Position() : found.groups.back());
    found.positions.push_back(walk.Position());
  }
  return found;
}

using TextMember = TextNumber ReportFunctionRecord::*;

// Reads the keys of all the functions, each value once.
template <std::size_t N>
void ReadTexts(ReportStream& stream, std::span<ReportFunctionRecord> functions,
               std::vector<std::string>& texts, const std::array<std::string_view, N>& keys,
               const std::array<TextMember, N>& members) {
  Positions positions;
  for (ReportFunctionRecord& function : functions) positions.push_back(function.position);
  std::vector<std::array<TextNumber, N>> numbers(functions.size());  // empty texts so far
  ReadKeysOfAll(stream, positions, keys,
                [&](std::size_t key, std::string_view value, std::span<const std::size_t> blocks) {
                  texts.emplace_back(value);
                  for (const std::size_t block : blocks) numbers[block][key] = texts.size();
                });
  for (std::size_t i = 0; i < functions.size(); ++i) {
    for (std::size_t key = 0; key < N; ++key) functions[i].*members[key] = numbers[i][key];
  }
}

constexpr std::array kNameKeys = {kDescriptionKey, kTypeKey};
constexpr std::array kNameMembers = {&ReportFunctionRecord::description, &ReportFunctionRecord::type};

// By number. Texts are looked at once, whatever number of functions share them.
std::vector<bool> TextsWith(const std::vector<std::string>& texts, std::string_view part) {
  std::vector<bool> with = {false};
  for (const std::string& text : texts) with.push_back(Contains(text, part));
  return with;
}

std::vector<ReportFunctionRecord> FunctionsOf(const FoundFunctions& found) {
  std::vector<ReportFunctionRecord> functions(found.positions.size());
  for (std::size_t i = 0; i < functions.size(); ++i) {
    functions[i].position = found.positions[i];
    functions[i].group = found.groups[i];
  }
  return functions;
}

AnalogTraces::Look FindAnalogTraces(ReportStream& stream, std::span<const std::uint64_t> functions) {
  FoundBlocks found = FindBlocks(stream, functions);
  return {std::move(found.chromatograms), std::move(found.chromatogramRuns)};
}

}  // namespace

bool AnalogTraces::Look::operator==(const Look& other) const {
  return positions == other.positions &&
         std::equal(runs.begin(), runs.end(), other.runs.begin(), other.runs.end(),
                    [](const Run& a, const Run& b) { return a.first == b.first && a.last == b.last; });
}

void AnalogTraces::Add(Look look) {
  std::vector<std::size_t> ends;
  std::size_t count = 0;
  for (const Run& run : look.runs) ends.push_back(count += run.Size());
  // A position is counted modulo the traces of one look, so a look with the same result needs no place.
  if (count != 0 && (looks_.empty() || !(looks_.back().look == look))) {
    looks_.push_back({std::move(look), std::move(ends), count_});
  }
  lastCount_ = count;
  count_ += count;
}

std::optional<std::uint64_t> AnalogTraces::Position(std::size_t number) const {
  if (number >= count_) return std::nullopt;
  const Looks& looks =
      *std::prev(std::upper_bound(looks_.begin(), looks_.end(), number,
                                  [](std::size_t value, const Looks& entry) { return value < entry.first; }));
  const std::size_t at = (number - looks.first) % looks.ends.back();
  const auto end = std::upper_bound(looks.ends.begin(), looks.ends.end(), at);
  const Run& run = looks.look.runs[static_cast<std::size_t>(end - looks.ends.begin())];
  return looks.look.positions[run.last - (*end - at)];
}

std::string_view ReportSampleRecord::Text(TextNumber number) const {
  return number == 0 ? std::string_view() : std::string_view(texts[number - 1]);
}

std::span<const std::uint64_t> ReportSampleRecord::SpectraOf(const ReportFunctionRecord& function) const {
  return std::span(spectra).subspan(function.spectra.first, function.spectra.Size());
}

std::span<ReportFunctionRecord> ReportSampleRecord::GroupOf(const ReportFunctionRecord& function) {
  const auto range = std::equal_range(
      functions.begin(), functions.end(), function,
      [](const ReportFunctionRecord& a, const ReportFunctionRecord& b) { return a.group < b.group; });
  return {range.first, range.second};
}

void ReportSampleRecord::Forget() {
  texts.clear();
  for (ReportFunctionRecord& function : functions) {
    function.description = function.type = function.ionMode = kUnreadText;
    if (!function.blocksIndexed) function.spectra = function.chromatograms = {};
  }
}

std::vector<ReportSampleRecord> FindSamples(ReportStream& stream) {
  std::vector<ReportSampleRecord> samples;
  std::string_view marker;
  stream.Forget();  // what an earlier search in vain has seen
  stream.Seek(0);
  while (stream.Find(kSample)) {
    samples.emplace_back().position = stream.Position();
    stream.Next(marker);
  }
  return samples;
}

// Fills the record last, so that memory that runs out leaves it as it was.
void IndexFunctions(ReportStream& stream, ReportSampleRecord& sample) {
  // The digest is taken before the walk that it stands for: a change between the two only costs a walk.
  std::optional<std::uint64_t> digest;
  if (sample.functionsSought) digest = stream.Digest(sample.position, sample.end);
  if (digest && digest == sample.digest) return sample.analogTraces.AddAgain();
  std::vector<ReportFunctionRecord> functions = FunctionsOf(FindFunctions(stream, sample.position));
  const std::uint64_t end = stream.Position() + 1;
  std::vector<std::string> texts;
  ReadTexts(stream, functions, texts, kNameKeys, kNameMembers);
  const std::vector<bool> saysAnalog = TextsWith(texts, kAnalogMark);
  const std::vector<bool> saysDad = TextsWith(texts, kDadMark);
  const auto isAnalog = [&](const ReportFunctionRecord& function) {
    return saysAnalog[function.description] || saysDad[function.type];
  };
  Positions analog;
  for (const ReportFunctionRecord& function : functions) {
    if (isAnalog(function)) analog.push_back(function.position);
  }
  std::erase_if(functions, isAnalog);
  sample.analogTraces.Add(FindAnalogTraces(stream, analog));
  sample.digest = end == sample.end ? digest : std::nullopt;
  sample.end = end;
  sample.functionsSought = true;
  sample.functionsIndexed = !functions.empty();
  sample.functions = std::move(functions);
  sample.texts = std::move(texts);
}

void IndexBlocks(ReportStream& stream, ReportSampleRecord& sample, ReportFunctionRecord& function) {
  if (function.blocksIndexed) return;
  if (!function.HasBlocks()) {
    if (function.blocksSought) stream.Forget();
    FindBlocksOf(stream, sample, sample.GroupOf(function));
  }
  SetSought(function);
}

void IndexAllBlocks(ReportStream& stream, ReportSampleRecord& sample) {
  const auto isSoughtInVain = [](const ReportFunctionRecord& function) {
    return function.blocksSought && !function.blocksIndexed;
  };
  if (std::any_of(sample.functions.begin(), sample.functions.end(), isSoughtInVain)) stream.Forget();
  FindBlocksOf(stream, sample, sample.functions);
  for (ReportFunctionRecord& function : sample.functions) SetSought(function);
}

void ReadNames(ReportStream& stream, ReportSampleRecord& sample, const ReportFunctionRecord& function) {
  if (function.type == kUnreadText)
    ReadTexts(stream, sample.GroupOf(function), sample.texts, kNameKeys, kNameMembers);
}

void ReadIonMode(ReportStream& stream, ReportSampleRecord& sample, const ReportFunctionRecord& function) {
  if (function.ionMode == kUnreadText) {
    ReadTexts(stream, sample.GroupOf(function), sample.texts, std::array{kIonModeKey},
              std::array{&ReportFunctionRecord::ionMode});
  }
}

}  // namespace zrml
