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

  void Add(const SourceFiles& files) {
    if (files.error) AddOrRefuse(*files.error);
    for (const std::wstring& name : files.broken) AddOrRefuse(name + L" cannot be read to its end");
    for (const std::wstring& name : files.closed) Add(name + L" cannot be opened");
  }

  std::vector<std::wstring> Lines() && { return std::move(lines_); }

 private:
  std::vector<std::wstring> lines_;
  bool isDamageAllowed_;
};

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

ConvertedRun ConvertRun(const OpenSource& source, int sample, const std::wstring& name,
                        const ConvertOptions& options, ByteSink& out, const Progress& progress) {
  const Source& first = source.First();
  Losses losses(options.isDamageAllowed ? Losses::Policy::kTold : Losses::Policy::kRefused);
  const RunPlan plan = PlanRun(first.Server(), sample, options.selection, ContentOf(options.format), losses);
  std::vector<std::unique_ptr<Renderer>> renderers;
  std::vector<MakePiece> workers;
  for (const Source& worker : source.workers) {
    Renderer& renderer = *renderers.emplace_back(MakeRenderer(worker.Server(), plan, options));
    workers.push_back([&renderer](std::size_t index, std::string& text) { renderer.Render(index, text); });
  }
  // The other workers begin while this one describes the source, whose files it reads for their checksums.
  std::optional<OrderedPieces> spectra(std::in_place, plan.entries.size(), std::move(workers));
  RunContext context = {plan, first.Server(), name, {}, options.arrays, options.isIndexed};
  // Also where they are not named: what a failing disk does not give is read as zeros.
  SourceFiles files = ListSourceFiles(first.Path(), plan.isReport, static_cast<int>(source.workers.size()));
  Notes notes(plan.notes, options.isDamageAllowed);
  notes.Add(files);
  context.files = std::move(files.files);
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
