#include "tools/zrml/convert/run_converter.h"

#include <optional>
#include <utility>

#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/convert/ordered_pieces.h"
#include "tools/zrml/failure.h"

namespace zrml {
namespace {

constexpr std::string_view kTsvHeading = "function\tscan\ttime\tm/z\tintensity\n";

std::unique_ptr<Renderer> MakeRenderer(CDataServerImpl& server, const RunPlan& plan,
                                       const ConvertOptions& options) {
  switch (options.format) {
    case Format::kMgf:
      return MakeMgfRenderer(server, plan);
    case Format::kTsv:
      return MakeTsvRenderer(server, plan);
    case Format::kMzml:
      break;
  }
  return MakeMzmlRenderer(server, plan, options.arrays);
}

std::unique_ptr<Document> MakeDocument(const RunContext& context, Format format, ByteSink& out) {
  if (format == Format::kMzml) return MakeMzmlDocument(context, out);
  return MakePlainDocument(format == Format::kTsv ? kTsvHeading : std::string_view(), out);
}

// What is not as in the source.
class Notes {
 public:
  Notes(std::vector<std::wstring> lines, bool isDamageAllowed)
      : lines_(std::move(lines)), isDamageAllowed_(isDamageAllowed) {}

  void Add(const std::wstring& line) { lines_.push_back(line); }

  /// What the user has to allow.
  void AddOrRefuse(const std::wstring& problem) {
    if (!isDamageAllowed_) throw Failure(ExitStatus::kUnreadable, problem);
    Add(problem);
  }

  // Of files that a finding has named nothing more is said.
  void Add(const SourceFiles& files, const std::set<std::wstring>& told, bool isReport) {
    if (files.error) AddOrRefuse(*files.error);
    for (const std::wstring& file : files.broken) {
      const std::wstring problem = file + L" cannot be read to its end";
      IsByTheWay(file, isReport) ? Add(problem) : AddOrRefuse(problem);
    }
    for (const std::wstring& file : files.closed) {
      if (!told.contains(file)) Add(file + L" cannot be opened");
    }
  }

  std::vector<std::wstring> Lines() && { return std::move(lines_); }

 private:
  std::vector<std::wstring> lines_;
  bool isDamageAllowed_;
};

// Read once for all samples, for their checksums; where these are not written, so that a disk that fails is
// seen, whose points are read as zeros, but not when only a part of the scans is asked for.
const SourceFiles& FilesOf(SourceInUse& source, bool isReport, const ConvertOptions& options) {
  if (source.files) return *source.files;
  const bool isNamed = options.format == Format::kMzml;
  source.files.emplace();
  if (isNamed || options.selection.IsAll()) {
    source.files =
        ListSourceFiles(source.First().Path(), isReport, isNamed ? Checksums::kMade : Checksums::kLeftOut,
                        static_cast<int>(source.workers.size()));
  }
  return *source.files;
}

}  // namespace

Content ContentOf(Format format) {
  switch (format) {
    case Format::kMgf:
      return Content::kFragmentSpectra;
    case Format::kTsv:
      return Content::kMassSpectra;
    case Format::kMzml:
      break;
  }
  return Content::kAll;
}

ConvertedRun ConvertRun(SourceInUse& source, int sample, const std::wstring& name,
                        const ConvertOptions& options, ByteSink& out, const Progress& progress) {
  const Source& first = source.First();
  Losses losses(options.isDamageAllowed ? Losses::Policy::kTold : Losses::Policy::kRefused);
  const RunPlan plan = PlanRun(first.Server(), sample, options.selection, ContentOf(options.format), losses);
  std::vector<std::unique_ptr<Renderer>> renderers;
  std::vector<MakePiece> workers;
  for (const Source& worker : source.workers) {
    // A provider of reports shows fewer functions once it has been asked how many there are: as all workers
    // must.
    if (&worker != &first) worker.Server().GetFunctionCount(sample);
    Renderer& renderer = *renderers.emplace_back(MakeRenderer(worker.Server(), plan, options));
    workers.push_back([&renderer](std::size_t index, std::string& text) { renderer.Render(index, text); });
  }
  // The other workers begin while this one reads the source's files.
  std::optional<OrderedPieces> spectra(std::in_place, plan.entries.size(), std::move(workers));
  Notes notes(plan.notes, options.isDamageAllowed);
  const SourceFiles& files = FilesOf(source, plan.isReport, options);
  notes.Add(files, source.told, plan.isReport);
  const RunContext context = {plan, first.Server(), name, files.files, options.arrays, options.isIndexed};
  const std::unique_ptr<Document> document = MakeDocument(context, options.format, out);
  document->Begin();
  for (std::size_t i = 0; i < plan.entries.size(); ++i) {
    ThrowIfInterrupted();
    document->Add(spectra->Take());
    progress(i + 1, plan.entries.size());
  }
  spectra.reset();
  document->End();
  ThrowIfInterrupted();
  for (const std::wstring& loss : losses.Describe()) notes.Add(loss);
  // Points that a file has lost since it was looked at have been read as zeros.
  if (const auto changed = source.stamp.FindChange())
    notes.AddOrRefuse(*changed + L" has changed during the conversion");
  out.Finish();
  return {plan.entries.size(), document->ChromatogramCount(), std::move(notes).Lines()};
}

}  // namespace zrml
