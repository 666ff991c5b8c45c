#include "tools/zrml/convert/run_converter.h"

#include <iterator>
#include <optional>

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

void Append(std::vector<std::wstring>& lines, std::vector<std::wstring> more) {
  lines.insert(lines.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

// Points that a file has lost since it was looked at have been read as zeros.
void TellOfChange(const std::wstring& file, const ConvertOptions& options, std::vector<std::wstring>& notes) {
  const std::wstring problem = file + L" has changed during the conversion";
  if (!options.isDamageAllowed) throw Failure(ExitStatus::kUnreadable, problem);
  notes.push_back(problem);
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
  std::vector<std::wstring> notes = plan.notes;
  if (options.format == Format::kMzml) {
    SourceFiles files =
        ListSourceFiles(first.Path(), plan.isReport, static_cast<int>(source.workers.size()),
                        options.isDamageAllowed ? UnreadableFiles::kLeftOut : UnreadableFiles::kRefused);
    context.files = std::move(files.files);
    Append(notes, std::move(files.unread));
  }
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
  Append(notes, losses.Describe());
  if (const std::optional<std::wstring> changed = source.stamp.FindChange())
    TellOfChange(*changed, options, notes);
  out.Finish();
  return {plan.entries.size(), document->ChromatogramCount(), std::move(notes)};
}

}  // namespace zrml
