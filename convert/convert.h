// One sample of a source into one file of an open format: mzML, MGF, TSV or Parquet.
//
//   SourceInUse source(path, 2, [&] { return source::Source::Open(path); });
//   TargetFile target("run.mzML", Existing::kKeep);
//   ConvertSample(source, 0, {}, target, {});
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "convert/byte_sink.h"
#include "convert/hooks.h"
#include "convert/losses.h"
#include "convert/mzml_arrays.h"
#include "convert/plan.h"
#include "convert/source_files.h"

namespace zrml::convert {

struct Options {
  Format format = Format::kMzml;
  ArrayOptions arrays = {};  ///< for mzML and Parquet
  bool isIndexed = true;     ///< mzML with index and checksum
  Selection selection = {};
  bool isLossAllowed = false;  ///< lost data is left out and reported, instead of an Error
  bool isStrict = false;       ///< suspect points are an Error, instead of reported
};

/// What else there is to know about a conversion.
struct Note {
  enum class Kind { kDriftBins, kFolder, kFileBroken, kFileClosed, kSourceChanged };

  Kind kind = Kind::kFolder;
  std::string text;  ///< about a file: starts with its name
  std::string file = {};
};

struct Result {
  std::size_t spectra = 0;
  std::size_t chromatograms = 0;
  Absorbance absorbance = Absorbance::kNone;
  std::vector<Note> notes = {};
  std::vector<Loss> losses = {};
  Findings faults = {};  ///< suspect points
};

/// A source, open once per worker, and the earlier state of its files. Used for one conversion at
/// a time.
class SourceInUse {
 public:
  using Opener = std::function<std::unique_ptr<source::Source>()>;

  /// Throws what `open` throws.
  SourceInUse(const std::string& path, int workers, const Opener& open);

  source::Source& First() const { return *workers_.front(); }
  const std::vector<std::unique_ptr<source::Source>>& Workers() const { return workers_; }

  /// Those of the first call, which reads them, with checksums or without.
  const SourceFiles& Files(Checksums checksums, const Cancel& cancel);

  /// The name of a file that differs from before.
  std::optional<std::string> FindChange() const { return stamp_.FindChange(); }

 private:
  SourceStamp stamp_;
  std::vector<std::unique_ptr<source::Source>> workers_;
  std::optional<SourceFiles> files_;
};

/// Writes the sample at position `sample` to `out` and finishes it. Throws an Error, also when the source has
/// changed during the conversion, the source's own, or Cancelled; `out` is not finished then.
Result ConvertSample(SourceInUse& source, int sample, const Options& options, ByteSink& out,
                     const Hooks& hooks);

}  // namespace zrml::convert
