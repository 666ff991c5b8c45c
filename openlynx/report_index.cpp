#include "openlynx/report_index.h"

#include <array>
#include <utility>

#include "openlynx/report_block.h"

namespace zrml {
namespace {

using namespace report_format;

// Calls `use(marker, position)` for each line inside a block that begins with one of `markers`.
template <std::size_t N, class Use>
void ForEachMarker(ReportStream& stream, std::uint64_t block, const std::array<std::string_view, N>& markers,
                   Use use) {
  BlockWalk walk(stream, block);
  std::string_view line;
  while (walk.NextMarked(line)) {
    if (!walk.IsInside()) continue;
    for (const std::string_view marker : markers) {
      if (line.starts_with(marker)) use(marker, walk.Position());
    }
  }
}

void AppendMarkers(ReportStream& stream, std::uint64_t block, std::string_view marker,
                   std::vector<std::uint64_t>& positions) {
  ForEachMarker(stream, block, std::array{marker},
                [&](std::string_view, std::uint64_t position) { positions.push_back(position); });
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

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

// Both fill the records last, so that memory that runs out leaves them as they were.
void IndexFunctions(ReportStream& stream, ReportSampleRecord& sample) {
  if (sample.functionsSought) stream.Forget();
  std::vector<std::uint64_t> positions;
  AppendMarkers(stream, sample.position, kFunction, positions);
  std::vector<ReportFunctionRecord> functions;
  std::vector<std::uint64_t> analogTraces;
  for (const std::uint64_t position : positions) {
    std::array<KeyValue, 2> keys = {{{kDescriptionKey}, {kTypeKey}}};
    ReadKeys(stream, position, keys);
    auto& [description, type] = keys;
    if (Contains(description.value, kAnalogMark) || Contains(type.value, kDadMark)) {
      AppendMarkers(stream, position, kChromatogram, analogTraces);
      continue;
    }
    ReportFunctionRecord& function = functions.emplace_back();
    function.position = position;
    function.names = {std::move(description.value), std::move(type.value)};
  }
  sample.analogTraces.insert(sample.analogTraces.end(), analogTraces.begin(), analogTraces.end());
  sample.functionsSought = true;
  sample.functionsIndexed = !functions.empty();
  sample.functions = std::move(functions);
}

void IndexBlocks(ReportStream& stream, ReportFunctionRecord& function) {
  if (function.blocksIndexed) return;
  if (function.blocksSought) stream.Forget();
  std::vector<std::uint64_t> spectra;
  std::vector<std::uint64_t> chromatograms;
  ForEachMarker(stream, function.position, std::array{kSpectrum, kChromatogram},
                [&](std::string_view marker, std::uint64_t position) {
                  (marker == kSpectrum ? spectra : chromatograms).push_back(position);
                });
  function.blocksSought = true;
  function.blocksIndexed = !spectra.empty() || !chromatograms.empty();
  function.spectra = std::move(spectra);
  function.chromatograms = std::move(chromatograms);
}

}  // namespace zrml
