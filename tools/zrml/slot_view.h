// What the interface's slots make of a source's files where that is something else than what the source
// tells.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "masslynx/function_record.h"
#include "openlynx/report.h"
#include "source/source.h"

namespace zrml::tool {

/// Two columns of points, of one length.
struct Columns {
  std::span<const double> x;
  std::span<const double> y;
};

struct StoredPoints {
  std::vector<double> x;
  std::vector<double> y;

  Columns View() const { return {x, y}; }
};

/// Bytes of a scan that a data file lacks are zeros, also those of a point, or of a group of points, that is
/// there in part. Of an offset beyond 4 GiB that an index leaves out, the lower 32 bits are kept.
class RawSlots {
 public:
  explicit RawSlots(const platform::SystemPath& folder);

  /// The function with the scans that the slots know, when some of its offsets are cut; else null.
  const masslynx::FunctionRecord* WithCutOffsets(const source::FunctionId& id);

  /// No value where there are none.
  std::optional<StoredPoints> ReadPoints(const source::FunctionId& id, int scan);
  std::optional<StoredPoints> ReadAbsorbance(const source::FunctionId& id, int scan);

  /// False of a damaged list of traces: then there are none, not even that of the absorbance.
  bool HasTraceList() const;

 private:
  masslynx::FunctionRecord& Loaded(const source::FunctionId& id);

  platform::SystemPath folder_;
  std::vector<masslynx::FunctionRecord> functions_;
};

class ReportSlots {
 public:
  explicit ReportSlots(const platform::SystemPath& path);

  /// The samples before the end of the text: the file's, or a Ctrl-Z.
  int CountSamplesOfText() const;
  /// The source's name for it could be one that the report has.
  bool IsUnnamed(int sample, const source::FunctionId& id);
  /// The source's traces in the order of the slots, which have a trace of several functions several times.
  std::vector<int> TracesOf(int sample);
  /// Of a sample without other functions than analog ones, the traces are added once more by each look.
  bool HasOnlyAnalog(int sample);

 private:
  openlynx::Sample& SampleAt(int sample) { return report_.Samples()[static_cast<std::size_t>(sample)]; }

  platform::SystemPath path_;
  openlynx::Report report_;
};

}  // namespace zrml::tool
