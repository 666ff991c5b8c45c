// CZRMassSpectrum: the in-memory form of every mass spectrum. A plain value, owned by its creator; not
// synchronised. Its memory layout is part of the contract with hosts (docs/host-contract.md) and pinned in
// mass_spectrum.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/host_types.h"

namespace zrml {

/// The two numbers of a pair that spectra carry and copy; not interpreted by the system.
struct SpectrumPair {
  double first = 0;
  double second = 0;
};

class CZRMassSpectrum {
 public:
  using PointDataRelease = void (*)(void* datum, void* context);

  CZRMassSpectrum() = default;
  /// `count` points of mass and intensity 0.
  explicit CZRMassSpectrum(unsigned count);
  /// Copies are deep except for point data: the pointers are copied, and code that sets a release function
  /// must make sure that each datum is released only once.
  CZRMassSpectrum(const CZRMassSpectrum& other) = default;
  CZRMassSpectrum(CZRMassSpectrum&& other) noexcept { Swap(other); }
  CZRMassSpectrum& operator=(const CZRMassSpectrum& other);
  CZRMassSpectrum& operator=(CZRMassSpectrum&& other) noexcept;
#ifdef _WIN32
  ~CZRMassSpectrum();
  /// The table entry of the host's compiler for a virtual destructor: destroys and, when bit 0 of `flags` is
  /// set, frees the memory. Hosts use it to destroy the spectra that the plug-in made in their vectors.
  virtual void* Destroy(unsigned flags);
#else
  virtual ~CZRMassSpectrum();
#endif

  /// Sizes masses and intensities to `count` (new entries 0.0), and each optional array to `count` (new
  /// entries zero) or to nothing by its flag. 0 is the same as Clear; negative counts give false and change
  /// nothing.
  virtual bool Resize(int count, bool withPointFlags, bool withPointData, bool withPointValues,
                      bool withPointMarks);

  void Swap(CZRMassSpectrum& other) noexcept;

  /// Copies everything but the points, their count and presence flags, three reserved vectors and the release
  /// function.
  void CopyAttributes(const CZRMassSpectrum& source);

  /// Exchanges the points with their optional arrays; attributes and release functions stay.
  void SwapPoints(CZRMassSpectrum& other) noexcept;

  /// Resizes when the count or the length of an array differs. Deliberately sets the count and makes the
  /// statistics stale in every case: after SetSize(-1), which gives false, the count is -1 and the points
  /// stay until the next sizing.
  bool SetSize(int count);

  /// Frees all points and keeps the attributes.
  void Clear();

  /// Adds (zeroed) or removes an optional per-point array. Adding one to an empty spectrum does nothing.
  void EnablePointFlags(bool enable);
  void EnablePointData(bool enable);
  void EnablePointValues(bool enable);
  void EnablePointMarks(bool enable);

  int GetCount() const { return m_Count; }
  /// Points that both arrays have: the count, unless Assign replaced an array and it was not resized since.
  std::size_t UsablePoints() const;

  /// The first element, or null when there is none.
  double* GetMasses() { return m_Masses.empty() ? nullptr : m_Masses.data(); }
  const double* GetMasses() const { return m_Masses.empty() ? nullptr : m_Masses.data(); }
  double* GetIntensities() { return m_Intensities.empty() ? nullptr : m_Intensities.data(); }
  const double* GetIntensities() const { return m_Intensities.empty() ? nullptr : m_Intensities.data(); }
  const std::uint8_t* GetPointFlags() const { return m_PointFlags.empty() ? nullptr : m_PointFlags.data(); }
  void* const* GetPointData() const { return m_PointData.empty() ? nullptr : m_PointData.data(); }
  const std::int32_t* GetPointValues() const {
    return m_PointValues.empty() ? nullptr : m_PointValues.data();
  }
  const std::uint8_t* GetPointMarks() const { return m_PointMarks.empty() ? nullptr : m_PointMarks.data(); }
  std::uint8_t* GetPointFlags() { return m_PointFlags.empty() ? nullptr : m_PointFlags.data(); }
  void** GetPointData() { return m_PointData.empty() ? nullptr : m_PointData.data(); }
  std::int32_t* GetPointValues() { return m_PointValues.empty() ? nullptr : m_PointValues.data(); }
  std::uint8_t* GetPointMarks() { return m_PointMarks.empty() ? nullptr : m_PointMarks.data(); }

  /// The arrays themselves, for bulk filling; follow with SetSize.
  HostVector<double>& MassVector() { return m_Masses; }
  HostVector<double>& IntensityVector() { return m_Intensities; }
  const HostVector<double>& MassVector() const { return m_Masses; }
  const HostVector<double>& IntensityVector() const { return m_Intensities; }

  /// 0.0 or false for an index outside 0 to count - 1.
  double GetMass(int i) const;
  bool SetMass(int i, double mass);
  bool SetIntensity(int i, double intensity);

  /// Copies all values that the array holds.
  void CopyMasses(const double* values);
  void CopyIntensities(const double* values);

  /// Replaces an array without changing the count; follow with SetSize.
  void AssignMasses(const HostVector<double>& values);
  void AssignIntensities(const HostVector<double>& values);

  bool HasPointFlags() const { return m_HasPointFlags; }
  bool HasPointData() const { return m_HasPointData; }
  bool HasPointValues() const { return m_HasPointValues; }
  bool HasPointMarks() const { return m_HasPointMarks; }

  const HostString& GetTitle() const { return m_Title; }
  void SetTitle(const HostString& title) { m_Title = title; }
  const HostString& GetLabel() const { return m_Label; }
  void SetLabel(const HostString& label) { m_Label = label; }

  /// True for centroid (stick) data, false for profile (continuum) data.
  bool IsCentroided() const { return m_Centroided; }
  void SetCentroided(bool centroided) { m_Centroided = centroided; }
  int GetMSLevel() const { return m_MSLevel; }
  void SetMSLevel(short level) { m_MSLevel = level; }
  int GetScanType() const { return m_ScanType; }
  void SetScanType(int type) { m_ScanType = type; }
  /// 1 positive, 2 negative.
  int GetPolarity() const { return m_Polarity; }
  void SetPolarity(int polarity) { m_Polarity = polarity; }
  /// m/z, 0 when none.
  double GetPrecursorMass() const { return m_PrecursorMass; }
  void SetPrecursorMass(double mass) { m_PrecursorMass = mass; }
  /// Minutes.
  double GetStartTime() const { return m_StartTime; }
  void SetStartTime(double minutes) { m_StartTime = minutes; }
  double GetEndTime() const { return m_EndTime; }
  void SetEndTime(double minutes) { m_EndTime = minutes; }
  /// Scan numbers count from 1.
  int GetFirstScan() const { return m_FirstScan; }
  void SetFirstScan(int scan) { m_FirstScan = scan; }
  int GetLastScan() const { return m_LastScan; }
  void SetLastScan(int scan) { m_LastScan = scan; }
  double GetScanAuxValue() const { return m_ScanAuxValue; }
  void SetScanAuxValue(double value) { m_ScanAuxValue = value; }
  double GetScale() const { return m_Scale; }

  /// Drift bins count from 1. While the last bin or value is unset, setting the first also sets the last.
  int GetFirstDriftBin() const { return m_FirstDriftBin; }
  void SetFirstDriftBin(int bin);
  int GetLastDriftBin() const { return m_LastDriftBin; }
  void SetLastDriftBin(int bin) { m_LastDriftBin = bin; }
  double GetFirstDriftValue() const { return m_FirstDriftValue; }
  void SetFirstDriftValue(double value);
  double GetLastDriftValue() const { return m_LastDriftValue; }
  void SetLastDriftValue(double value) { m_LastDriftValue = value; }

  /// When set, every point datum is passed to `release` before it is removed from the spectrum.
  void SetPointDataRelease(PointDataRelease release, void* context);
  /// Whether there is a release function: without one, the spectrum does not own its point data.
  bool OwnsPointData() const { return m_PointDataRelease != nullptr; }
  /// Exchanges the release functions only.
  void SwapPointDataRelease(CZRMassSpectrum& other) noexcept;

  void InvalidateStatistics() { m_StatsStale = true; }
  bool AreStatisticsStale() const { return m_StatsStale; }

  /// Computes the statistics unless they are current. An empty spectrum has zeros.
  void UpdateStatistics();
  /// These five call it first.
  double GetTotalIntensity();
  double GetBasePeakMass();
  double GetBasePeakIntensity();
  int GetBasePeakIndex();
  double GetMinIntensity();

  /// Masses of the first and last point; false without points.
  bool GetMassRange(double& low, double& high) const;

  /// Indices of the first and last point with low <= mass <= high; false when there are none. Masses must be
  /// ascending.
  bool FindIndexRange(double low, double high, int& first, int& last) const;
  /// Largest and summed intensity of those points; 0.0 when there are none.
  double GetMaxIntensityInRange(double low, double high) const;
  double GetIntensitySumInRange(double low, double high) const;

 private:
  friend struct MassSpectrumLayout;

  template <class Self>
  static auto Attributes(Self& self);
  auto PointMembers();
  auto AllMembers();
  bool IsIndex(int i, const HostVector<double>& array) const {
    return i >= 0 && i < m_Count && static_cast<std::size_t>(i) < array.size();
  }
  void ReleasePointData(std::size_t from);

  HostVector<double> m_Masses;
  HostVector<double> m_Intensities;
  HostVector<std::uint8_t> m_PointFlags;
  HostVector<void*> m_PointData;
  HostVector<std::int32_t> m_PointValues;
  HostVector<std::uint8_t> m_PointMarks;
  std::int32_t m_Count = 0;
  bool m_HasPointFlags = false;
  bool m_HasPointValues = false;
  bool m_HasPointData = false;
  bool m_HasPointMarks = false;
  HostString m_Title;
  bool m_Centroided = true;
  bool m_StatsStale = true;
  double m_TotalIntensity = 0;
  double m_BasePeakMass = 0;
  double m_BasePeakIntensity = 0;
  double m_MinIntensity = 0;
  std::int32_t m_BasePeakIndex = 0;
  std::int32_t m_MSLevel = 1;
  double m_PrecursorMass = 0;
  std::int16_t m_PrecursorCompanion = 0;
  std::int32_t m_Polarity = 1;
  HostVector<SpectrumPair> m_ReservedPairs;
  HostVector<double> m_ReservedValues;
  std::int32_t m_ScanType = 1;
  HostVector<double> m_Uncopied1;
  HostVector<double> m_Uncopied2;
  HostVector<double> m_Uncopied3;
  double m_StartTime = 0;
  double m_EndTime = 0;
  double m_FirstDriftValue = 0;
  double m_LastDriftValue = 0;
  std::int32_t m_FirstScan = 0;
  std::int32_t m_LastScan = 0;
  std::int32_t m_FirstDriftBin = 0;
  std::int32_t m_LastDriftBin = 0;
  PointDataRelease m_PointDataRelease = nullptr;
  void* m_PointDataContext = nullptr;
  std::int64_t m_Unused1 = 0;
  std::int64_t m_Unused2 = 0;
  std::int64_t m_Unused3 = 0;
  std::int64_t m_Unused4 = 0;
  HostString m_Label;
  double m_ScanAuxValue = 0;
  std::uint8_t m_ReservedByte = 0;
  double m_Scale = 1.0;
  std::int64_t m_ReservedWord = 0;
};

/// Sort keys of SortSpectrum.
enum SpectrumOrder : int {
  kMassAscending = 0,
  kMassDescending = 1,
  kIntensityAscending = 2,
  kIntensityDescending = 3,
};

/// Sorts all point arrays together, then drops leading points whose mass is not positive and merges points of
/// equal mass (their intensities summed, or the largest kept), as the flags say. Merging moves masses and
/// intensities only. Dropping without merging deliberately leaves a single point. False for an unknown order
/// or when arrays are missing.
bool SortSpectrum(int order, bool sumDuplicates, bool maxDuplicates, bool dropNonPositiveMasses,
                  CZRMassSpectrum& spectrum);

/// By ascending mass; of equal masses the largest intensity is kept.
bool SortByMass(bool dropNonPositiveMasses, CZRMassSpectrum& spectrum);

}  // namespace zrml
