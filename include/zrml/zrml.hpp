// zrml for C++17 and later: values with destructors, views of text, vectors of numbers, iterators and
// exceptions over the functions of zrml.h, which says what each of them gives.
//
// A Source closes its files when it ends. Whatever comes from it (samples, functions, scans, traces, texts)
// refers to it and is used while it is open, by one thread at a time; moving a Source does not disturb them.
// Vectors are the caller's own. Positions count from 0. An absent number is NaN, an absent text is empty.
#ifndef ZRML_ZRML_HPP
#define ZRML_ZRML_HPP

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <zrml/zrml.h>

namespace zrml {
inline namespace v1 {

/// The failure of a call. Without memory std::bad_alloc is thrown instead.
class Error : public std::runtime_error {
 public:
  Error(zrml_status status, const char* message) : std::runtime_error(message), status_(status) {}
  zrml_status status() const noexcept { return status_; }

 private:
  zrml_status status_;
};

namespace detail {

[[noreturn]] inline void Throw(zrml_status status, const char* message) {
  if (status == ZRML_NO_MEMORY) throw std::bad_alloc();
  throw Error(status, message);
}

/// An open source, at one address as long as it is open.
class Handle {
 public:
  explicit Handle(const char* path) {
    const zrml_status status = zrml_open(path, &source_);
    if (status != ZRML_OK) Throw(status, zrml_open_message());
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { zrml_close(source_); }

  zrml_source* get() const noexcept { return source_; }

  void Check(zrml_status status) const {
    if (status == ZRML_OK) return;
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    Throw(status, zrml_message(source_));
  }

  void SetProgress(std::function<bool(std::size_t, std::size_t)> progress) {
    progress_ = std::move(progress);
    Check(zrml_set_progress(source_, progress_ ? &Handle::Progress : nullptr, this));
  }

 private:
  static int Progress(void* context, std::size_t done, std::size_t all) noexcept {
    auto& self = *static_cast<Handle*>(context);
    try {
      return self.progress_(done, all) ? 0 : 1;
    } catch (...) {
      self.thrown_ = std::current_exception();
      return 1;
    }
  }

  zrml_source* source_ = nullptr;
  std::function<bool(std::size_t, std::size_t)> progress_;
  mutable std::exception_ptr thrown_;  // by the progress function
};

/// Where something is: a sample, or a function of one.
struct Place {
  const Handle* handle = nullptr;
  int sample = 0;
  int function = ZRML_OF_SAMPLE;
};

/// The record that a call of the library fills.
template <class Record, class Get>
Record Filled(const Handle& handle, Get get) {
  Record record = {};
  record.size = sizeof record;
  handle.Check(get(handle.get(), &record));
  return record;
}

template <class Get>
int Count(const Handle& handle, Get get) {
  int count = 0;
  handle.Check(get(handle.get(), &count));
  return count;
}

}  // namespace detail

/// Items that are made on request: by position, or one after the other.
template <class Item>
class Sequence {
 public:
  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Item;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Item;

    iterator() = default;
    iterator(const detail::Place& place, int position) : place_(place), position_(position) {}
    Item operator*() const { return Item(place_, position_); }
    iterator& operator++() {
      ++position_;
      return *this;
    }
    iterator operator++(int) {
      iterator before = *this;
      ++position_;
      return before;
    }
    bool operator==(const iterator& other) const { return position_ == other.position_; }
    bool operator!=(const iterator& other) const { return position_ != other.position_; }

   private:
    detail::Place place_;
    int position_ = 0;
  };

  Sequence() = default;
  Sequence(const detail::Place& place, int size) : place_(place), size_(size) {}

  int size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  /// Throws Error (ZRML_WRONG_ARGUMENT) when there is nothing at that position.
  Item operator[](int position) const { return Item(place_, position); }
  iterator begin() const { return {place_, 0}; }
  iterator end() const { return {place_, size_}; }

 private:
  detail::Place place_;
  int size_ = 0;
};

struct Spectrum {
  std::vector<double> mz;
  std::vector<double> intensity;
};

/// The points of several scans, one behind the other: those of the i-th end before `ends[i]` and begin where
/// those of the one before it end, the first ones at 0.
struct PointsOfScans {
  std::vector<double> mz;
  std::vector<double> intensity;
  std::vector<std::size_t> ends;
  std::vector<std::size_t> lost;  ///< of each scan
};

/// Of a sum of scans; the members are those of zrml_sum_options.
struct SumOptions {
  double width = 0;
  bool is_ppm = false;
  bool is_mean = false;
  std::vector<int> background = {};
};

/// The scans added up, and how many they are; the members are those of zrml_sum.
struct Sum : Spectrum {
  bool is_centroided = false;
  int added = 0;
  int left_out = 0;
  int background_added = 0;
  int background_left_out = 0;
  std::size_t lost = 0;
};

struct Chromatogram {
  std::vector<double> minutes;
  std::vector<double> intensity;
};

struct AbsorbanceSpectrum {
  std::vector<double> wavelengths;
  std::vector<double> values;
};

struct MetadataItem {
  std::string_view key;
  std::optional<std::string_view> value;
};

/// One entry a scan; `base_peak_*` are NaN where only the points tell.
struct ScanTable {
  std::vector<std::int32_t> number;
  std::vector<double> minutes;
  std::vector<std::uint32_t> points;
  std::vector<double> total_intensity;
  std::vector<double> base_peak_mz;
  std::vector<double> base_peak_intensity;
  std::vector<double> precursor_mz;
  std::vector<double> scan_value;
};

namespace detail {

/// Two arrays whose length shows only when they are read: `read` is called without room, then with it.
template <class Read>
void ReadTwice(const Handle& handle, std::vector<double>& x, std::vector<double>& y, Read read) {
  std::size_t count = 0;
  handle.Check(read(nullptr, nullptr, 0, &count));
  x.resize(count);
  y.resize(count);
  if (count > 0) handle.Check(read(x.data(), y.data(), count, &count));
}

inline std::vector<MetadataItem> Metadata(const Place& place) {
  const int count = Count(*place.handle, [&](zrml_source* source, int* to) {
    return zrml_metadata_count(source, place.sample, place.function, to);
  });
  std::vector<MetadataItem> items;
  for (int i = 0; i < count; ++i) {
    const auto item = Filled<zrml_metadata>(*place.handle, [&](zrml_source* source, zrml_metadata* to) {
      return zrml_get_metadata(source, place.sample, place.function, i, to);
    });
    items.push_back({item.key, item.value ? std::optional<std::string_view>(item.value) : std::nullopt});
  }
  return items;
}

}  // namespace detail

/// A trace of a sample, or of a function of a report.
class Trace {
 public:
  Trace(const detail::Place& place, int position)
      : place_(place),
        position_(position),
        record_(detail::Filled<zrml_trace>(*place.handle, [&](zrml_source* source, zrml_trace* to) {
          return zrml_get_trace(source, place.sample, place.function, position, to);
        })) {}

  int number() const { return record_.number; }
  std::string_view name() const { return record_.name; }
  /// Its points; the times in `minutes` are as stored; no file has their unit.
  Chromatogram read() const {
    Chromatogram read;
    detail::ReadTwice(*place_.handle, read.minutes, read.intensity,
                      [&](double* x, double* y, std::size_t room, std::size_t* count) {
                        return zrml_read_trace(place_.handle->get(), place_.sample, place_.function,
                                               position_, x, y, room, count);
                      });
    return read;
  }

 private:
  detail::Place place_;
  int position_;
  zrml_trace record_;
};

namespace detail {

inline Sequence<Trace> TracesOf(const detail::Place& place) {
  return {place, detail::Count(*place.handle, [&](zrml_source* source, int* to) {
            return zrml_trace_count(source, place.sample, place.function, to);
          })};
}

}  // namespace detail

/// The peaks of a profile: of a scan, drift bin or sum of scans that are not centroided. They are not the
/// instrument's own centroids.
inline Spectrum Centroids(const Spectrum& profile, bool are_areas = false, double min_signal_to_noise = 0) {
  zrml_centroid_options options = {};
  options.size = sizeof options;
  options.is_area = are_areas ? 1 : 0;
  options.min_signal_to_noise = min_signal_to_noise;
  const std::size_t points = profile.mz.size();
  if (profile.intensity.size() != points)
    detail::Throw(ZRML_WRONG_ARGUMENT, "the arrays are not as long as each other");
  Spectrum found = {std::vector<double>(points), std::vector<double>(points)};
  std::size_t count = 0;
  const zrml_status status =
      zrml_find_centroids(profile.mz.data(), profile.intensity.data(), points, &options, found.mz.data(),
                          found.intensity.data(), points, &count);
  if (status != ZRML_OK) detail::Throw(status, "a signal to noise is not negative");
  found.mz.resize(count);
  found.intensity.resize(count);
  return found;
}

/// A scan. Its points are read on first request, and kept.
class Scan {
 public:
  Scan(const detail::Place& place, int position)
      : place_(place),
        position_(position),
        record_(detail::Filled<zrml_scan>(*place.handle, [&](zrml_source* source, zrml_scan* to) {
          return zrml_get_scan(source, place.sample, place.function, position, to);
        })) {}

  int number() const { return record_.number; }
  /// Also where it is not known (zrml_scan.is_centroided): such points are taken as they are.
  bool is_centroided() const { return record_.is_centroided != 0; }
  double minutes() const { return record_.minutes; }
  double end_minutes() const { return record_.end_minutes; }
  double total_intensity() const { return record_.total_intensity; }
  double base_peak_intensity() const { return record_.base_peak_intensity; }
  double precursor_mz() const { return record_.precursor_mz; }
  double scan_value() const { return record_.scan_value; }

  const std::vector<double>& mz() const& { return Points().mz; }
  const std::vector<double>& intensity() const& { return Points().intensity; }
  std::vector<double> mz() && { return std::move(Points().mz); }
  std::vector<double> intensity() && { return std::move(Points().intensity); }
  /// How many points the index declares that the file does not hold.
  std::size_t lost() const {
    Points();
    return lost_;
  }

  /// Its points: m/z and intensity.
  Spectrum points() const { return Points(); }

  Spectrum drift_bin(int bin) const {
    Spectrum read;
    detail::ReadTwice(*place_.handle, read.mz, read.intensity,
                      [&](double* x, double* y, std::size_t room, std::size_t* count) {
                        return zrml_read_drift_bin(place_.handle->get(), place_.sample, place_.function,
                                                   position_, bin, x, y, room, count);
                      });
    return read;
  }

 private:
  Spectrum& Points() const {
    if (points_) return *points_;
    Spectrum read = {std::vector<double>(record_.points), std::vector<double>(record_.points)};
    std::size_t count = 0;
    place_.handle->Check(zrml_read_points(place_.handle->get(), place_.sample, place_.function, position_,
                                          read.mz.data(), read.intensity.data(), record_.points, &count,
                                          &lost_));
    read.mz.resize(count);
    read.intensity.resize(count);
    return points_.emplace(std::move(read));
  }

  detail::Place place_;
  int position_;
  zrml_scan record_;
  mutable std::optional<Spectrum> points_;
  mutable std::size_t lost_ = 0;
};

class Function {
 public:
  Function(const detail::Place& place, int position)
      : place_{place.handle, place.sample, position},
        record_(detail::Filled<zrml_function>(*place.handle, [&](zrml_source* source, zrml_function* to) {
          return zrml_get_function(source, place.sample, position, to);
        })) {}

  int number() const { return record_.number; }
  int process() const { return record_.process; }  ///< 0 of acquired data
  int repeat() const { return record_.repeat; }
  std::string_view id() const { return record_.id; }
  std::string_view file() const { return record_.file; }
  std::string_view name() const { return record_.name; }
  zrml_kind kind() const { return record_.kind; }
  zrml_monitoring monitoring() const { return record_.monitoring; }
  zrml_scan_type scan_type() const { return record_.scan_type; }
  zrml_polarity polarity() const { return record_.polarity; }
  std::string_view kind_name() const { return record_.kind_name; }
  std::string_view scan_type_name() const { return record_.scan_type_name; }
  std::string_view polarity_name() const { return record_.polarity_name; }
  int ms_level() const { return record_.ms_level; }
  bool is_lock_mass() const { return record_.is_lock_mass != 0; }
  bool has_mobility() const { return record_.has_mobility != 0; }
  zrml_range mass_range() const { return {record_.mass_low, record_.mass_high}; }

  Sequence<Scan> scans() const { return {place_, size()}; }
  int size() const { return CountOf(&zrml_scan_count); }
  Scan operator[](int scan) const { return Scan(place_, scan); }
  int drift_bins() const { return CountOf(&zrml_drift_bin_count); }
  Sequence<Trace> traces() const { return detail::TracesOf(place_); }
  /// The sample's items with the values of the function.
  std::vector<MetadataItem> metadata() const { return detail::Metadata(place_); }

  std::vector<double> minutes() const { return Series(&zrml_read_minutes); }
  /// Total ions, and the largest intensity of each scan.
  Chromatogram tic() const { return {minutes(), Series(&zrml_read_total_ions)}; }
  Chromatogram bpc() const { return {minutes(), Series(&zrml_read_base_peaks)}; }

  /// One chromatogram for each range of m/z, all in one pass over the scans.
  std::vector<Chromatogram> ranges(const std::vector<zrml_range>& wanted,
                                   zrml_within within = ZRML_SUM) const {
    const std::vector<double> times = minutes();
    std::vector<double> values(times.size() * wanted.size());
    Check(zrml_read_mass_ranges(source(), place_.sample, place_.function, wanted.data(), wanted.size(),
                                within, values.data(), values.size()));
    std::vector<Chromatogram> read;
    auto row = values.begin();
    const auto scans = static_cast<std::ptrdiff_t>(times.size());
    for (std::size_t i = 0; i < wanted.size(); ++i, row += scans) read.push_back({times, {row, row + scans}});
    return read;
  }
  Chromatogram range(double low, double high, zrml_within within = ZRML_SUM) const {
    return std::move(ranges({{low, high}}, within).front());
  }

  /// The scans from position `first` up to, not including, `end`, added up.
  Spectrum sum(int first, int end, double width = 0, bool is_ppm = false) const {
    Spectrum read;
    detail::ReadTwice(*place_.handle, read.mz, read.intensity,
                      [&](double* x, double* y, std::size_t room, std::size_t* count) {
                        return zrml_read_sum(source(), place_.sample, place_.function, first, end, width,
                                             is_ppm ? 1 : 0, x, y, room, count);
                      });
    return read;
  }

  /// The scans at these positions, each once and in the order of the function, added up.
  Sum sum(const std::vector<int>& scans, const SumOptions& options = {}) const {
    zrml_sum_options wanted = {};
    wanted.size = sizeof wanted;
    wanted.width = options.width;
    wanted.is_ppm = options.is_ppm ? 1 : 0;
    wanted.is_mean = options.is_mean ? 1 : 0;
    wanted.background = options.background.data();
    wanted.background_count = options.background.size();
    zrml_sum record = {};
    record.size = sizeof record;
    Sum read;
    detail::ReadTwice(*place_.handle, read.mz, read.intensity,
                      [&](double* x, double* y, std::size_t room, std::size_t* count) {
                        return zrml_read_sum_of_scans(source(), place_.sample, place_.function, scans.data(),
                                                      scans.size(), &wanted, x, y, room, count, &record);
                      });
    read.is_centroided = record.is_centroided != 0;
    read.added = record.added;
    read.left_out = record.left_out;
    read.background_added = record.background_added;
    read.background_left_out = record.background_left_out;
    read.lost = record.lost;
    return read;
  }

  /// The points of `count` scans from position `first` on, in one call, for loops over small ones. Ends early
  /// before a scan that cannot be read, unless that is the first one: `ends` has as many as were read.
  PointsOfScans points(int first, int count) const {
    zrml_scan_table table = {};
    table.size = sizeof table;
    const auto readTable = [&] {
      Check(zrml_read_scan_table(source(), place_.sample, place_.function, first, count, &table));
    };
    readTable();  // without arrays: throws for scans that are not there
    std::vector<std::uint32_t> rooms(static_cast<std::size_t>(count));
    table.points = rooms.data();
    readTable();
    const std::size_t room = std::accumulate(rooms.begin(), rooms.end(), std::size_t{0});
    PointsOfScans read = {std::vector<double>(room), std::vector<double>(room),
                          std::vector<std::size_t>(rooms.size()), std::vector<std::size_t>(rooms.size())};
    int scans = 0;
    Check(zrml_read_points_of_scans(source(), place_.sample, place_.function, first, count, read.mz.data(),
                                    read.intensity.data(), room, read.ends.data(), read.lost.data(), &scans));
    read.ends.resize(static_cast<std::size_t>(scans));
    read.lost.resize(read.ends.size());
    read.mz.resize(read.ends.empty() ? 0 : read.ends.back());
    read.intensity.resize(read.mz.size());
    return read;
  }

  /// Of all scans, from index and statistics; with `reads_points` the base peaks are those of the points.
  ScanTable table(bool reads_points = false) const {
    const auto scans = static_cast<std::size_t>(size());
    const std::vector<double> none(scans);
    ScanTable read = {std::vector<std::int32_t>(scans),
                      none,
                      std::vector<std::uint32_t>(scans),
                      none,
                      none,
                      none,
                      none,
                      none};
    zrml_scan_table to = {};
    to.size = sizeof to;
    to.number = read.number.data();
    to.minutes = read.minutes.data();
    to.points = read.points.data();
    to.total_intensity = read.total_intensity.data();
    to.base_peak_mz = read.base_peak_mz.data();
    to.base_peak_intensity = read.base_peak_intensity.data();
    to.precursor_mz = read.precursor_mz.data();
    to.scan_value = read.scan_value.data();
    to.reads_points = reads_points ? 1 : 0;
    Check(zrml_read_scan_table(source(), place_.sample, place_.function, 0, static_cast<int>(scans), &to));
    return read;
  }

 private:
  zrml_source* source() const { return place_.handle->get(); }
  void Check(zrml_status status) const { place_.handle->Check(status); }

  int CountOf(zrml_status (*count)(zrml_source*, int, int, int*)) const {
    return detail::Count(*place_.handle, [&](zrml_source* source, int* to) {
      return count(source, place_.sample, place_.function, to);
    });
  }

  std::vector<double> Series(zrml_status (*read)(zrml_source*, int, int, double*, std::size_t)) const {
    std::vector<double> values(static_cast<std::size_t>(size()));
    Check(read(source(), place_.sample, place_.function, values.data(), values.size()));
    return values;
  }

  detail::Place place_;
  zrml_function record_;
};

/// The absorbance spectra of a sample.
class Absorbance {
 public:
  Absorbance(const detail::Place& place, int size) : place_(place), size_(size) {}

  int size() const { return size_; }
  std::vector<double> minutes() const {
    std::vector<double> values(static_cast<std::size_t>(size_));
    place_.handle->Check(
        zrml_read_absorbance_minutes(place_.handle->get(), place_.sample, values.data(), values.size()));
    return values;
  }
  AbsorbanceSpectrum operator[](int scan) const {
    AbsorbanceSpectrum read;
    detail::ReadTwice(*place_.handle, read.wavelengths, read.values,
                      [&](double* x, double* y, std::size_t room, std::size_t* count) {
                        return zrml_read_absorbance(place_.handle->get(), place_.sample, scan, x, y, room,
                                                    count, nullptr);
                      });
    return read;
  }
  /// Where all spectra have the same wavelengths: those, and the values of one spectrum after the
  /// other.
  std::optional<AbsorbanceSpectrum> matrix() const {
    if (size_ == 0) return std::nullopt;
    const std::size_t columns = (*this)[0].wavelengths.size();
    AbsorbanceSpectrum read = {std::vector<double>(columns),
                               std::vector<double>(columns * static_cast<std::size_t>(size_))};
    int is_matrix = 0;
    place_.handle->Check(zrml_read_absorbance_matrix(place_.handle->get(), place_.sample, columns,
                                                     read.wavelengths.data(), read.values.data(),
                                                     &is_matrix));
    return is_matrix != 0 ? std::optional(std::move(read)) : std::nullopt;
  }

 private:
  detail::Place place_;
  int size_;
};

class Sample {
 public:
  Sample(const detail::Place& place, int position)
      : place_{place.handle, position, ZRML_OF_SAMPLE},
        record_(detail::Filled<zrml_sample>(*place.handle, [&](zrml_source* source, zrml_sample* to) {
          return zrml_get_sample(source, position, to);
        })) {}

  int number() const { return record_.number; }
  std::string_view name() const { return record_.name; }
  Sequence<Function> functions() const { return {place_, CountOf(&zrml_function_count)}; }
  Sequence<Trace> traces() const { return detail::TracesOf(place_); }
  std::optional<Absorbance> absorbance() const {
    const int count = CountOf(&zrml_absorbance_count);
    return count >= 0 ? std::optional(Absorbance(place_, count)) : std::nullopt;
  }
  std::vector<MetadataItem> metadata() const { return detail::Metadata(place_); }

 private:
  int CountOf(zrml_status (*count)(zrml_source*, int, int*)) const {
    return detail::Count(*place_.handle,
                         [&](zrml_source* source, int* to) { return count(source, place_.sample, to); });
  }

  detail::Place place_;
  zrml_sample record_;
};

/// What is known of damage; the members are those of zrml_finding.
class Finding {
 public:
  Finding(const detail::Place& place, int position)
      : record_(detail::Filled<zrml_finding>(*place.handle, [&](zrml_source* source, zrml_finding* to) {
          return zrml_get_finding(source, position, to);
        })) {}

  std::string_view code() const { return record_.code; }
  std::string_view severity() const { return record_.severity; }
  std::string_view file() const { return record_.file; }
  std::string_view message() const { return record_.message; }
  std::string_view function() const { return record_.function; }
  zrml_subject subject() const { return record_.subject; }
  int sample() const { return record_.sample; }
  std::uint64_t count() const { return record_.count; }
  std::uint64_t first() const { return record_.first; }

 private:
  zrml_finding record_;
};

class Source {
 public:
  /// `path` is UTF-8 on Windows, else the system's own bytes. Throws Error.
  explicit Source(const char* path) : handle_(std::make_unique<detail::Handle>(path)) {}
  explicit Source(const std::string& path) : Source(path.c_str()) {}
  explicit Source(const std::filesystem::path& path) : Source(Bytes(path)) {}

  std::string_view path() const { return zrml_path(handle_->get()); }
  zrml_format format() const { return zrml_format_of(handle_->get()); }

  Sequence<Sample> samples() const { return {place(), detail::Count(*handle_, &zrml_sample_count)}; }
  /// Those of the first sample; see Sample.
  Sequence<Function> functions() const { return First().functions(); }
  Sequence<Trace> traces() const { return First().traces(); }
  std::optional<Absorbance> absorbance() const { return First().absorbance(); }
  std::vector<MetadataItem> metadata() const { return First().metadata(); }

  Sequence<Finding> findings() const { return {place(), detail::Count(*handle_, &zrml_finding_count)}; }

  /// Called during long work with how many steps of how many are done; ends it with an Error (ZRML_CANCELLED)
  /// when it gives false, or with what it throws. It asks nothing of the source.
  void set_progress(std::function<bool(std::size_t done, std::size_t all)> progress) {
    handle_->SetProgress(std::move(progress));
  }

  /// For the functions of zrml.h.
  zrml_source* get() const noexcept { return handle_->get(); }

 private:
  static std::string Bytes(const std::filesystem::path& path) {
#ifdef _WIN32
    const auto text = path.u8string();
    return {text.begin(), text.end()};
#else
    return path.string();
#endif
  }

  detail::Place place() const { return {handle_.get(), 0, ZRML_OF_SAMPLE}; }
  Sample First() const { return Sample(place(), 0); }

  std::unique_ptr<detail::Handle> handle_;
};

}  // namespace v1
}  // namespace zrml

#endif
