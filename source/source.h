// A source of data as tools and programs see it: a raw directory or a report, through one interface without
// the contract's oddities. Text is UTF-8; paths are the system's own bytes (on Windows UTF-8). Positions
// count from 0; numbers that people see are those of the files and never change when a file is lost. Times
// are minutes, masses m/z. Values that a file does not hold are absent: std::nullopt, an empty text, or no
// point.
//
// A source is used by one thread at a time; sources are independent, so each worker opens its own. Questions
// may be asked in any order; each file is read when it is first needed and stays open. Reading errors
// throw an Error; missing or damaged data that do not prevent reading are collected as findings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/findings.h"
#include "source/error.h"

namespace zrml::source {

enum class Format { kRawDirectory, kReport };
enum class FunctionKind { kMs, kMsMs, kAbsorbance, kIonMonitoring, kOther };
enum class ScanType { kNone, kPrecursor, kProduct, kNeutralLoss, kNeutralGain };
enum class Polarity { kUnknown, kPositive, kNegative };
/// What is recorded by a function that monitors chosen ions only.
enum class Monitoring { kNone, kIons, kReactions };

struct Range {
  double low = 0;
  double high = 0;
};

/// The name of a function for people: "4", "p2" for the processed function with process number 2, "p2.2" for
/// the second one with that number.
struct FunctionId {
  int number = 0;   ///< from 1, as its files have it; for a processed function, that of its raw function
  int process = 0;  ///< 0 for acquired data
  int repeat = 1;

  bool operator==(const FunctionId&) const = default;
};
std::string TextOf(const FunctionId& id);
/// No value when `text` is not such a name. For a processed function only `process` and `repeat` are set.
std::optional<FunctionId> ParseFunctionId(std::string_view text);

struct Function {
  FunctionId id;
  std::string file;  ///< name of its data file as in the folder ("_FUNC004.DAT"); empty in a report
  std::string name;
  FunctionKind kind = FunctionKind::kMs;
  Monitoring monitoring = Monitoring::kNone;
  std::optional<int> msLevel = 1;  ///< none of a function whose type is lost
  ScanType scanType = ScanType::kNone;
  Polarity polarity = Polarity::kUnknown;
  bool isLockMass = false;         ///< a reference function, by its name
  std::optional<Range> massRange;  ///< set in the acquisition method
  bool hasOwnMasses = false;       ///< each point has its m/z in the data file, not from a list or an axis
  bool hasMobility = false;
  bool isOfMobility = false;  ///< it has drift bins, or is derived from data with drift bins
};

/// How a scan's points are stored; not known where damage hides what says so, or a report says neither.
enum class Representation : std::uint8_t { kProfile = 0, kCentroid = 1, kUnknown = 2 };
constexpr Representation RepresentationOf(bool isCentroided) {
  return isCentroided ? Representation::kCentroid : Representation::kProfile;
}

/// What index and statistics say of a scan, without its points.
struct Scan {
  double minutes = 0;  ///< NaN where no file has it
  double endMinutes = 0;
  Representation representation = Representation::kProfile;
  std::uint32_t points = 0;                 ///< the maximum number; ReadPoints needs room for it
  std::optional<double> totalIntensity;     ///< as stored beside the points
  std::optional<double> basePeakIntensity;  ///< as stored beside the points
  std::optional<double> precursorMz;        ///< for functions with precursors
  bool isPrecursorOfMethod = false;         ///< the method's set mass: no statistics hold the scan's own
  std::optional<double> scanValue;          ///< the scan's additional value (cone voltage and the like)
};

/// No value where it is not known.
inline std::optional<bool> IsCentroided(const Scan& scan) {
  if (scan.representation == Representation::kUnknown) return std::nullopt;
  return scan.representation == Representation::kCentroid;
}

/// What ScanAt() tells of scans in a row, an array for each value, NaN where no file has it. Arrays have as
/// many places as there are scans; empty ones are not filled.
struct ScanColumns {
  std::span<double> minutes = {};
  std::span<double> endMinutes = {};
  std::span<std::uint8_t> areCentroided = {};  ///< the numbers of `Representation`
  std::span<std::uint32_t> points = {};
  std::span<double> totalIntensities = {};
  std::span<double> basePeakIntensities = {};
  std::span<double> precursorMz = {};
  std::span<double> scanValues = {};
};

/// The number of points read, and the number of lost ones: declared by the index, but missing or zeroed in
/// the file, or without masses; at least 1 of a scan that has a total and no points. Of a report those whose
/// numbers are hidden by decimal commas.
struct PointsRead {
  std::size_t count = 0;
  std::size_t lost = 0;
};
inline bool AreAllLost(const PointsRead& read) { return read.count == 0 && read.lost > 0; }

struct Chromatogram {
  std::string name;
  std::vector<double> minutes;      ///< of a trace: times as stored; no file has their unit
  std::vector<double> intensities;  ///< NaN where no file has it
};

enum class Within { kSum, kLargest };  ///< what a chromatogram shows of a scan's points in a range

struct Trace {
  int number = 0;  ///< from 1
  std::string name;
};

struct MetadataItem {
  std::string key;
  std::optional<std::string> value;
};

/// `items` with the values of `own`; items with other keys are appended.
std::vector<MetadataItem> Merged(std::vector<MetadataItem> items, std::vector<MetadataItem> own);

struct ScanPosition {
  int function = 0;
  int scan = 0;
};

/// Called now and then during long work: throws to end it (see Cancelled).
using Cancel = std::function<bool()>;
inline void ThrowIfCancelled(const Cancel& cancel) {
  if (cancel && cancel()) throw Cancelled();
}

/// The progress of long work.
using Progress = std::function<void(std::uint64_t done, std::uint64_t all)>;

class Source {
 public:
  /// Opens a raw directory, one of its data files (which chooses that function), or a report. Throws Error:
  /// kNotFound, kNotRecognised, kUnreadable, kDamaged.
  static std::unique_ptr<Source> Open(const std::string& path);

  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  virtual ~Source();

  /// As given to Open.
  const std::string& Path() const { return path_; }
  virtual Format GetFormat() const = 0;

  virtual int SampleCount() = 0;
  virtual std::string SampleName(int sample) = 0;
  /// The sample's items in the order of the format; each key once. Items of its functions appear
  /// without a value. Read once.
  virtual std::vector<MetadataItem> SampleMetadata(int sample) = 0;
  /// Only the function's own items.
  virtual std::vector<MetadataItem> FunctionMetadata(int sample, int function);
  /// A report's text of the function, unchanged; no value when it is very long.
  virtual std::optional<std::string> FunctionText(int sample, int function);

  /// Functions with scans in mass: those of the table that have a data file or an index, then processed ones;
  /// without the absorbance function. When a data file was opened, that function only. A report's functions
  /// of absorbance are included: the m/z of their scans are wavelengths.
  virtual std::span<const Function> Functions(int sample) = 0;
  virtual int ScanCount(int sample, int function) = 0;
  /// Reads no points.
  virtual Scan ScanAt(int sample, int function, int scan) = 0;
  /// The same for `count` scans, from `first` on.
  virtual void ReadScans(int sample, int function, int first, int count, const ScanColumns& columns);
  /// How a spectrum of a report was made ("Combine (5:9-1:3)"); empty where no file has it.
  virtual std::string ScanProcess(int sample, int function, int scan);
  /// Over all scans; reads no points.
  virtual std::vector<double> Minutes(int sample, int function) = 0;

  /// The points of a scan in ascending m/z (a report's are sorted here, stably), only those present in the
  /// file, into arrays with room for ScanAt().points. Throws Error when the points cannot be read at all.
  virtual PointsRead ReadPoints(int sample, int function, int scan, std::span<double> mz,
                                std::span<double> intensities) = 0;
  /// The same into vectors, which are resized to the points.
  virtual PointsRead ReadPoints(int sample, int function, int scan, std::vector<double>& mz,
                                std::vector<double>& intensities);

  /// Drift bins of each scan; 0 without mobility data or where the maker's library is not installed.
  virtual int DriftBinCount(int sample, int function);
  virtual void ReadDriftBin(int sample, int function, int scan, int bin, std::vector<double>& mz,
                            std::vector<double>& intensities);

  /// The lower-level scan that a scan comes from: the nearest one that is not later. No value when none.
  virtual std::optional<ScanPosition> FindPrecursor(int sample, int function, int scan);

  /// As stored beside the points; NaN where no file has it.
  virtual Chromatogram TotalIons(int sample, int function);
  /// As stored in a report, otherwise from the points, as in MassRange().
  virtual Chromatogram BasePeaks(int sample, int function, const Cancel& cancel = {});
  /// From the points between `range.low` and `range.high`, both included, scan by scan; NaN for a scan whose
  /// points are all lost.
  virtual Chromatogram MassRange(int sample, int function, Range range, Within within,
                                 const Cancel& cancel = {});

  /// The same for many ranges in one pass over the points: `rows` has room for one value per scan of the
  /// first range, then of the second, and so on.
  void MassRanges(int sample, int function, std::span<const Range> ranges, Within within,
                  std::span<double> rows, const Cancel& cancel = {});

  /// Of the sample; of a function with `function` (a report's functions have their own).
  virtual std::vector<Trace> Traces(int sample) = 0;
  virtual Chromatogram ReadTrace(int sample, int trace) = 0;
  virtual std::vector<Trace> FunctionTraces(int sample, int function);
  virtual Chromatogram ReadFunctionTrace(int sample, int function, int trace);

  /// The absorbance spectra of a raw directory.
  virtual bool HasAbsorbance(int sample);
  virtual Function AbsorbanceFunction(int sample);
  virtual int AbsorbanceScanCount(int sample);
  virtual double AbsorbanceMinutes(int sample, int scan);
  virtual PointsRead ReadAbsorbance(int sample, int scan, std::vector<double>& wavelengths,
                                    std::vector<double>& values);

  /// Damage that shows without reading points: the structure of every file, and whether files are as long as
  /// their index says. Searched once. Damage of points: see LookAtPoints.
  virtual std::span<const Finding> Findings() = 0;
  /// Whether a finding concerns what was opened: of other functions than that of a data file none does.
  virtual bool Includes(const FindingSubject& subject) const;

 protected:
  explicit Source(std::string path) : path_(std::move(path)) {}

  struct Points {
    std::vector<double> mz;
    std::vector<double> intensities;
  };

  /// Of the points of a scan from `range.low` to `range.high`, in ascending m/z, kept in `points`; no value
  /// when all points of the scan are lost.
  virtual std::optional<std::span<const double>> IntensitiesWithin(int sample, int function, int scan,
                                                                   Range range, Points& points);

 private:
  // When a scan was taken.
  struct ScanTime {
    double minutes;
    int scan;
  };

  std::span<const ScanTime> TimesOf(int sample, int function);
  static int ScanAtEnd(std::span<const ScanTime> times, double minutes, bool isLast);

  std::string path_;
  int timesSample_ = -1;                        // whose `times_` are
  std::map<int, std::vector<ScanTime>> times_;  // by function, in order of time, filled on first request
};

}  // namespace zrml::source
