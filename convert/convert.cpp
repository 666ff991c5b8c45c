#include "convert/convert.h"

#include <utility>

#include "convert/error.h"
#include "convert/ordered_pieces.h"
#include "convert/writer.h"

namespace zrml::convert {
namespace {

std::unique_ptr<Renderer> MakeRenderer(source::Source& source, const RunPlan& plan,
                                       const ParquetPlan& parquet, Losses& losses, const Options& options) {
  switch (options.format) {
    case Format::kMgf:
      return MakeMgfRenderer(source, plan, losses);
    case Format::kTsv:
      return MakeTsvRenderer(source, plan, losses);
    case Format::kParquet:
      return MakeParquetRenderer(source, plan, parquet, losses, options.arrays);
    case Format::kMzml:
      break;
  }
  return MakeMzmlRenderer(source, plan, losses, options.arrays);
}

std::unique_ptr<Document> MakeDocument(const RunContext& context, const ParquetPlan& parquet, Format format,
                                       ByteSink& out) {
  switch (format) {
    case Format::kMgf:
      return MakeMgfDocument(out);
    case Format::kTsv:
      return MakeTsvDocument(out);
    case Format::kParquet:
      return MakeParquetDocument(context.plan, parquet, context.arrays, out);
    case Format::kMzml:
      break;
  }
  return MakeMzmlDocument(context, out);
}

// One conversion.
class Conversion {
 public:
  Conversion(SourceInUse& source, int sample, const Options& options, ByteSink& out, const Hooks& hooks)
      : source_(source),
        options_(options),
        out_(out),
        hooks_(hooks),
        losses_(options.isLossAllowed ? Losses::Policy::kCounted : Losses::Policy::kRefused),
        plan_(PlanRun(source.First(), sample, options.selection, options.format, hooks.cancel)) {}

  Result Run() {
    NoteMissingBins();
    if (IsParquet()) parquet_ = PlanParquet(source_.Workers(), plan_, options_.arrays, hooks_);
    MakeRenderers();
    // The other workers begin while this one reads the source's files.
    std::optional<OrderedPieces> spectra(std::in_place, TextCount(), Workers());
    const SourceFiles& files = ReadFiles();
    const RunContext context = {plan_,           source_.First(),    losses_,      files.files,
                                options_.arrays, options_.isIndexed, hooks_.cancel};
    const std::unique_ptr<Document> document = MakeDocument(context, parquet_, options_.format, out_);
    document->Begin();
    AddSpectra(*spectra, *document);
    spectra.reset();
    document->End();
    ThrowIfCancelled(hooks_.cancel);
    CheckUnchanged();
    Findings faults = losses_.ListFaults();
    if (options_.isStrict && !faults.IsEmpty())
      throw Error(ErrorKind::kSourceSuspect, TextOf(faults.List().front()));
    out_.Finish();
    return {plan_.entries.size(), document->ChromatogramCount(),
            plan_.absorbance,     std::move(notes_),
            losses_.List(),       std::move(faults)};
  }

 private:
  void NoteMissingBins() {
    for (const RunFunction& function : plan_.functions) {
      if (!TakesDriftBins(options_.format) || !function.info.hasMobility || function.driftBins > 0) continue;
      notes_.push_back({Note::Kind::kDriftBins, "the drift bins of function " + TextOf(function.info.id) +
                                                    " are left out: the library that reads them is missing"});
    }
  }

  void MakeRenderers() {
    for (const std::unique_ptr<source::Source>& worker : source_.Workers())
      renderers_.push_back(MakeRenderer(*worker, plan_, parquet_, losses_, options_));
  }

  std::vector<MakePiece> Workers() const {
    std::vector<MakePiece> workers;
    for (const std::unique_ptr<Renderer>& renderer : renderers_) {
      workers.push_back([&renderer](std::size_t index, std::string& text) { renderer->Render(index, text); });
    }
    return workers;
  }

  // For their checksums. Without checksums, to notice a failing disk, but not when only a part of the scans
  // is requested.
  const SourceFiles& ReadFiles() {
    static const SourceFiles kNone;
    const bool isNamed = options_.format == Format::kMzml;
    if (!isNamed && !options_.selection.IsAll()) return kNone;
    const SourceFiles& files = source_.Files(isNamed ? Checksums::kMade : Checksums::kLeftOut, hooks_.cancel);
    NoteProblems(files);
    return files;
  }

  void NoteProblems(const SourceFiles& files) {
    if (files.isForbidden) {
      notes_.push_back({Note::Kind::kFolder, *files.error + ", so its files are neither named nor watched"});
    } else if (files.error) {
      NoteOrRefuse({Note::Kind::kFolder, *files.error}, ErrorKind::kSourceUnreadable);
    }
    for (const auto& [file, problem] : files.broken) {
      const Note note = {Note::Kind::kFileBroken, std::string(file).append(" ").append(problem), file};
      if (IsByTheWay(file, plan_.sourceFormat)) {
        notes_.push_back(note);
      } else {
        NoteOrRefuse(note, ErrorKind::kSourceUnreadable);
      }
    }
    for (const std::string& file : files.closed)
      notes_.push_back({Note::Kind::kFileClosed, file + " cannot be opened", file});
  }

  void NoteOrRefuse(Note note, ErrorKind kind) {
    if (!options_.isLossAllowed) throw Error(kind, note.text);
    notes_.push_back(std::move(note));
  }

  void AddSpectra(OrderedPieces& spectra, Document& document) {
    for (std::size_t i = 0; i < TextCount(); ++i) {
      ThrowIfCancelled(hooks_.cancel);
      document.Add(spectra.Take());
      if (!hooks_.progress) continue;
      const std::size_t written = IsParquet() ? parquet_.ends[i] : i + 1;
      hooks_.progress(parquet_.looked + written, parquet_.looked + plan_.entries.size());
    }
  }

  bool IsParquet() const { return options_.format == Format::kParquet; }
  /// What renderers make: of Parquet's entries some are rendered together.
  std::size_t TextCount() const { return IsParquet() ? parquet_.ends.size() : plan_.entries.size(); }

  void CheckUnchanged() {
    const std::optional<std::string> file = source_.FindChange();
    if (!file) return;
    NoteOrRefuse({Note::Kind::kSourceChanged, *file + " has changed during the conversion", *file},
                 ErrorKind::kSourceChanged);
  }

  SourceInUse& source_;
  const Options& options_;
  ByteSink& out_;
  const Hooks& hooks_;
  Losses losses_;
  RunPlan plan_;
  ParquetPlan parquet_;
  std::vector<std::unique_ptr<Renderer>> renderers_;
  std::vector<Note> notes_;
};

}  // namespace

SourceInUse::SourceInUse(const std::string& path, int workers, const Opener& open) : stamp_(path) {
  for (int i = 0; i < workers; ++i) workers_.push_back(open());
}

const SourceFiles& SourceInUse::Files(Checksums checksums, const Cancel& cancel) {
  if (!files_) {
    files_ = ListSourceFiles(First().Path(), First().GetFormat(), checksums, cancel);
  }
  return *files_;
}

Result ConvertSample(SourceInUse& source, int sample, const Options& options, ByteSink& out,
                     const Hooks& hooks) {
  try {
    return Conversion(source, sample, options, out, hooks).Run();
  } catch (const Error& error) {
    // A scan that is lost since the source was opened is a change, not damage.
    if (error.Kind() != ErrorKind::kSourceDamaged) throw;
    const std::optional<std::string> file = source.FindChange();
    if (!file) throw;
    throw Error(ErrorKind::kSourceChanged, *file + " has changed during the conversion");
  }
}

}  // namespace zrml::convert
