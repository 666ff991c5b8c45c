// The host's side of the binary contract, as Microsoft's compiler lays it out: strings, vectors, the
// containers and the interface. Built by clang in Microsoft mode, without headers or libraries of either
// compiler. Its vectors and strings check the block rules of the host's standard library and end the program
// when one is broken.
#pragma once

using size_t = decltype(sizeof(0));

namespace microsoft_host {

// The host's heap, and its reaction to errors.
void* Allocate(size_t bytes);
void Release(void* block);
[[noreturn]] void Fail(const char* what);

inline constexpr size_t kLargeBlock = 4096;
inline constexpr size_t kAlignment = 32;
inline constexpr size_t kOverhead = sizeof(void*) + kAlignment - 1;

inline void* NewBlock(size_t bytes) {
  if (bytes < kLargeBlock) return Allocate(bytes);
  const size_t raw = reinterpret_cast<size_t>(Allocate(bytes + kOverhead));
  const size_t user = (raw + kOverhead) & ~(kAlignment - 1);
  reinterpret_cast<size_t*>(user)[-1] = raw;
  return reinterpret_cast<void*>(user);
}

inline void DeleteBlock(void* block, size_t bytes) {
  if (block == nullptr) return;
  if (bytes < kLargeBlock) return Release(block);
  const size_t user = reinterpret_cast<size_t>(block);
  const size_t raw = reinterpret_cast<size_t*>(user)[-1];
  if (user % kAlignment != 0) Fail("large block is not aligned");
  if (user - raw < sizeof(void*) || user - raw > kOverhead) Fail("large block has no valid start");
  Release(reinterpret_cast<void*>(raw));
}

struct Placement {};

}  // namespace microsoft_host

inline void* operator new(size_t, void* where, microsoft_host::Placement) { return where; }

namespace microsoft_host {

/// std::wstring: 32 bytes.
class WString {
 public:
  WString() = default;
  WString(const wchar_t* text) {
    while (text[size_] != 0) ++size_;
    if (size_ > capacity_) {
      capacity_ = size_ | 7;
      block_ = static_cast<wchar_t*>(NewBlock((capacity_ + 1) * sizeof(wchar_t)));
    }
    for (size_t i = 0; i <= size_; ++i) const_cast<wchar_t*>(data())[i] = text[i];
  }
  WString(const WString& other) : WString(other.data()) {}
  WString& operator=(const WString&) = delete;
  ~WString() {
    if (size_ > capacity_) Fail("string is longer than its capacity");
    if (data()[size_] != 0) Fail("string is not terminated");
    if (capacity_ > 7) DeleteBlock(block_, (capacity_ + 1) * sizeof(wchar_t));
    if (capacity_ < 7) Fail("string capacity is too small");
  }

  const wchar_t* data() const { return capacity_ > 7 ? block_ : inside_; }
  size_t size() const { return size_; }

 private:
  union {
    wchar_t inside_[8] = {};
    wchar_t* block_;
  };
  size_t size_ = 0;
  size_t capacity_ = 7;
};
static_assert(sizeof(WString) == 32);

/// std::vector: 24 bytes.
template <class T>
class Vector {
 public:
  Vector() = default;
  Vector(const Vector&) = delete;
  Vector& operator=(const Vector&) = delete;
  ~Vector() { Free(); }

  T* begin() { return first_; }
  T* end() { return last_; }
  const T* begin() const { return first_; }
  const T* end() const { return last_; }
  size_t size() const { return static_cast<size_t>(last_ - first_); }

  /// New elements are zero. Only for trivial elements.
  void Resize(size_t count) {
    if (count > static_cast<size_t>(limit_ - first_)) {
      T* const block = static_cast<T*>(NewBlock(count * sizeof(T)));
      const size_t kept = size();
      for (size_t i = 0; i < kept; ++i) block[i] = first_[i];
      Free();
      first_ = block;
      last_ = block + kept;
      limit_ = block + count;
    }
    while (size() < count) *last_++ = T();
    last_ = first_ + count;
  }

  /// `count` elements made by the host, replacing the previous ones.
  void Make(size_t count) {
    Free();
    first_ = last_ = static_cast<T*>(NewBlock(count * sizeof(T)));
    limit_ = first_ + count;
    while (last_ != limit_) new (last_++, Placement()) T();
  }

  /// Gives up the block: the caller owns it now.
  T* Take() {
    T* const block = first_;
    first_ = last_ = limit_ = nullptr;
    return block;
  }

  void Free() {
    if (last_ < first_ || limit_ < last_) Fail("vector pointers are out of order");
    for (T* element = first_; element != last_; ++element) element->~T();
    DeleteBlock(first_, static_cast<size_t>(limit_ - first_) * sizeof(T));
    first_ = last_ = limit_ = nullptr;
  }

 private:
  T* first_ = nullptr;
  T* last_ = nullptr;
  T* limit_ = nullptr;
};
static_assert(sizeof(Vector<double>) == 24);

/// CZRMassSpectrum. Members at the contract's offsets; `calls` counts the calls through the host's own table.
class MassSpectrum {
 public:
  static inline int resizeCalls = 0;

  MassSpectrum() = default;
  MassSpectrum(const MassSpectrum&) = delete;
  virtual ~MassSpectrum() {}
  virtual bool Resize(int newCount, bool flags, bool data, bool newValues, bool newMarks) {
    ++resizeCalls;
    if (newCount < 0) return false;
    const size_t size = static_cast<size_t>(newCount);
    masses.Resize(size);
    intensities.Resize(size);
    pointFlags.Resize(flags ? size : 0);
    pointData.Resize(data ? size : 0);
    values.Resize(newValues ? size : 0);
    marks.Resize(newMarks ? size : 0);
    hasFlags = flags;
    hasData = data;
    hasValues = newValues;
    hasMarks = newMarks;
    count = newCount;
    statsStale = true;
    return true;
  }

  Vector<double> masses, intensities;
  Vector<unsigned char> pointFlags;
  Vector<void*> pointData;
  Vector<int> values;
  Vector<unsigned char> marks;
  int count = 0;
  bool hasFlags = false, hasValues = false, hasData = false, hasMarks = false;
  WString title;
  bool centroided = true, statsStale = true;
  double totalIntensity = 0, basePeakMass = 0, basePeakIntensity = 0, minIntensity = 0;
  int basePeakIndex = 0, msLevel = 1;
  double precursorMass = 0;
  short precursorCompanion = 0;
  int polarity = 1;
  struct Pair {
    double first, second;
  };
  Vector<Pair> pairs;
  Vector<double> reserved;
  int scanType = 1;
  Vector<double> uncopied1, uncopied2, uncopied3;
  double startTime = 0, endTime = 0, firstDriftValue = 0, lastDriftValue = 0;
  int firstScan = 0, lastScan = 0, firstDriftBin = 0, lastDriftBin = 0;
  void (*release)(void*, void*) = nullptr;
  void* context = nullptr;
  long long unused[4] = {};
  WString label;
  double auxValue = 0;
  unsigned char reservedByte = 0;
  double scale = 1;
  long long reservedWord = 0;
};
static_assert(sizeof(MassSpectrum) == 544);

/// CZRChromatogram.
struct Chromatogram {
  Vector<double> times, intensities;
  Vector<unsigned char> flags;
  Vector<short> codes;
  bool hasFlags = false, hasCodes = false;
  WString name;
};
static_assert(sizeof(Chromatogram) == 136);

/// CZRAbsorbanceSpectrum.
struct AbsorbanceSpectrum {
  Vector<double> wavelengths, absorbances;
  double startTime = 0, endTime = 0;
  int firstScan = 0, lastScan = 0;
};
static_assert(sizeof(AbsorbanceSpectrum) == 72);

/// CDataServerImpl: 51 slots.
class DataServer {
 public:
  virtual ~DataServer() = 0;
  virtual WString GetProviderName() = 0;
  virtual WString GetProviderGuid() = 0;
  virtual bool Open(const WString& path) = 0;
  virtual bool Close() = 0;
  virtual bool ValidateSource(const WString& path) = 0;
  virtual bool CanOpen(const WString& path) = 0;
  virtual int GetSampleCount() = 0;
  virtual int GetFileSampleCount(const WString& path) = 0;
  virtual WString GetSampleName(int sample) = 0;
  virtual int GetFunctionCount(int sample) = 0;
  virtual WString GetFunctionName(int sample, int function) = 0;
  virtual int GetFunctionKind(int sample, int function) = 0;
  virtual int GetMSMSScanType(int sample, int function) = 0;
  virtual int GetPolarity(int sample, int function) = 0;
  virtual int GetMSLevel(int sample, int function) = 0;
  virtual int GetDimensionCount(int sample, int function) = 0;
  virtual bool IsCentroided(int sample, int function) = 0;
  virtual bool HasMobility(int sample, int function) = 0;
  virtual int GetScanDimensionCount(int sample, int function) = 0;
  virtual int GetScanCount(int sample, int function) = 0;
  virtual int GetMobilityBinCount(int sample, int function) = 0;
  virtual bool GetBasePeakChromatogram(bool compute, int sample, int function,
                                       Chromatogram& chromatogram) = 0;
  virtual bool GetMassRangeBasePeakChromatogram(double low, double high, bool compute, int sample,
                                                int function, Chromatogram& chromatogram) = 0;
  virtual bool GetTotalIonChromatogram(bool compute, int sample, int function,
                                       Chromatogram& chromatogram) = 0;
  virtual bool GetMassRangeChromatogram(double low, double high, bool compute, int sample, int function,
                                        Chromatogram& chromatogram) = 0;
  virtual bool GetRetentionTimes(int sample, int function, Vector<double>& times) = 0;
  virtual bool GetScanRetentionTime(int sample, int function, int scan, double& minutes) = 0;
  virtual bool GetFunctionMassRange(int sample, int function, double& low, double& high) = 0;
  virtual bool GetScanMassRange(int sample, int function, int scan, double& low, double& high) = 0;
  virtual bool GetScanMobilityRange(int sample, int function, int scan, double& low, double& high) = 0;
  virtual bool GetScanIntensityRange(int sample, int function, int scan, double& min, double& max) = 0;
  virtual bool GetMobilityAxis(int sample, int function, int scan, Vector<double>& axis) = 0;
  virtual bool GetSpectrum(int sample, int function, int scan, MassSpectrum& spectrum) = 0;
  virtual bool GetMobilitySpectrum(int sample, int function, int scan, int bin, MassSpectrum& spectrum) = 0;
  virtual bool GetMobilitySpectra(int sample, int function, int scan, int firstBin, int lastBin,
                                  Vector<MassSpectrum>& spectra) = 0;
  virtual int GetTraceCount(int sample) = 0;
  virtual WString GetTraceName(int sample, int trace) = 0;
  virtual bool GetTrace(int sample, int trace, Chromatogram& chromatogram) = 0;
  virtual int GetFunctionTraceCount(int sample, int function) = 0;
  virtual WString GetFunctionTraceName(int sample, int function, int trace) = 0;
  virtual bool GetFunctionTrace(int sample, int function, int trace, Chromatogram& chromatogram) = 0;
  virtual bool HasAbsorbanceData(int sample) = 0;
  virtual int GetAbsorbanceScanCount(int sample) = 0;
  virtual bool GetAbsorbanceSpectrum(int sample, int scan, AbsorbanceSpectrum& spectrum) = 0;
  virtual bool GetMetadataValue(int sample, int function, const WString& key, WString& value) = 0;
  virtual bool GetMetadataKeys(int sample, int function, Vector<WString>& keys) = 0;
  virtual WString GetFileFilter() = 0;
  virtual bool OpenFileInSet(const WString& path, const WString& file) = 0;
  virtual bool IsReportSource() = 0;
  virtual bool FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                                 int& precursorScan) = 0;
};

}  // namespace microsoft_host
