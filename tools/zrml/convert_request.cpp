#include "tools/zrml/convert_request.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "common/text.h"
#include "convert/native_path.h"
#include "tools/zrml/command.h"
#include "tools/zrml/convert_target.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/list_file.h"
#include "tools/zrml/point_options.h"
#include "tools/zrml/selection_options.h"
#include "tools/zrml/thread_option.h"

namespace zrml::tool {
namespace {

using convert::ArrayOptions;
using convert::Precision;

struct FormatName {
  std::string_view name;
  convert::Format format;
  const char* extension;
};

// In the order of convert::Format.
constexpr std::array<FormatName, 4> kFormats = {{
    {"mzml", convert::Format::kMzml, ".mzML"},
    {"mgf", convert::Format::kMgf, ".mgf"},
    {"tsv", convert::Format::kTsv, ".tsv"},
    {"parquet", convert::Format::kParquet, ".parquet"},
}};

struct ArrayName {
  std::string_view name;
  Precision ArrayOptions::*precision;
};

constexpr std::array<ArrayName, 3> kArrays = {{
    {"mz", &ArrayOptions::masses},
    {"intensity", &ArrayOptions::intensities},
    {"time", &ArrayOptions::times},
}};

constexpr std::string_view kGzipExtension = ".gz";

std::optional<convert::Format> ParseFormat(std::string_view text) {
  const std::string lower = ToLower(text);
  for (const FormatName& entry : kFormats) {
    if (entry.name == lower) return entry.format;
  }
  return std::nullopt;
}

std::string_view NameOf(convert::Format format) { return kFormats.at(static_cast<std::size_t>(format)).name; }

bool IsNameOfGzip(const std::string& file) { return ToLower(file).ends_with(kGzipExtension); }

// The format given by the end of a file's name, before ".gz".
std::optional<convert::Format> FormatOfName(const std::string& file) {
  std::string_view name = file;
  if (IsNameOfGzip(file)) name.remove_suffix(kGzipExtension.size());
  const std::size_t point = name.rfind('.');
  return point == name.npos ? std::nullopt : ParseFormat(name.substr(point + 1));
}

void SetPrecision(const std::string& option, const std::string& name, Precision precision,
                  ArrayOptions& arrays) {
  for (const ArrayName& entry : kArrays) {
    if (entry.name != name) continue;
    Precision& chosen = arrays.*entry.precision;
    if (chosen != Precision::kExact && chosen != precision)
      throw CLI::ValidationError(option, name + " cannot have both 32 and 64 bits");
    chosen = precision;
    return;
  }
  throw CLI::ValidationError(option, "\"" + name + "\" is not mz, intensity or time");
}

void AddPrecision(CLI::App& options, const std::string& option, Precision precision, ArrayOptions& arrays,
                  const std::string& description) {
  const auto store = [=, &arrays](const std::vector<std::string>& names) {
    for (const std::string& name : names) SetPrecision(option, name, precision, arrays);
  };
  options
      .add_option_function<std::vector<std::string>>(option, store, description + ": mz, intensity or time")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->option_text("ARRAY,...");
}

void AddSourceOptions(CLI::App& options, ConvertRequest& request) {
  AddSourceArguments(options, request.sources)->required(false)->option_text("...");
  options.add_option("--from", request.list, "A file that lists sources, one a line; - is standard input")
      ->option_text("FILE")
      ->check(IsNotEmpty());
  AddThreadOption(options, request.threads);
}

void AddTargetOptions(CLI::App& options, ConvertRequest& request) {
  CLI::Option* const folder = options.add_option("-o,--output", request.folder,
                                                 "The folder for the files; the current one by default");
  folder->option_text("DIR")->check(IsNotEmpty());
  CLI::Option* const file = options.add_option(
      "-b,--file", request.file,
      "The file, for a single source; its name says the format: .mzML, .mgf, .tsv, with .gz; .parquet");
  file->option_text("FILE")->check(IsNotEmpty())->excludes(folder);
  CLI::Option* const standard = options.add_flag("--stdout", request.isToStandardOutput,
                                                 "To standard output; mzML is not indexed then");
  standard->excludes(folder)->excludes(file)->option_text(" ");
  options.add_flag("--force", request.isForced, "Replace files that exist");
  options.add_flag("--skip-existing", request.isKept,
                   "Leave out what has become a file already that is whole and newer than its source");
}

void AddFormatOptions(CLI::App& options, ConvertRequest& request) {
  AddParsed(options, "--format", request.format, ParseFormat, "mzml, mgf, tsv or parquet",
            "mzml (default), mgf (MS/MS functions only), tsv or parquet (a row for each point)")
      ->option_text("FORMAT");
  options.add_flag("--profile", request.conversion.selection.hasProfiles,
                   "Write MGF of profile spectra, too");
  options.add_flag_callback(
      "--no-index", [&request] { request.conversion.isIndexed = false; },
      "Write mzML without index and checksum");
  options.add_flag("--gzip", request.isGzipped, "Compress the file as a whole");
}

void AddArrayOptions(CLI::App& options, ArrayOptions& arrays) {
  CLI::Option* const zlib = options.add_flag("-z,--zlib");
  zlib->description("Compress arrays of mzML and columns of Parquet (default)");
  options
      .add_flag_callback(
          "--no-zlib", [&arrays] { arrays.isCompressed = false; }, "Do not compress them")
      ->excludes(zlib)
      ->option_text(" ");
  zlib->option_text(" ");
  AddNumber(options, "--compression-level", arrays.level,
            "How much to compress, from 1 (fast) to 9 (small); 4 by default", convert::Deflater::kMostLevel);
  AddPrecision(options, "--32", Precision::kSingle, arrays, "Write such arrays with 32 bits a number");
  AddPrecision(options, "--64", Precision::kDouble, arrays, "Write such arrays with 64 bits a number");
}

CLI::Option* AddCentroidOption(CLI::App& options, convert::PointChoice& points) {
  return AddNumberSet(options, "--centroid", points.centroidLevels,
                      "Centroids of profile spectra, of all or of these MS levels, such as 2-")
      ->option_text("[LIST]");
}

void AddScanOptions(CLI::App& options, ConvertRequest& request) {
  convert::Selection& selection = request.conversion.selection;
  AddNumberSet(options, "--scans", selection.scans, "Scans of each function, such as 10-20");
  AddSelectionOptions(options, selection);
  AddPointOptions(options, AddCentroidOption(options, selection.points), selection);
  options.add_flag("--exclude-lock-mass", selection.isLockMassExcluded, "Leave reference functions out");
  options.add_flag("--absorbance", selection.hasAbsorbance, "Write absorbance spectra beside mass spectra");
  options.add_flag("--monitored-spectra", selection.hasMonitoredSpectra,
                   "Write spectra of ion monitoring, too, beside the chromatograms of its channels");
  AddNumber(options, "--sample", request.sample, "The sample of a report, counted from 1; all by default");
}

void AddReportingOptions(CLI::App& options, ConvertRequest& request) {
  CLI::Option* const damaged = options.add_flag("--damaged", request.conversion.isLossAllowed,
                                                "Also convert a source that has lost data");
  options.add_flag("--strict", request.conversion.isStrict, "Do not convert a source that is suspect either")
      ->excludes(damaged)
      ->option_text(" ");
  options.add_option("--log", request.log, "Append a line of JSON about each source to a file")
      ->option_text("FILE")
      ->check(IsNotEmpty());
  CLI::Option* const quiet = options.add_flag("-q,--quiet", request.isQuiet, "Print errors only");
  quiet->option_text(" ");
  options.add_flag("-v,--verbose", request.isVerbose, "Say on standard error what each file holds")
      ->excludes(quiet)
      ->option_text(" ");
}

[[noreturn]] void Contradict(const std::string& file, const std::string& option) {
  throw Failure(ExitStatus::kWrongUsage, "the name " + file + " contradicts " + option);
}

// The name must match the content, since other programs rely on it.
void TakeFormat(ConvertRequest& request) {
  const std::optional<convert::Format> named = FormatOfName(request.file);
  if (named && request.format && named != request.format)
    Contradict(request.file, "--format " + std::string(NameOf(*request.format)));
  if (named && request.isGzipped && !IsNameOfGzip(request.file)) Contradict(request.file, "--gzip");
  request.isGzipped = request.isGzipped || IsNameOfGzip(request.file);
  request.conversion.format = request.format.value_or(named.value_or(convert::Format::kMzml));
  if (request.isGzipped && request.conversion.format == convert::Format::kParquet)
    throw Failure(ExitStatus::kWrongUsage,
                  "Parquet is compressed inside; --gzip and .gz are for other formats");
}

void RefuseFileAsFolder(const std::string& folder) {
  if (!FormatOfName(folder) || platform::IsDirectory(platform::FromUtf8Path(folder))) return;
  throw Failure(ExitStatus::kWrongUsage, folder + " is the name of a file; -b takes one, -o a folder");
}

void AddListedSources(ConvertRequest& request) {
  std::vector<std::string>& paths = request.sources.paths;
  if (request.list.empty() && paths.empty())
    throw Failure(ExitStatus::kWrongUsage, "PATH or --from is required (see zrml convert --help)");
  if (request.list.empty()) return;
  const std::vector<std::string> listed = ReadLines(request.list, "sources");
  paths.insert(paths.end(), listed.begin(), listed.end());
}

}  // namespace

void AddConvertOptions(CLI::App& options, ConvertRequest& request) {
  AddSourceOptions(options, request);
  AddTargetOptions(options, request);
  AddFormatOptions(options, request);
  AddArrayOptions(options, request.conversion.arrays);
  AddScanOptions(options, request);
  AddReportingOptions(options, request);
}

std::string ExtensionOf(convert::Format format) {
  return kFormats.at(static_cast<std::size_t>(format)).extension;
}

void Complete(ConvertRequest& request) {
  TakeFormat(request);
  RefuseFileAsFolder(request.folder);
  AddListedSources(request);
  request.paths = ListSources(request.sources);
  if (request.isToStandardOutput || !request.file.empty()) RequireOneSource(request.paths);
  LeaveOutRepeats(request.paths, "converted", request.isQuiet);
  request.threads = ThreadCount(request.threads);
  if (request.isToStandardOutput) request.conversion.isIndexed = false;
  if (!request.file.empty()) {
    if (request.file == request.log)
      throw Failure(ExitStatus::kWrongUsage, request.file + " is named more than once");
    RefuseFolderAsFile(request.file);
    RefuseUnlessFile(request.file);
  }
  if (!request.folder.empty()) MakeFolder(request.folder);
}

}  // namespace zrml::tool
