// The data server interface: the operations through which a host reads every kind of data source. The order
// of the virtual operations is part of the contract with hosts, which bind to them by position
// (docs/host-contract.md).
//
// Positions (sample, function, scan, drift bin, trace) count from 0; numbers shown to people count from 1. A
// position out of range gives the empty result (false, 0 or an empty string). Outputs are filled only on
// success, unless stated otherwise. Masses are m/z, retention times minutes. Only one thread may use an
// object at a time; objects are independent.
#pragma once

#include <string>
#include <vector>

#include "common/host_types.h"
#include "plugin/absorbance_spectrum.h"
#include "plugin/chromatogram.h"
#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Values of GetFunctionKind. 8, 16 and 64 are further kinds that no provider here returns; 16 counts as MS
/// level 2, and so does 64 where a report's spectra state their level.
enum FunctionKind : int {
  kAbsorbanceFunction = 1,
  kMsFunction = 2,
  kMsMsFunction = 4,
  kKind8 = 8,
  kKind16 = 16,
  kIonMonitoringFunction = 32,
  kKind64 = 64,
};

/// Values of GetMSMSScanType.
enum MsMsScanType : int {
  kNoMsMsScan = 0,
  kPrecursorIonScan = 1,
  kProductIonScan = 2,
  kNeutralLossScan = 3,
  kNeutralGainScan = 4,
};

/// Values of GetPolarity.
enum Polarity : int { kUnknownPolarity = 0, kPositivePolarity = 1, kNegativePolarity = 2 };

class CDataServerImpl {
 public:
  CDataServerImpl() = default;
  CDataServerImpl(const CDataServerImpl&) = delete;
  CDataServerImpl& operator=(const CDataServerImpl&) = delete;

  /// Releases everything that Close() releases.
  virtual ~CDataServerImpl();

  virtual std::wstring GetProviderName() = 0;
  /// In braces, lower case.
  virtual std::wstring GetProviderGuid() = 0;

  /// Opens a data source, which stays open until Close(). Close() always returns true.
  virtual bool Open(const std::wstring& path) = 0;
  virtual bool Close() = 0;

  /// Whether the content (ValidateSource) or just the name or folder structure (CanOpen) at `path` belongs to
  /// this provider. Neither changes the object's state. By default CanOpen is ValidateSource.
  virtual bool ValidateSource(const std::wstring& path) = 0;
  virtual bool CanOpen(const std::wstring& path);

  virtual int GetSampleCount();
  /// The number of samples in a file, without opening it.
  virtual int GetFileSampleCount(const std::wstring& path);
  virtual std::wstring GetSampleName(int sample);

  virtual int GetFunctionCount(int sample);
  virtual std::wstring GetFunctionName(int sample, int function);
  /// A FunctionKind.
  virtual int GetFunctionKind(int sample, int function);
  /// A MsMsScanType.
  virtual int GetMSMSScanType(int sample, int function);
  /// A Polarity.
  virtual int GetPolarity(int sample, int function);
  virtual int GetMSLevel(int sample, int function);
  /// Dimensions of the function's data set: those of a scan, and time when there is more than one scan.
  virtual int GetDimensionCount(int sample, int function);
  virtual bool IsCentroided(int sample, int function);
  virtual bool HasMobility(int sample, int function);
  /// 1: m/z; 2: m/z and drift; 0 when unknown.
  virtual int GetScanDimensionCount(int sample, int function);
  virtual int GetScanCount(int sample, int function) = 0;
  virtual int GetMobilityBinCount(int sample, int function);

  /// Chromatograms: one point per scan. By default each is computed from the spectra, which needs
  /// `allowCompute`; when a spectrum fails the result is false and the points before it stay written. The
  /// base peak chromatogram is named "BPC"; the others deliberately keep the container's name.
  virtual bool GetBasePeakChromatogram(bool allowCompute, int sample, int function,
                                       CZRChromatogram& chromatogram);
  virtual bool GetMassRangeBasePeakChromatogram(double low, double high, bool allowCompute, int sample,
                                                int function, CZRChromatogram& chromatogram);
  virtual bool GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                                       CZRChromatogram& chromatogram);
  virtual bool GetMassRangeChromatogram(double low, double high, bool allowCompute, int sample, int function,
                                        CZRChromatogram& chromatogram);

  /// One time per scan. On failure the times before the failing scan stay written.
  virtual bool GetRetentionTimes(int sample, int function, HostVector<double>& times);
  virtual bool GetScanRetentionTime(int sample, int function, int scan, double& minutes);

  /// The mass range set in the acquisition method.
  virtual bool GetFunctionMassRange(int sample, int function, double& low, double& high);
  virtual bool GetScanMassRange(int sample, int function, int scan, double& low, double& high);
  virtual bool GetScanMobilityRange(int sample, int function, int scan, double& low, double& high);
  virtual bool GetScanIntensityRange(int sample, int function, int scan, double& min, double& max);
  /// One drift value per bin.
  virtual bool GetMobilityAxis(int sample, int function, int scan, HostVector<double>& axis);

  virtual bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) = 0;
  virtual bool GetMobilitySpectrum(int sample, int function, int scan, int bin, CZRMassSpectrum& spectrum);
  /// The bins from firstBin to lastBin. On failure the spectra before the failing bin stay filled.
  virtual bool GetMobilitySpectra(int sample, int function, int scan, int firstBin, int lastBin,
                                  HostVector<CZRMassSpectrum>& spectra);

  /// Traces of the sample (analog channels and the like).
  virtual int GetTraceCount(int sample);
  virtual std::wstring GetTraceName(int sample, int trace);
  virtual bool GetTrace(int sample, int trace, CZRChromatogram& chromatogram);

  /// Traces of a function. The default name deliberately uses the function's index, not the trace's.
  virtual int GetFunctionTraceCount(int sample, int function);
  virtual std::wstring GetFunctionTraceName(int sample, int function, int trace);
  virtual bool GetFunctionTrace(int sample, int function, int trace, CZRChromatogram& chromatogram);

  virtual bool HasAbsorbanceData(int sample);
  virtual int GetAbsorbanceScanCount(int sample);
  virtual bool GetAbsorbanceSpectrum(int sample, int scan, CZRAbsorbanceSpectrum& spectrum);

  /// Metadata items of a sample or function by name.
  virtual bool GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value);
  virtual bool GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys);

  /// File-dialog filter.
  virtual std::wstring GetFileFilter();

  /// Opens the source at `path`, of which the user chose `file`. The default ignores the file.
  virtual bool OpenFileInSet(const std::wstring& path, const std::wstring& file);

  /// Whether the source holds processed results rather than raw acquisition data.
  virtual bool IsReportSource();

  /// The scan of the next lower MS level that is closest in time and not later than the given one.
  virtual bool FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                                 int& precursorScan);
};

}  // namespace zrml
