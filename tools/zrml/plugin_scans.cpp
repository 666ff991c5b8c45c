#include "tools/zrml/plugin_scans.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>

#include "common/platform/platform.h"

namespace zrml::tool {

namespace {

constexpr int kProbes = 50;  // scans of a function for slots that read a spectrum for one number of it

// Whether it is one of the scans that are checked more closely.
bool IsProbed(int scan, int count) { return scan % (count / kProbes + 1) == 0 || scan + 1 == count; }

class ScanComparer : Verdicts {
 public:
  ScanComparer(PluginComparison& result, const ComparedSource& compared, const ComparedList& list,
               const ComparedFunction& function)
      : Verdicts(result),
        server_(compared.server),
        source_(compared.source),
        rawSlots_(compared.rawSlots),
        reportSlots_(compared.reportSlots),
        list_(list),
        of_(function) {
    place_ = {.sample = of_.sample, .function = source::TextOf(of_.function.id)};
  }

  void Compare(int scans) {
    for (int scan = 0; scan < scans && of_.function.hasMobility && of_.driftBins > 0; ++scan) {
      if (IsProbed(scan, scans)) CompareDriftBins(scan);
    }
    CompareSpectra(scans);
    CompareSeries();
  }

 private:
  bool IsReport() const { return reportSlots_ != nullptr; }

  // Spectra

  // The chromatograms that follow from the points as the plug-in is to give them, scan by scan.
  struct Computed {
    bool isComplete = true;  // every spectrum is given
    std::optional<source::Range> range;
    std::vector<double> minutes = {};
    std::vector<double> largest = {};
    std::vector<double> largestInRange = {};
    std::vector<double> sumInRange = {};
  };

  // The middle half of the points of the first spectrum that has some.
  void ChooseRange(const CZRMassSpectrum& spectrum) {
    const std::size_t count = spectrum.UsablePoints();
    if (computed_.range || count == 0) return;
    const auto [low, high] =
        std::minmax(spectrum.GetMasses()[count / 4], spectrum.GetMasses()[count - 1 - count / 4]);
    computed_.range = source::Range{low, high};
  }

  void CompareSpectra(int scans) {
    computed_ = {};
    for (int scan = 0; scan < scans; ++scan) {
      place_.scan = scan;
      CZRMassSpectrum spectrum;
      const bool isGiven = CompareSpectrum(scan, spectrum);
      if (IsProbed(scan, scans)) CompareScanSlots(scan, isGiven, spectrum);
      computed_.isComplete = computed_.isComplete && isGiven;
      if (computed_.isComplete) Compute(spectrum);
    }
    place_.scan.reset();
    if (computed_.isComplete && mayKeepPoints_) ComputeAgain(scans);
    CompareComputed(scans);
  }

  // The slots read all scans into one container. There a place that no point fills keeps what it held.
  void ComputeAgain(int scans) {
    computed_ = {.isComplete = true, .range = computed_.range};
    CZRMassSpectrum spectrum;
    for (int scan = 0; scan < scans; ++scan) {
      computed_.isComplete &= server_.GetSpectrum(of_.sample, of_.position, scan, spectrum);
      Compute(spectrum);
    }
  }

  void Compute(const CZRMassSpectrum& spectrum) {
    ChooseRange(spectrum);
    const source::Range range = computed_.range.value_or(source::Range{});
    computed_.minutes.push_back(spectrum.GetStartTime());
    computed_.largest.push_back(spectrum.GetMaxIntensityInRange(-DBL_MAX, DBL_MAX));
    computed_.largestInRange.push_back(spectrum.GetMaxIntensityInRange(range.low, range.high));
    computed_.sumInRange.push_back(spectrum.GetIntensitySumInRange(range.low, range.high));
  }

  bool CompareSpectrum(int scan, CZRMassSpectrum& spectrum) {
    const bool isGiven = server_.GetSpectrum(of_.sample, of_.position, scan, spectrum);
    if (of_.others) {
      const std::optional<StoredPoints> points = of_.others->read(scan);
      if (!Check("GetSpectrum", "success", isGiven, points.has_value()) || !isGiven) return isGiven;
      CheckPoints("GetSpectrum", ColumnsOf(spectrum), points->View());
      CompareAttributes(of_.others->scans[static_cast<std::size_t>(scan)], scan, spectrum);
      return true;
    }
    const source::Scan held = source_.ScanAt(of_.sample, of_.held, scan);
    const auto read = Held([&] { return source_.ReadPoints(of_.sample, of_.held, scan, x_, y_); });
    const bool isWanted = read && !(IsReport() && read->count == 0);
    CheckWanted(kWanted.refusedSpectrum, "success", isGiven, read.has_value(), isWanted);
    if (!isGiven || !isWanted) return isGiven;
    if (IsReport()) {
      CompareReportPoints(ColumnsOf(spectrum));
    } else if (read->lost == 0 && read->count == held.points && HasPoints(spectrum)) {
      CheckPoints("GetSpectrum", ColumnsOf(spectrum), {x_, y_});
    } else {
      mayKeepPoints_ = true;
      CheckSlotPoints("GetSpectrum", ColumnsOf(spectrum), {x_, y_}, read->lost != 0,
                      rawSlots_->ReadPoints(of_.function.id, scan));
    }
    CompareAttributes(held, scan, spectrum);
    return true;
  }

  static Columns ColumnsOf(const CZRMassSpectrum& spectrum) {
    const std::size_t count = spectrum.UsablePoints();
    return {{spectrum.GetMasses(), count}, {spectrum.GetIntensities(), count}};
  }

  // The held ones, to the bit.
  bool HasPoints(const CZRMassSpectrum& spectrum) const {
    const Columns given = ColumnsOf(spectrum);
    return std::equal(x_.begin(), x_.end(), given.x.begin(), given.x.end()) &&
           std::equal(y_.begin(), y_.end(), given.y.begin(), given.y.end());
  }

  void CompareReportPoints(const Columns& given) {
    std::vector<std::size_t> order(given.x.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return given.x[a] < given.x[b]; });
    if (!std::is_sorted(order.begin(), order.end())) Count(kWanted.reportOrder);
    std::vector<double> x;
    std::vector<double> y;
    for (const std::size_t i : order) {
      x.push_back(given.x[i]);
      y.push_back(given.y[i]);
    }
    CheckPoints("GetSpectrum", {x, y}, {x_, y_});
  }

  void CompareAttributes(const source::Scan& held, int scan, const CZRMassSpectrum& given) {
    const auto check = [&](const char* what, const auto& value, const auto& expected) {
      Check("GetSpectrum", what, value, expected);
    };
    const auto checkTime = [&](const char* what, double minutes, double expected) {
      const bool isAbsent = IsReport() && std::isnan(expected) && !std::isnan(minutes);
      CheckWanted(kWanted.absentScanTime, what, minutes, expected, isAbsent ? 0 : expected);
    };
    checkTime("start time", given.GetStartTime(), held.minutes);
    checkTime("end time", given.GetEndTime(), held.endMinutes);
    const int number = scan + 1;
    const int narrow = static_cast<std::int16_t>(number);
    CheckWanted(kWanted.scanNumber, "first scan", given.GetFirstScan(), number, narrow);
    CheckWanted(kWanted.scanNumber, "last scan", given.GetLastScan(), number, narrow);
    check("centroided", given.IsCentroided(), held.representation == source::Representation::kCentroid);
    check("level", given.GetMSLevel(), of_.function.msLevel.value_or(0));
    check("kind", given.GetScanType(), of_.kind);
    const int polarity = static_cast<int>(of_.function.polarity);
    CheckWanted(kWanted.polarity, "polarity", given.GetPolarity(), polarity,
                polarity == kNegativePolarity ? polarity : int{kPositivePolarity});
    CheckOptional(kWanted.noPrecursor, "precursor", given.GetPrecursorMass(), held.precursorMz);
    CheckOptional(kWanted.noScanValue, "scan value", given.GetScanAuxValue(), held.scanValue);
    check("title", TextOf(given.GetTitle()), std::string());
    check("label", TextOf(given.GetLabel()), std::string());
    const int firstBin = of_.hasMobility ? 1 : 0;
    check("first drift bin", given.GetFirstDriftBin(), firstBin);
    check("last drift bin", given.GetLastDriftBin(), of_.driftBins);
    check("first drift value", given.GetFirstDriftValue(), static_cast<double>(firstBin));
    check("last drift value", given.GetLastDriftValue(), static_cast<double>(of_.driftBins));
  }

  static std::string TextOf(const HostString& text) {
    return platform::ToNativePath(std::wstring(text.begin(), text.end()));
  }

  // Slots that give one number or two of a scan.
  void CompareScanSlots(int scan, bool isGiven, CZRMassSpectrum& spectrum) {
    double first = 0;
    if (Check("GetScanRetentionTime", "success",
              server_.GetScanRetentionTime(of_.sample, of_.position, scan, first), isGiven) &&
        isGiven) {
      Check("GetScanRetentionTime", "time", first, spectrum.GetStartTime());
    }
    if (!of_.hasMobility) CompareScanRanges(scan, isGiven, spectrum);
    // It is searched among the scans of all functions.
    if (!list_.hasOtherScans || IsReport()) ComparePrecursor(scan);
  }

  void CompareScanRanges(int scan, bool isGiven, CZRMassSpectrum& spectrum) {
    const auto ask = [&](auto slot) {
      return [&, slot](double& low, double& high) {
        return (server_.*slot)(of_.sample, of_.position, scan, low, high);
      };
    };
    source::Range masses;
    std::optional<source::Range> wanted;
    if (isGiven && spectrum.GetMassRange(masses.low, masses.high)) {
      if (IsReport()) wanted = masses;
      if (!IsReport()) Count(kWanted.refusedMassRange);
    }
    CheckRange("GetScanMassRange", ask(&CDataServerImpl::GetScanMassRange), wanted);
    wanted.reset();
    if (isGiven) wanted = {spectrum.GetMinIntensity(), spectrum.GetBasePeakIntensity()};
    CheckRange("GetScanIntensityRange", ask(&CDataServerImpl::GetScanIntensityRange), wanted);
  }

  void ComparePrecursor(int scan) {
    source::ScanPosition given;
    const bool isFound =
        server_.FindPrecursorScan(of_.sample, of_.position, scan, given.function, given.scan);
    const bool isOfSlots = list_.hasOtherScans || list_.hasOtherTimes;
    auto expected = isOfSlots ? reportSlots_->FindPrecursor(of_.position, scan)
                              : source_.FindPrecursor(of_.sample, of_.held, scan);
    if (expected && !isOfSlots) {
      const auto place = std::find(list_.positions.begin(), list_.positions.end(), expected->function);
      if (place == list_.positions.end()) return Count(kWanted.unlistedFunction);
      expected->function = static_cast<int>(place - list_.positions.begin());
    }
    CheckWanted(kWanted.precursorSearch, "success", isFound, expected.has_value(),
                expected.has_value() && !list_.hasEmptyLevel);
    if (!isFound || !expected) return;
    Check("FindPrecursorScan", "function", given.function, expected->function);
    Check("FindPrecursorScan", "scan", given.scan, expected->scan);
  }

  void CompareComputed(int scans) {
    const bool isComplete = computed_.isComplete && static_cast<int>(computed_.minutes.size()) == scans;
    const auto [low, high] = computed_.range.value_or(source::Range{});
    const auto ask = [&, from = low, to = high](auto slot) {
      return [=, this](CZRChromatogram& given) {
        return (server_.*slot)(from, to, true, of_.sample, of_.position, given);
      };
    };
    CheckChromatogram("GetMassRangeChromatogram", ask(&CDataServerImpl::GetMassRangeChromatogram), isComplete,
                      computed_.minutes, computed_.sumInRange);
    CheckChromatogram("GetMassRangeBasePeakChromatogram",
                      ask(&CDataServerImpl::GetMassRangeBasePeakChromatogram), isComplete, computed_.minutes,
                      computed_.largestInRange);
    if (!IsReport()) CompareBasePeaks(isComplete, computed_.minutes, computed_.largest);
  }

  void CompareBasePeaks(bool isWanted, std::span<const double> minutes, std::span<const double> intensities) {
    const auto ask = [&](CZRChromatogram& given) {
      return server_.GetBasePeakChromatogram(true, of_.sample, of_.position, given);
    };
    CheckChromatogram("GetBasePeakChromatogram", ask, isWanted, minutes, intensities);
  }

  // What the index or the report says, scan by scan.
  void CompareSeries() {
    HostVector<double> times;
    Check("GetRetentionTimes", "success", server_.GetRetentionTimes(of_.sample, of_.position, times), true);
    // The source has NaN both for a time missing in a report and for a stored NaN; it is taken for the latter
    // then.
    const auto isStored = [&](std::size_t i) { return i < times.size() && std::isnan(times[i]); };
    std::vector<double> minutes;
    if (of_.others) {
      for (const source::Scan& scan : of_.others->scans) minutes.push_back(scan.minutes);
    } else {
      minutes = WithZeros(source_.Minutes(of_.sample, of_.held), kWanted.absentTime, isStored);
    }
    CheckColumn("GetRetentionTimes", "time", times, minutes);
    const auto askTotal = [&](CZRChromatogram& given) {
      return server_.GetTotalIonChromatogram(true, of_.sample, of_.position, given);
    };
    CheckChromatogram("GetTotalIonChromatogram", askTotal, true, minutes,
                      Stored(kWanted.absentTotal, &source::Scan::totalIntensity,
                             [&] { return source_.TotalIons(of_.sample, of_.held); }));
    if (!IsReport()) return;
    CompareBasePeaks(true, minutes, Stored(kWanted.absentBasePeak, &source::Scan::basePeakIntensity, [&] {
                       return source_.BasePeaks(of_.sample, of_.held);
                     }));
  }

  template <class Read>
  std::vector<double> Stored(const Wanted& difference, std::optional<double> source::Scan::*value,
                             Read read) {
    if (!of_.others) {
      return WithZeros(read().intensities, difference, [&](std::size_t i) {
        return (source_.ScanAt(of_.sample, of_.held, static_cast<int>(i)).*value).has_value();
      });
    }
    std::vector<double> values;
    for (const source::Scan& scan : of_.others->scans) values.push_back(*(scan.*value));
    return values;
  }

  // With 0 for values missing in a report: NaN, unless NaN is stored.
  template <class IsStored>
  std::vector<double> WithZeros(std::vector<double> values, const Wanted& difference, IsStored isStored) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (!IsReport() || !std::isnan(values[i]) || isStored(i)) continue;
      Count(difference);
      values[i] = 0;
    }
    return values;
  }

  // Ion mobility

  // Several at once are filled up to the first that cannot be read.
  void CompareDriftBins(int scan) {
    place_.scan = scan;
    HostVector<CZRMassSpectrum> spectra;
    const bool areGiven =
        server_.GetMobilitySpectra(of_.sample, of_.position, scan, 0, of_.driftBins - 1, spectra);
    bool isComplete = true;
    for (int bin = 0; bin < of_.driftBins; ++bin) {
      const bool isHeld = Held([&] {
                            source_.ReadDriftBin(of_.sample, of_.held, scan, bin, x_, y_);
                            return true;
                          }).has_value();
      isComplete = isComplete && isHeld;
      CZRMassSpectrum spectrum;
      const bool isGiven = server_.GetMobilitySpectrum(of_.sample, of_.position, scan, bin, spectrum);
      Check("GetMobilitySpectrum", "success", isGiven, isHeld);
      if (isGiven && isHeld) CheckPoints("GetMobilitySpectrum", ColumnsOf(spectrum), {x_, y_});
      const auto place = static_cast<std::size_t>(bin);
      if (isComplete && place < spectra.size())
        CheckPoints("GetMobilitySpectra", ColumnsOf(spectra[place]), {x_, y_});
    }
    Check("GetMobilitySpectra", "success", areGiven, isComplete);
  }

  CDataServerImpl& server_;
  source::Source& source_;
  RawSlots* rawSlots_;
  ReportSlots* reportSlots_;
  const ComparedList& list_;
  const ComparedFunction& of_;
  Computed computed_;
  bool mayKeepPoints_ = false;  // a reused spectrum does, in places without points
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace

void CompareScans(PluginComparison& result, const ComparedSource& compared, const ComparedList& list,
                  const ComparedFunction& function, int scans) {
  ScanComparer(result, compared, list, function).Compare(scans);
}

}  // namespace zrml::tool
