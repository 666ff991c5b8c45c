#include "spectrum/mass_spectrum.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cstddef>
#include <limits>
#include <tuple>
#include <type_traits>
#include <utility>

#include "spectrum/parallel_sort.h"

namespace zrml {

// The layout that hosts rely on, byte for byte.
struct MassSpectrumLayout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
  using S = CZRMassSpectrum;
  static_assert(sizeof(S) == 544);
  static_assert(offsetof(S, m_Masses) == 8 && offsetof(S, m_Intensities) == 32);
  static_assert(offsetof(S, m_PointFlags) == 56 && offsetof(S, m_PointData) == 80);
  static_assert(offsetof(S, m_PointValues) == 104 && offsetof(S, m_PointMarks) == 128);
  static_assert(offsetof(S, m_Count) == 152);
  static_assert(offsetof(S, m_HasPointFlags) == 156 && offsetof(S, m_HasPointValues) == 157);
  static_assert(offsetof(S, m_HasPointData) == 158 && offsetof(S, m_HasPointMarks) == 159);
  static_assert(offsetof(S, m_Title) == 160);
  static_assert(offsetof(S, m_Centroided) == 192 && offsetof(S, m_StatsStale) == 193);
  static_assert(offsetof(S, m_TotalIntensity) == 200 && offsetof(S, m_BasePeakMass) == 208);
  static_assert(offsetof(S, m_BasePeakIntensity) == 216 && offsetof(S, m_MinIntensity) == 224);
  static_assert(offsetof(S, m_BasePeakIndex) == 232 && offsetof(S, m_MSLevel) == 236);
  static_assert(offsetof(S, m_PrecursorMass) == 240 && offsetof(S, m_PrecursorCompanion) == 248);
  static_assert(offsetof(S, m_Polarity) == 252);
  static_assert(offsetof(S, m_ReservedPairs) == 256 && offsetof(S, m_ReservedValues) == 280);
  static_assert(sizeof(SpectrumPair) == 16);
  static_assert(offsetof(S, m_ScanType) == 304);
  static_assert(offsetof(S, m_Uncopied1) == 312 && offsetof(S, m_Uncopied2) == 336);
  static_assert(offsetof(S, m_Uncopied3) == 360);
  static_assert(offsetof(S, m_StartTime) == 384 && offsetof(S, m_EndTime) == 392);
  static_assert(offsetof(S, m_FirstDriftValue) == 400 && offsetof(S, m_LastDriftValue) == 408);
  static_assert(offsetof(S, m_FirstScan) == 416 && offsetof(S, m_LastScan) == 420);
  static_assert(offsetof(S, m_FirstDriftBin) == 424 && offsetof(S, m_LastDriftBin) == 428);
  static_assert(offsetof(S, m_PointDataRelease) == 432 && offsetof(S, m_PointDataContext) == 440);
  static_assert(offsetof(S, m_Unused1) == 448 && offsetof(S, m_Unused4) == 472);
  static_assert(offsetof(S, m_Label) == 480);
  static_assert(offsetof(S, m_ScanAuxValue) == 512 && offsetof(S, m_ReservedByte) == 520);
  static_assert(offsetof(S, m_Scale) == 528 && offsetof(S, m_ReservedWord) == 536);
#pragma GCC diagnostic pop
};

namespace {

constexpr int kLargestCount = std::numeric_limits<int>::max();

template <class T>
void Free(HostVector<T>& vector) {
  HostVector<T>().swap(vector);
}

template <class T>
void ResizeOptional(HostVector<T>& vector, std::size_t count, bool wanted) {
  if (wanted) {
    vector.resize(count);
  } else {
    Free(vector);
  }
}

template <class T>
bool Enable(HostVector<T>& vector, int count, bool enable, bool& present) {
  if (!enable) {
    Free(vector);
    present = false;
  } else if (count > 0) {
    vector.resize(static_cast<std::size_t>(count));
    present = true;
  }
  return present;
}

}  // namespace

CZRMassSpectrum::CZRMassSpectrum(unsigned count) {
  if (count <= static_cast<unsigned>(kLargestCount)) {
    CZRMassSpectrum::Resize(static_cast<int>(count), false, false, false, false);
  }
}

CZRMassSpectrum& CZRMassSpectrum::operator=(const CZRMassSpectrum& other) {
  if (this != &other) {
    CZRMassSpectrum copy(other);
    Swap(copy);
  }
  return *this;
}

CZRMassSpectrum& CZRMassSpectrum::operator=(CZRMassSpectrum&& other) noexcept {
  if (this != &other) {
    CZRMassSpectrum taken(std::move(other));
    Swap(taken);
  }
  return *this;
}

CZRMassSpectrum::~CZRMassSpectrum() { ReleasePointData(0); }

#ifdef _WIN32
void* CZRMassSpectrum::Destroy(unsigned flags) {
  this->~CZRMassSpectrum();
  if ((flags & 1) != 0) HostFree(this, sizeof(CZRMassSpectrum));
  return this;
}
#endif

// What CopyAttributes copies.
template <class Self>
auto CZRMassSpectrum::Attributes(Self& self) {
  return std::tie(self.m_Title, self.m_Centroided, self.m_StatsStale, self.m_TotalIntensity,
                  self.m_BasePeakMass, self.m_BasePeakIntensity, self.m_MinIntensity, self.m_BasePeakIndex,
                  self.m_MSLevel, self.m_PrecursorMass, self.m_PrecursorCompanion, self.m_Polarity,
                  self.m_ReservedPairs, self.m_ReservedValues, self.m_ScanType, self.m_StartTime,
                  self.m_EndTime, self.m_FirstDriftValue, self.m_LastDriftValue, self.m_FirstScan,
                  self.m_LastScan, self.m_FirstDriftBin, self.m_LastDriftBin, self.m_Unused1, self.m_Unused2,
                  self.m_Unused3, self.m_Unused4, self.m_Label, self.m_ScanAuxValue, self.m_ReservedByte,
                  self.m_Scale, self.m_ReservedWord);
}

auto CZRMassSpectrum::PointMembers() {
  return std::tie(m_Masses, m_Intensities, m_PointFlags, m_PointData, m_PointValues, m_PointMarks, m_Count,
                  m_HasPointFlags, m_HasPointValues, m_HasPointData, m_HasPointMarks);
}

auto CZRMassSpectrum::AllMembers() {
  return std::tuple_cat(
      PointMembers(), std::tie(m_Uncopied1, m_Uncopied2, m_Uncopied3, m_PointDataRelease, m_PointDataContext),
      Attributes(*this));
}

void CZRMassSpectrum::SwapPoints(CZRMassSpectrum& other) noexcept {
  auto mine = PointMembers();
  auto theirs = other.PointMembers();
  mine.swap(theirs);
  m_StatsStale = true;
  other.m_StatsStale = true;
}

void CZRMassSpectrum::Swap(CZRMassSpectrum& other) noexcept {
  auto mine = AllMembers();
  auto theirs = other.AllMembers();
  mine.swap(theirs);
}

void CZRMassSpectrum::CopyAttributes(const CZRMassSpectrum& source) {
  if (this == &source) return;
  CZRMassSpectrum copy;  // a failed allocation must not leave this spectrum half copied
  Attributes(copy) = Attributes(source);
  auto mine = Attributes(*this);
  auto theirs = Attributes(copy);
  mine.swap(theirs);
}

std::size_t CZRMassSpectrum::UsablePoints() const {
  return std::min({static_cast<std::size_t>(std::max(m_Count, 0)), m_Masses.size(), m_Intensities.size()});
}

void CZRMassSpectrum::ReleasePointData(std::size_t from) {
  if (m_PointDataRelease == nullptr) return;
  for (std::size_t i = from; i < m_PointData.size(); ++i)
    m_PointDataRelease(m_PointData[i], m_PointDataContext);
}

bool CZRMassSpectrum::Resize(int count, bool withPointFlags, bool withPointData, bool withPointValues,
                             bool withPointMarks) {
  if (count < 0) return false;
  if (count == 0) {
    Clear();
    return true;
  }
  const auto size = static_cast<std::size_t>(count);
  // All memory is allocated first: a failure leaves the spectrum unchanged.
  m_Masses.reserve(size);
  m_Intensities.reserve(size);
  if (withPointFlags) m_PointFlags.reserve(size);
  if (withPointData) m_PointData.reserve(size);
  if (withPointValues) m_PointValues.reserve(size);
  if (withPointMarks) m_PointMarks.reserve(size);

  ReleasePointData(withPointData ? size : 0);
  m_Masses.resize(size);
  m_Intensities.resize(size);
  ResizeOptional(m_PointFlags, size, withPointFlags);
  ResizeOptional(m_PointData, size, withPointData);
  ResizeOptional(m_PointValues, size, withPointValues);
  ResizeOptional(m_PointMarks, size, withPointMarks);
  m_HasPointFlags = withPointFlags;
  m_HasPointData = withPointData;
  m_HasPointValues = withPointValues;
  m_HasPointMarks = withPointMarks;
  m_Count = count;
  m_StatsStale = true;
  return true;
}

bool CZRMassSpectrum::SetSize(int count) {
  const auto size = static_cast<std::size_t>(std::max(count, 0));
  const bool fits = count == m_Count && m_Masses.size() == size && m_Intensities.size() == size;
  const bool done = (fits && count >= 0) ||
                    Resize(count, m_HasPointFlags, m_HasPointData, m_HasPointValues, m_HasPointMarks);
  m_Count = count;
  m_StatsStale = true;
  return done;
}

void CZRMassSpectrum::Clear() {
  ReleasePointData(0);
  Free(m_Masses);
  Free(m_Intensities);
  Free(m_PointFlags);
  Free(m_PointData);
  Free(m_PointValues);
  Free(m_PointMarks);
  m_Count = 0;
  m_StatsStale = true;
}

void CZRMassSpectrum::EnablePointFlags(bool enable) {
  Enable(m_PointFlags, m_Count, enable, m_HasPointFlags);
}

void CZRMassSpectrum::EnablePointData(bool enable) {
  if (!enable) ReleasePointData(0);
  Enable(m_PointData, m_Count, enable, m_HasPointData);
}

void CZRMassSpectrum::EnablePointValues(bool enable) {
  Enable(m_PointValues, m_Count, enable, m_HasPointValues);
}
void CZRMassSpectrum::EnablePointMarks(bool enable) {
  Enable(m_PointMarks, m_Count, enable, m_HasPointMarks);
}

double CZRMassSpectrum::GetMass(int i) const {
  return IsIndex(i, m_Masses) ? m_Masses[static_cast<std::size_t>(i)] : 0;
}

bool CZRMassSpectrum::SetMass(int i, double mass) {
  if (!IsIndex(i, m_Masses)) return false;
  m_Masses[static_cast<std::size_t>(i)] = mass;
  m_StatsStale = true;
  return true;
}

bool CZRMassSpectrum::SetIntensity(int i, double intensity) {
  if (!IsIndex(i, m_Intensities)) return false;
  m_Intensities[static_cast<std::size_t>(i)] = intensity;
  m_StatsStale = true;
  return true;
}

void CZRMassSpectrum::CopyMasses(const double* values) {
  if (m_Masses.empty()) return;
  std::copy_n(values, m_Masses.size(), m_Masses.begin());
  m_StatsStale = true;
}

void CZRMassSpectrum::CopyIntensities(const double* values) {
  if (m_Intensities.empty()) return;
  std::copy_n(values, m_Intensities.size(), m_Intensities.begin());
  m_StatsStale = true;
}

void CZRMassSpectrum::AssignMasses(const HostVector<double>& values) {
  m_Masses = values;
  m_StatsStale = true;
}

void CZRMassSpectrum::AssignIntensities(const HostVector<double>& values) {
  m_Intensities = values;
  m_StatsStale = true;
}

void CZRMassSpectrum::SetFirstDriftBin(int bin) {
  m_FirstDriftBin = bin;
  if (m_LastDriftBin < 1) m_LastDriftBin = bin;
}

void CZRMassSpectrum::SetFirstDriftValue(double value) {
  m_FirstDriftValue = value;
  if (m_LastDriftValue <= 0) m_LastDriftValue = value;
}

void CZRMassSpectrum::SetPointDataRelease(PointDataRelease release, void* context) {
  m_PointDataRelease = release;
  m_PointDataContext = context;
}

void CZRMassSpectrum::SwapPointDataRelease(CZRMassSpectrum& other) noexcept {
  std::swap(m_PointDataRelease, other.m_PointDataRelease);
  std::swap(m_PointDataContext, other.m_PointDataContext);
}

void CZRMassSpectrum::UpdateStatistics() {
  if (!m_StatsStale) return;
  m_TotalIntensity = m_BasePeakMass = m_BasePeakIntensity = m_MinIntensity = 0;
  m_BasePeakIndex = 0;
  if (const std::size_t count = UsablePoints(); count > 0) {
    double sum = 0;
    double largest = -DBL_MAX;
    double smallest = DBL_MAX;
    for (std::size_t i = 0; i < count; ++i) {
      const double intensity = m_Intensities[i];
      sum += intensity;
      if (intensity < smallest) smallest = intensity;
      if (intensity > largest) {
        largest = intensity;
        m_BasePeakMass = m_Masses[i];
        m_BasePeakIndex = static_cast<std::int32_t>(i);
      }
    }
    m_TotalIntensity = sum;
    m_BasePeakIntensity = largest;
    m_MinIntensity = smallest;
  }
  m_StatsStale = false;
}

double CZRMassSpectrum::GetTotalIntensity() {
  UpdateStatistics();
  return m_TotalIntensity;
}

double CZRMassSpectrum::GetBasePeakMass() {
  UpdateStatistics();
  return m_BasePeakMass;
}

double CZRMassSpectrum::GetBasePeakIntensity() {
  UpdateStatistics();
  return m_BasePeakIntensity;
}

int CZRMassSpectrum::GetBasePeakIndex() {
  UpdateStatistics();
  return m_BasePeakIndex;
}

double CZRMassSpectrum::GetMinIntensity() {
  UpdateStatistics();
  return m_MinIntensity;
}

bool CZRMassSpectrum::GetMassRange(double& low, double& high) const {
  const std::size_t count = UsablePoints();
  if (count == 0) return false;
  low = m_Masses.front();
  high = m_Masses[count - 1];
  return true;
}

bool CZRMassSpectrum::FindIndexRange(double low, double high, int& first, int& last) const {
  const std::size_t count = UsablePoints();
  if (count == 0 || low > m_Masses[count - 1] || m_Masses.front() > high) return false;
  const auto begin = m_Masses.begin();
  const auto end = begin + static_cast<std::ptrdiff_t>(count);
  first = static_cast<int>(std::lower_bound(begin, end, low) - begin);
  last = static_cast<int>(std::upper_bound(begin, end, high) - begin) - 1;
  return first <= last;
}

double CZRMassSpectrum::GetMaxIntensityInRange(double low, double high) const {
  int first = 0;
  int last = 0;
  if (!FindIndexRange(low, high, first, last)) return 0;
  double largest = -DBL_MAX;
  for (int i = first; i <= last; ++i) largest = std::max(largest, m_Intensities[static_cast<std::size_t>(i)]);
  return largest > -DBL_MAX ? largest : 0;
}

double CZRMassSpectrum::GetIntensitySumInRange(double low, double high) const {
  int first = 0;
  int last = 0;
  if (!FindIndexRange(low, high, first, last)) return 0;
  double sum = 0;
  for (int i = first; i <= last; ++i) sum += m_Intensities[static_cast<std::size_t>(i)];
  return sum;
}

namespace {

// Each mass is above the one before it.
bool Ascends(const double* masses, std::size_t count) {
  for (std::size_t i = 1; i < count; ++i) {
    if (!(masses[i - 1] < masses[i])) return false;
  }
  return true;
}

// Each point array that is present has at least `count` elements.
bool SortPoints(int order, CZRMassSpectrum& spectrum, std::size_t count) {
  const ParallelArray masses{sizeof(double), spectrum.GetMasses()};
  const ParallelArray intensities{sizeof(double), spectrum.GetIntensities()};
  const bool byMass = order == kMassAscending || order == kMassDescending;
  const bool ascending = order == kMassAscending || order == kIntensityAscending;
  const std::array arrays = {
      byMass ? masses : intensities,
      byMass ? intensities : masses,
      ParallelArray{sizeof(std::uint8_t), spectrum.GetPointFlags()},
      ParallelArray{sizeof(void*), spectrum.GetPointData()},
      ParallelArray{sizeof(std::int32_t), spectrum.GetPointValues()},
      ParallelArray{sizeof(std::uint8_t), spectrum.GetPointMarks()},
  };
  return SortParallelArrays(static_cast<int>(SortKey::kDouble), ascending, count, arrays);
}

// Merges runs of equal mass from `from` on to the front of the arrays and returns how many points remain.
int MergeEqualMasses(CZRMassSpectrum& spectrum, int from, bool sum) {
  double* const masses = spectrum.GetMasses();
  double* const intensities = spectrum.GetIntensities();
  int kept = 0;
  masses[0] = masses[from];
  intensities[0] = intensities[from];
  for (int i = from + 1; i < spectrum.GetCount(); ++i) {
    if (masses[i] != masses[kept]) {
      ++kept;
      masses[kept] = masses[i];
      intensities[kept] = intensities[i];
    } else if (sum) {
      intensities[kept] += intensities[i];
    } else {
      intensities[kept] = std::max(intensities[kept], intensities[i]);
    }
  }
  return kept + 1;
}

}  // namespace

bool SortSpectrum(int order, bool sumDuplicates, bool maxDuplicates, bool dropNonPositiveMasses,
                  CZRMassSpectrum& spectrum) {
  if (spectrum.GetCount() == 0) return true;
  if (order < kMassAscending || order > kIntensityDescending) return false;
  const auto count = static_cast<std::size_t>(std::max(spectrum.GetCount(), 0));
  if (count == 0 || spectrum.MassVector().size() < count || spectrum.IntensityVector().size() < count)
    return false;

  const bool wasInOrder = order == kMassAscending && Ascends(spectrum.GetMasses(), count);  // the usual case
  if (!wasInOrder && !SortPoints(order, spectrum, count)) return false;
  spectrum.InvalidateStatistics();
  const bool merges = sumDuplicates || maxDuplicates;
  if (!merges && !dropNonPositiveMasses) return true;

  int firstKept = 0;
  if (dropNonPositiveMasses) {
    const double* const mass = spectrum.GetMasses();
    while (firstKept < spectrum.GetCount() && mass[firstKept] <= 0) ++firstKept;
    // Deliberate: dropping without merging leaves one point, whatever the masses.
    if (firstKept == spectrum.GetCount() || !merges) return spectrum.SetSize(1);
  }
  if (wasInOrder && firstKept == 0) return spectrum.SetSize(spectrum.GetCount());  // nothing to move
  return spectrum.SetSize(MergeEqualMasses(spectrum, firstKept, sumDuplicates));
}

bool SortByMass(bool dropNonPositiveMasses, CZRMassSpectrum& spectrum) {
  return SortSpectrum(kMassAscending, false, true, dropNonPositiveMasses, spectrum);
}

}  // namespace zrml
