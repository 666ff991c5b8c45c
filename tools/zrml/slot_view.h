// What the interface's slots make of a source's files where that differs from the source.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "masslynx/function_record.h"
#include "openlynx/report.h"
#include "source/raw_source.h"
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
  bool isProfileSum = false;  ///< of sub-scans of a profile
  bool isSorted = false;      ///< they were out of order

  Columns View() const { return {x, y}; }
};

/// The scans of a function where the slots have others than the source: their times, kinds and intensities,
/// with 0 for values in no file, and the points of one of them; no value for a refused one.
struct SlotScans {
  std::vector<source::Scan> scans = {};
  std::function<std::optional<StoredPoints>(int scan)> read;
};

/// Traces by name, and the points of one of them. It may throw what a source throws.
struct TraceList {
  std::vector<source::Trace> traces = {};
  std::function<source::Chromatogram(int trace)> read = {};
};

/// Bytes of a scan that a data file lacks are zeros, also those of a point, or of a group of points, that is
/// there in part. Of an offset beyond 4 GiB that an index leaves out, the lower 32 bits are kept.
class RawSlots {
 public:
  explicit RawSlots(const platform::SystemPath& folder);

  /// Whether the record of the function is lost: to the slots, one of zeros is of type and layout 0.
  bool IsLost(const source::FunctionId& id) const;
  bool HasLost() const { return !lost_.empty(); }
  source::Function Describe(const source::FunctionId& id) { return source::Describe(RecordOf(id)); }
  std::string IonModeOf(const source::FunctionId& id);
  /// Of the functions in their list.
  std::vector<std::string> NamesOf(std::span<const source::FunctionId> listed);

  /// For a function whose record is lost, or with some cut offsets.
  std::optional<SlotScans> OtherScans(const source::FunctionId& id);

  /// No value where there are none.
  std::optional<StoredPoints> ReadPoints(const source::FunctionId& id, int scan);
  std::optional<StoredPoints> ReadAbsorbance(const source::FunctionId& id, int scan);

  /// False for a damaged list of traces: then there are none, not even that of the absorbance.
  bool HasTraceList() const;
  /// Records of zeros included. No value of the total of absorbance, which is not stored.
  std::optional<StoredPoints> ReadStoredTrace(int trace) const;

 private:
  masslynx::FunctionRecord& RecordOf(const source::FunctionId& id);
  masslynx::FunctionRecord& Loaded(const source::FunctionId& id);

  platform::SystemPath folder_;
  std::vector<masslynx::FunctionRecord> functions_;
  std::vector<source::FunctionId> lost_;
};

/// A function that is never closed also has the contents of those after it, which for the source belong to
/// them only. Positions of functions are those in the list of the slots.
class ReportSlots {
 public:
  explicit ReportSlots(const platform::SystemPath& path);

  /// The samples before the end of the text: the file's, or a Ctrl-Z.
  int CountSamplesOfText() const;

  /// Chooses the sample for everything below.
  /// `isDamaged` when it has text that the slots read as it stands, and the source in part or not at all.
  void Enter(int sample, bool isDamaged);
  bool IsDamaged() const { return isDamaged_; }
  /// Of a function; one that contains others may have their texts, too.
  bool HasOtherTexts(int position) const {
    return isDamaged_ || HasOthers(listed_[static_cast<std::size_t>(position)]);
  }
  std::string Name();
  std::vector<source::MetadataItem> Items();

  int FunctionCount() const { return static_cast<int>(listed_.size()); }
  /// As a source would describe it. It may be one that the source lacks, having no blocks of its own.
  source::Function Describe(int position);
  /// The source's name for it could be one that the report has.
  bool IsUnnamed(int position);
  std::optional<std::string> TextOf(int position);
  std::optional<SlotScans> OtherScans(int position);
  std::optional<TraceList> OtherTraces(int position);
  /// Its function is a position, too.
  std::optional<source::ScanPosition> FindPrecursor(int position, int scan);

  /// The sample's traces, when they are not those of the source: one of several functions is there several
  /// times.
  std::optional<TraceList> OtherTraces();
  /// Of a sample without other functions than analog ones, the traces are added once more by each look.
  bool HasOnlyAnalog() const;

 private:
  // Whether others may be inside a function, by its place in the sample.
  bool HasOthers(std::size_t place) const {
    const std::vector<openlynx::Function>& all = sample_->functions;
    return place + 1 < all.size() && all[place + 1].group == all[place].group;
  }
  openlynx::Function& At(int position) {
    return sample_->functions[listed_[static_cast<std::size_t>(position)]];
  }
  // With the blocks that count for the source.
  const openlynx::Function& OwnAt(int position) const {
    return own_.functions[listed_[static_cast<std::size_t>(position)]];
  }
  TraceList TracesAt(std::vector<std::uint64_t> positions, const std::string& noun);

  platform::SystemPath path_;
  openlynx::Report report_;
  int number_ = 0;  // of the sample
  bool isDamaged_ = false;
  openlynx::Sample* sample_ = nullptr;
  openlynx::Sample own_;
  std::vector<std::size_t> listed_;  // places in the sample's functions
};

}  // namespace zrml::tool
