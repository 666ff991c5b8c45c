// The functions of the C library in any order, at any position, with any room, also on a source that is
// closed or was never opened: what is in the files, the number of bytes of calls, these, then a directory or
// a report.
#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/check.h"
#include "fuzz/packed_directory.h"
#include "zrml/zrml.h"

namespace zrml::fuzz {
namespace {

constexpr double kUntouched = -123.5;
constexpr std::size_t kMostRoom = 1u << 14;

// Room for so many values, with one behind that nobody may touch.
class Room {
 public:
  explicit Room(std::size_t room) : values_(room + 1, kUntouched) {}
  ~Room() { Check(values_.back() == kUntouched, "nothing is written behind an array"); }
  Room(const Room&) = delete;
  Room& operator=(const Room&) = delete;

  double* Get() { return values_.size() > 1 ? values_.data() : nullptr; }
  std::size_t Size() const { return values_.size() - 1; }

 private:
  std::vector<double> values_;
};

// A record with room behind it, of any size.
template <class Record>
struct Sized {
  Record record = {};
  std::array<unsigned char, 16> behind = {};
};

int EndEarly(void*, std::size_t done, std::size_t all) {
  Check(done < all, "no more steps are done than there are");
  return done >= 128 ? 1 : 0;
}

class Caller {
 public:
  explicit Caller(Input input) : input_(input) { Open(); }
  ~Caller() { zrml_close(source_); }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  void Run() {
    constexpr int kMostCalls = 96;
    for (int i = 0; i < kMostCalls && !input_.IsEmpty(); ++i) {
      const auto call = input_.Value<std::uint8_t>() % std::size(kCalls);
      (this->*kCalls[call])();
    }
  }

 private:
  void Open() {
    constexpr const char* kPaths[] = {"/run.raw", "/run.raw/report.rpt", "/run.raw/_FUNC002.DAT", "/nothing",
                                      ""};
    zrml_close(source_);
    const zrml_status status = zrml_open(kPaths[input_.Value<std::uint8_t>() % std::size(kPaths)], &source_);
    Check((status == ZRML_OK) == (source_ != nullptr), "a source is there when it was opened");
    if (status != ZRML_OK) CheckLine(zrml_open_message());
    zrml_set_progress(source_, EndEarly, nullptr);
  }

  void Close() {
    zrml_close(source_);
    source_ = nullptr;
  }

  static void CheckLine(std::string_view text) {
    Check(!text.empty(), "a failure has a reason");
    Check(std::none_of(text.begin(), text.end(), [](char c) { return c >= 0 && c < ' '; }), "in one line");
  }

  // Whether a call has done what it was asked.
  bool IsDone(zrml_status status) {
    constexpr zrml_status kKnown[] = {ZRML_OK, ZRML_WRONG_ARGUMENT, ZRML_UNREADABLE, ZRML_DAMAGED,
                                      ZRML_CANCELLED};
    Check(std::find(std::begin(kKnown), std::end(kKnown), status) != std::end(kKnown),
          "a status is a known one");
    Check(source_ != nullptr || status == ZRML_WRONG_ARGUMENT, "without a source nothing is done");
    if (status != ZRML_OK) CheckLine(zrml_message(source_));
    return status == ZRML_OK;
  }

  // Mostly one that there may be.
  int Position() {
    constexpr int kImpossible[] = {-1, INT_MIN, INT_MAX};
    const unsigned byte = input_.Value<std::uint8_t>();
    return byte >= 0xFD ? kImpossible[byte - 0xFD] : static_cast<int>(byte % 8);
  }
  int Sample() {
    const unsigned byte = input_.Value<std::uint8_t>();
    return byte < 0xE0 ? 0 : static_cast<int>(byte % 8) - 1;
  }

  // Of `enough` values: as many, a few less, or none at all.
  std::size_t RoomFor(std::size_t enough) {
    const unsigned byte = input_.Value<std::uint8_t>();
    const std::size_t less = byte < 0xC0 ? 0 : byte % 16;
    return byte == 0xFF ? 0 : std::min(enough - std::min(enough, less), kMostRoom);
  }

  template <class Record, class Get>
  void GetRecord(Get get) {
    Sized<Record> sized;
    const unsigned byte = input_.Value<std::uint8_t>();
    const std::size_t shift = byte < 0xC0 ? 0 : byte % 16;
    sized.record.size = byte >= 0xF0 ? sizeof(Record) - 1 - shift : sizeof(Record) + shift;
    sized.behind.fill(0x55);
    const bool isDone = IsDone(get(&sized.record));
    const std::size_t zeros =
        isDone && sized.record.size > sizeof(Record) ? sized.record.size - sizeof(Record) : 0;
    for (std::size_t i = 0; i < sized.behind.size(); ++i)
      Check(sized.behind[i] == (i < zeros ? 0 : 0x55), "a record is written as far as its size says");
    if (isDone) CheckTexts(sized.record);
  }

  static void CheckTexts(const zrml_sample& record) { Check(*record.name != '\0', "a sample has a name"); }
  static void CheckTexts(const zrml_function& record) {
    Check(*record.id != '\0' && *record.name != '\0' && *record.kind_name != '\0', "a function has names");
    Check(record.file != nullptr && record.scan_type_name != nullptr && record.polarity_name != nullptr,
          "texts are there");
  }
  static void CheckTexts(const zrml_scan& record) { Check(record.number >= 1, "scans are numbered from 1"); }
  static void CheckTexts(const zrml_trace& record) { Check(record.name != nullptr, "texts are there"); }
  static void CheckTexts(const zrml_metadata& record) { Check(*record.key != '\0', "an item has a key"); }
  static void CheckTexts(const zrml_finding& record) {
    Check(*record.code != '\0' && *record.severity != '\0' && *record.message != '\0', "a finding has texts");
    Check(record.file != nullptr && record.function != nullptr, "texts are there");
  }

  template <class Call>
  int Count(Call call) {
    int count = INT_MIN;
    if (!IsDone(call(&count))) return 0;
    Check(count >= -1, "a count is no negative number but -1");
    return std::max(count, 0);
  }

  int Scans(int sample, int function) {
    return Count([&](int* count) { return zrml_scan_count(source_, sample, function, count); });
  }

  void Counts() {
    const int sample = Sample();
    const int function = Position();
    Count([&](int* count) { return zrml_sample_count(source_, count); });
    Count([&](int* count) { return zrml_function_count(source_, sample, count); });
    Count([&](int* count) { return zrml_trace_count(source_, sample, function, count); });
    Count([&](int* count) { return zrml_absorbance_count(source_, sample, count); });
    Count([&](int* count) { return zrml_drift_bin_count(source_, sample, function, count); });
    Count([&](int* count) { return zrml_metadata_count(source_, sample, function, count); });
  }

  void Samples() {
    const int sample = Sample();
    GetRecord<zrml_sample>([&](zrml_sample* to) { return zrml_get_sample(source_, sample, to); });
  }
  void Functions() {
    const int sample = Sample();
    const int function = Position();
    GetRecord<zrml_function>(
        [&](zrml_function* to) { return zrml_get_function(source_, sample, function, to); });
    GetRecord<zrml_function>(
        [&](zrml_function* to) { return zrml_get_absorbance_function(source_, sample, to); });
  }
  void Text() {
    const int sample = Sample();
    const char* text = nullptr;
    std::size_t length = 1;
    if (IsDone(zrml_function_text(source_, sample, Position(), &text, &length)))
      Check(text != nullptr ? text[length] == '\0' : length == 0, "a text ends where its length says");
  }
  void Scan() {
    const int sample = Sample();
    const int function = Position();
    const int scan = Position();
    GetRecord<zrml_scan>([&](zrml_scan* to) { return zrml_get_scan(source_, sample, function, scan, to); });
  }
  void Traces() {
    const int sample = Sample();
    const int function = OrSample(Position());
    const int trace = Position();
    GetRecord<zrml_trace>(
        [&](zrml_trace* to) { return zrml_get_trace(source_, sample, function, trace, to); });
  }
  void Metadata() {
    const int sample = Sample();
    const int function = OrSample(Position());
    const int item = Position();
    GetRecord<zrml_metadata>(
        [&](zrml_metadata* to) { return zrml_get_metadata(source_, sample, function, item, to); });
  }
  void Findings() {
    Count([&](int* count) { return zrml_finding_count(source_, count); });
    const int finding = Position();
    GetRecord<zrml_finding>([&](zrml_finding* to) { return zrml_get_finding(source_, finding, to); });
  }

  void Points() {
    const int sample = Sample();
    const int function = Position();
    const int scan = Position();
    zrml_scan record = {};
    record.size = sizeof record;
    if (!IsDone(zrml_get_scan(source_, sample, function, scan, &record))) return;
    Room mz(RoomFor(record.points));
    Room intensities(mz.Size());
    std::size_t count = 0;
    std::size_t lost = 0;
    const zrml_status status = zrml_read_points(source_, sample, function, scan, mz.Get(), intensities.Get(),
                                                mz.Size(), &count, &lost);
    Check(status != ZRML_WRONG_ARGUMENT || mz.Size() < record.points, "there was room enough");
    if (!IsDone(status)) return;
    Check(count <= mz.Size(), "no more points than there is room for");
    Check(std::is_sorted(mz.Get(), mz.Get() + count), "points ascend in m/z");
    FindCentroids(mz.Get(), intensities.Get(), count);
  }

  // Of a profile in which each byte is a point: a step and an intensity, or something that is neither.
  void Centroids() {
    constexpr double kHostile[] = {NAN, INFINITY, -INFINITY, -1, 0, 5e-324, 1e-100, 1e100, 1e308};
    std::vector<double> mz(input_.Value<std::uint8_t>() % 128);
    std::vector<double> intensities(mz.size());
    double at = input_.Bool() ? 100 : 0;
    for (std::size_t i = 0; i < mz.size(); ++i) {
      const unsigned byte = input_.Value<std::uint8_t>();
      mz[i] = at += byte % 16 == 15 ? 1 : 1.0 / 64;
      intensities[i] = byte >> 4;
      const double other = kHostile[byte % std::size(kHostile)];
      if (byte >= 0xF0) (byte % 2 == 0 ? mz : intensities)[i] = other;
    }
    FindCentroids(mz.data(), intensities.data(), mz.size());
  }

  void FindCentroids(const double* mz, const double* intensities, std::size_t points) {
    Sized<zrml_centroid_options> options;
    const unsigned byte = input_.Value<std::uint8_t>();
    options.record.size = sizeof options.record - (byte == 0xFF ? 1 : 0);
    options.record.is_area = byte % 2;
    options.record.min_signal_to_noise = byte < 0x80 ? 0 : input_.Value<float>();
    Room places(RoomFor(points));
    Room sizes(places.Size());
    std::size_t count = SIZE_MAX;
    const zrml_status status =
        zrml_find_centroids(mz, intensities, points, byte % 4 == 0 ? nullptr : &options.record, places.Get(),
                            sizes.Get(), places.Size(), &count);
    Check(status == ZRML_OK || status == ZRML_WRONG_ARGUMENT, "centroids need nothing but arguments");
    if (status != ZRML_OK) return;
    Check(count <= points && count <= places.Size(),
          "no more peaks than samples, nor than there is room for");
    for (std::size_t i = 0; i < count; ++i) {
      Check(places.Get()[i] >= 0 && places.Get()[i] <= 1e100, "a peak has a place");
      Check(sizes.Get()[i] > 0 && std::isfinite(sizes.Get()[i]), "a peak has a height");
    }
  }

  void PointsOfScans() {
    const int sample = Sample();
    const int function = Position();
    const int first = Position();
    const int scans = first < INT_MAX - 8 ? input_.Value<std::uint8_t>() % 9 - 1 : 2;
    Room mz(input_.Value<std::uint16_t>() % kMostRoom);
    Room intensities(mz.Size());
    std::array<std::size_t, 9> ends;
    ends.fill(SIZE_MAX);
    int count = -1;
    if (!IsDone(zrml_read_points_of_scans(source_, sample, function, first, scans, mz.Get(),
                                          intensities.Get(), mz.Size(), ends.data(), nullptr, &count)))
      return;
    Check(count >= (scans > 0 ? 1 : 0) && count <= scans, "the first scan is read, and no more than wanted");
    std::size_t begin = 0;
    for (int i = 0; i < count; begin = ends[static_cast<std::size_t>(i++)]) {
      const std::size_t end = ends[static_cast<std::size_t>(i)];
      Check(begin <= end && end <= mz.Size(), "scans follow each other in the room");
      Check(std::is_sorted(mz.Get() + begin, mz.Get() + end), "points ascend in m/z");
    }
    Check(ends[static_cast<std::size_t>(count)] == SIZE_MAX, "scans that were not read have no end");
  }

  void Precursor() {
    int position[2] = {INT_MIN, INT_MIN};
    const int sample = Sample();
    const int function = Position();
    if (IsDone(zrml_find_precursor(source_, sample, function, Position(), position, position + 1)))
      Check((position[0] == -1) == (position[1] == -1), "a precursor has both positions");
  }

  void Table() {
    const int sample = Sample();
    const int function = Position();
    const int scans = Scans(sample, function);
    const int first = Position();
    const int count = static_cast<int>(RoomFor(static_cast<std::size_t>(scans)));
    Room minutes(static_cast<std::size_t>(count));
    Room peaks(static_cast<std::size_t>(count));
    std::vector<std::uint32_t> points(static_cast<std::size_t>(count));
    zrml_scan_table table = {};
    table.size = sizeof table;
    table.minutes = minutes.Get();
    table.base_peak_intensity = peaks.Get();
    table.points = points.data();
    table.reads_points = input_.Bool() ? 1 : 0;
    IsDone(zrml_read_scan_table(source_, sample, function, first, count, &table));
  }

  void Series() {
    constexpr zrml_status (*kSeries[])(zrml_source*, int, int, double*, std::size_t) = {
        zrml_read_minutes, zrml_read_total_ions, zrml_read_base_peaks};
    const int sample = Sample();
    const int function = Position();
    Room values(RoomFor(static_cast<std::size_t>(Scans(sample, function))));
    IsDone(kSeries[input_.Value<std::uint8_t>() % 3](source_, sample, function, values.Get(), values.Size()));
  }

  void Ranges() {
    const int sample = Sample();
    const int function = Position();
    zrml_range ranges[4];
    for (zrml_range& range : ranges) range = {input_.Value<float>(), input_.Value<float>()};
    const std::size_t count = input_.Value<std::uint8_t>() % 5;
    Room values(RoomFor(count * static_cast<std::size_t>(Scans(sample, function))));
    IsDone(zrml_read_mass_ranges(source_, sample, function, ranges, count, input_.Value<std::uint8_t>() % 3,
                                 values.Get(), values.Size()));
  }

  // Asks for the length, and then with that room or less, perhaps after another call in between.
  template <class Read>
  void ReadArrays(Read read) {
    std::size_t count = 0;
    if (!IsDone(read(nullptr, nullptr, std::size_t{0}, &count))) return;
    if (input_.Bool()) Findings();
    Room x(RoomFor(count));
    Room y(x.Size());
    std::size_t again = 0;
    if (IsDone(read(x.Get(), y.Get(), x.Size(), &again)))
      Check(again == count && (x.Size() == 0 || count <= x.Size()), "the length is the same both times");
  }

  // Sums of hostile profiles are long lists: one is enough.
  void Sum() {
    if (std::exchange(hasSum_, true)) return;
    const int sample = Sample();
    const int function = Position();
    const int first = Position();
    const int end = first < INT_MAX - 3 ? first + input_.Value<std::uint8_t>() % 4 : first;
    const double width = input_.Bool() ? 0 : input_.Value<float>();
    const int isPpm = input_.Bool() ? 1 : 0;
    if (input_.Bool()) return SumOfScans(sample, function, {first, end, Position()}, width, isPpm);
    ReadArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_sum(source_, sample, function, first, end, width, isPpm, x, y, room, count);
    });
  }

  void SumOfScans(int sample, int function, const std::array<int, 3>& scans, double width, int isPpm) {
    zrml_sum_options options = {};
    options.size = sizeof options;
    options.width = width;
    options.is_ppm = isPpm;
    options.is_mean = input_.Bool() ? 1 : 0;
    const int background = Position();
    options.background = &background;
    options.background_count = input_.Bool() ? 1 : 0;
    zrml_sum sum = {};
    sum.size = sizeof sum;
    ReadArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_sum_of_scans(source_, sample, function, scans.data(), scans.size(), &options, x, y,
                                    room, count, &sum);
    });
    Check(sum.added + sum.left_out <= 3 && sum.background_added + sum.background_left_out <= 1,
          "no more scans are counted than were named");
  }

  void DriftBin() {
    const int sample = Sample();
    const int function = Position();
    const int scan = Position();
    const int bin = Position();
    Room x(64);
    Room y(64);
    std::size_t count = 0;
    // What the mobility library answers may change from question to question.
    IsDone(zrml_read_drift_bin(source_, sample, function, scan, bin, x.Get(), y.Get(), 64, &count));
  }

  // A position less one, where -1 is the sample itself.
  static int OrSample(int position) { return position == INT_MIN ? position : position - 1; }

  void Trace() {
    const int sample = Sample();
    const int function = OrSample(Position());
    const int trace = Position();
    ReadArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_trace(source_, sample, function, trace, x, y, room, count);
    });
  }

  void Absorbance() {
    const int sample = Sample();
    const int scan = Position();
    ReadArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_absorbance(source_, sample, scan, x, y, room, count, nullptr);
    });
  }

  void AbsorbanceMatrix() {
    const int sample = Sample();
    const int scans = Count([&](int* count) { return zrml_absorbance_count(source_, sample, count); });
    const std::size_t columns = input_.Value<std::uint8_t>() % 64;
    Room minutes(static_cast<std::size_t>(scans));
    Room wavelengths(columns);
    Room values(columns * static_cast<std::size_t>(scans));
    int isMatrix = 0;
    IsDone(zrml_read_absorbance_minutes(source_, sample, minutes.Get(), minutes.Size()));
    IsDone(zrml_read_absorbance_matrix(source_, sample, columns, wavelengths.Get(), values.Get(), &isMatrix));
  }

  static constexpr void (Caller::*kCalls[])() = {
      &Caller::Open,          &Caller::Close,      &Caller::Counts,
      &Caller::Samples,       &Caller::Functions,  &Caller::Text,
      &Caller::Scan,          &Caller::Traces,     &Caller::Metadata,
      &Caller::Findings,      &Caller::Points,     &Caller::Points,
      &Caller::Precursor,     &Caller::Table,      &Caller::Series,
      &Caller::Ranges,        &Caller::Sum,        &Caller::DriftBin,
      &Caller::Trace,         &Caller::Absorbance, &Caller::AbsorbanceMatrix,
      &Caller::PointsOfScans, &Caller::Centroids,
  };

  Input input_;
  zrml_source* source_ = nullptr;
  bool hasSum_ = false;
};

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  fuzz::Input input(data, size);
  const bool isReport = input.Bool();
  const fuzz::Input calls(input.Take(input.Value<std::uint8_t>()));
  if (isReport) {
    const Bytes bytes = input.TakeRest();
    fuzz::SetFiles({{L"report.rpt", {bytes.begin(), bytes.end()}}});
  } else {
    fuzz::Files files = fuzz::UnpackDirectory(input);
    fuzz::CutPointCounts(files);
    fuzz::SetFiles(std::move(files));
  }
  fuzz::Caller(calls).Run();
  fuzz::Check(fuzz::OpenFileCount() == 0, "no file outlives its source");
  return 0;
}
