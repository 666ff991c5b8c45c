// A source of data as tools and programs see it: a raw directory or a report, through one interface without
// the contract's oddities. Text is UTF-8; paths are the system's own bytes (on Windows UTF-8). Positions
// count from 0; numbers that people see are those of the files and never change when a file is lost. Times
// are minutes, masses m/z. What a file does not hold is absent: std::nullopt, an empty text, or no point.
//
// A source is used by one thread at a time; sources are independent, so each worker opens its own. Questions
// may be asked in any order; each file is read when it is first needed and stays open. What cannot be read
// throws an Error; what is missing or damaged and can be passed is collected as findings.
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
/// What a function that records chosen ions only records.
enum class Monitoring { kNone, kIons, kReactions };

struct Range {
  double low = 0;
  double high = 0;
};

/// How people name a function: "4", "p2" for the processed function with process number 2, "p2.2" for the
/// second one with that number.
struct FunctionId {
  int number = 0;   ///< from 1, as its files have it; of a processed function, the raw one it goes back to
  int process = 0;  ///< 0 for acquired data
  int repeat = 1;

  bool operator==(const FunctionId&) const = default;
};
std::string TextOf(const FunctionId& id);
/// No value when `text` is no such name. Of a processed function only `process` and `repeat` are set.
std::optional<FunctionId> ParseFunctionId(std::string_view text);

struct Function {
  FunctionId id;
  std::string file;  ///< name of its data file as it stands in the folder ("_FUNC004.DAT"); empty in a report
  std::string name;
  FunctionKind kind = FunctionKind::kMs;
  Monitoring monitoring = Monitoring::kNone;
  int msLevel = 1;
  ScanType scanType = ScanType::kNone;
  Polarity polarity = Polarity::kUnknown;
  bool isLockMass = false;         ///< a reference function, by its name
  std::optional<Range> massRange;  ///< set in the acquisition method
  bool hasOwnMasses = false;       ///< each point has its m/z in the data file, not from a list or an axis
  bool hasMobility = false;
  bool isOfMobility = false;  ///< it has drift bins, or is made of data that have
};

/// What index and statistics tell of a scan, without its points.
struct Scan {
  double minutes = 0;  ///< NaN where no file tells it
  double endMinutes = 0;
  bool isCentroided = false;
  std::uint32_t points = 0;                 ///< at most so many; room for them is what ReadPoints needs
  std::optional<double> totalIntensity;     ///< as stored beside the points
  std::optional<double> basePeakIntensity;  ///< as stored beside the points
  std::optional<double> precursorMz;        ///< of functions with precursors
  bool isPrecursorOfMethod = false;         ///< the method's set mass: no statistics tell the scan's own
  std::optional<double> scanValue;          ///< the scan's additional value (cone voltage and the like)
};

/// How many points a read has given, and how many more the index declares that the file does not hold, or
/// holds zeros for.
struct PointsRead {
  std::size_t count = 0;
  std::size_t lost = 0;
};

struct Chromatogram {
  std::string name;
  std::vector<double> minutes;      ///< of a trace: times as stored, whose unit no file tells
  std::vector<double> intensities;  ///< NaN where no file tells it
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

/// `items` with the values of `own`; those of other keys come behind.
std::vector<MetadataItem> Merged(std::vector<MetadataItem> items, std::vector<MetadataItem> own);

struct ScanPosition {
  int function = 0;
  int scan = 0;
};

/// Asked now and then during long work: throws to end it (see Cancelled).
using Cancel = std::function<bool()>;
inline void ThrowIfCancelled(const Cancel& cancel) {
  if (cancel && cancel()) throw Cancelled();
}

/// How much of a long piece of work is done.
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
  /// The sample's items in the order of the format; each key once. Items that its functions have are there
  /// without a value. Read once.
  virtual std::vector<MetadataItem> SampleMetadata(int sample) = 0;
  /// Only the items that the function has of its own.
  virtual std::vector<MetadataItem> FunctionMetadata(int sample, int function);
  /// A report's text of the function, as it stands; no value when that is very long.
  virtual std::optional<std::string> FunctionText(int sample, int function);

  /// Functions with scans in mass: those of the table that have a data file or an index, then processed ones;
  /// without the absorbance function. When a data file was opened, that function alone. A report's functions
  /// of absorbance are among them: what their scans have as m/z are wavelengths.
  virtual std::span<const Function> Functions(int sample) = 0;
  virtual int ScanCount(int sample, int function) = 0;
  /// Reads no points.
  virtual Scan ScanAt(int sample, int function, int scan) = 0;
  /// The same of as many scans as there is room for, from `first` on.
  virtual void ReadScans(int sample, int function, int first, std::span<Scan> scans);
  /// How a spectrum of a report was made ("Combine (5:9-1:3)"); empty where no file tells it.
  virtual std::string ScanProcess(int sample, int function, int scan);
  /// Of all scans; reads no points.
  virtual std::vector<double> Minutes(int sample, int function) = 0;

  /// The points of a scan in ascending m/z (a report's are sorted here, stably), only those that the file
  /// holds, into arrays with room for ScanAt().points. Throws Error when the points cannot be read at all.
  virtual PointsRead ReadPoints(int sample, int function, int scan, std::span<double> mz,
                                std::span<double> intensities) = 0;
  /// The same into vectors, which are resized to the points.
  virtual PointsRead ReadPoints(int sample, int function, int scan, std::vector<double>& mz,
                                std::vector<double>& intensities);

  /// Drift bins of each scan; 0 without mobility data or where the maker's library is not installed.
  virtual int DriftBinCount(int sample, int function);
  virtual void ReadDriftBin(int sample, int function, int scan, int bin, std::vector<double>& mz,
                            std::vector<double>& intensities);

  /// Scan of a lower level that a scan goes back to: the nearest one that is not later. No value when none.
  virtual std::optional<ScanPosition> FindPrecursor(int sample, int function, int scan);

  /// As stored beside the points; NaN where no file tells it.
  virtual Chromatogram TotalIons(int sample, int function);
  /// As stored (a report), else of the points, as MassRange() has it.
  virtual Chromatogram BasePeaks(int sample, int function, const Cancel& cancel = {});
  /// Of the points from `range.low` to `range.high`, both included, scan by scan; NaN of a scan whose points
  /// are all lost.
  virtual Chromatogram MassRange(int sample, int function, Range range, Within within,
                                 const Cancel& cancel = {});

  /// The same of many ranges in one pass over the points: `rows` has room for a value of each scan for the
  /// first range, then for the second, and so on.
  void MassRanges(int sample, int function, std::span<const Range> ranges, Within within,
                  std::span<double> rows, const Cancel& cancel = {});

  /// Of the sample; of a function with `function` (a report's functions have their own).
  virtual std::vector<Trace> Traces(int sample) = 0;
  virtual Chromatogram ReadTrace(int sample, int trace) = 0;
  virtual std::vector<Trace> FunctionTraces(int sample, int function);
  virtual Chromatogram ReadFunctionTrace(int sample, int function, int trace);

  /// Absorbance spectra of a raw directory.
  virtual bool HasAbsorbance(int sample);
  virtual Function AbsorbanceFunction(int sample);
  virtual int AbsorbanceScanCount(int sample);
  virtual double AbsorbanceMinutes(int sample, int scan);
  virtual PointsRead ReadAbsorbance(int sample, int scan, std::vector<double>& wavelengths,
                                    std::vector<double>& values);

  /// What is known of damage without reading points: the structure of every file, and whether files reach as
  /// far as their index says. Looked for once. What the points tell: see LookAtPoints.
  virtual std::span<const Finding> Findings() = 0;
  /// Whether what was opened includes what a finding is about: of a data file its own function alone.
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
  std::map<int, std::vector<ScanTime>> times_;  // by function, in order of time, where it was asked for
};

}  // namespace zrml::source
