#include "tests/library/every_call.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace zrml::test {
namespace {

struct NoMemory {};

struct Close {
  void operator()(zrml_source* source) const { zrml_close(source); }
};

class Asker {
 public:
  Asker(zrml_source* source, std::string& text) : source_(source), text_(text) {}

  void AskAll() {
    const int samples = Count([&](int* count) { return zrml_sample_count(source_, count); });
    for (int sample = 0; sample < samples; ++sample) AskSample(sample);
    const int findings = Count([&](int* count) { return zrml_finding_count(source_, count); });
    for (int i = 0; i < findings; ++i) {
      zrml_finding record = {};
      record.size = sizeof record;
      if (IsDone(zrml_get_finding(source_, i, &record))) Add(record.message);
    }
  }

 private:
  bool IsDone(zrml_status status) {
    if (status == ZRML_NO_MEMORY) throw NoMemory();
    if (status != ZRML_OK) Add("status " + std::to_string(status) + ": " + zrml_message(source_));
    return status == ZRML_OK;
  }

  void Add(const std::string& text) { text_ += text + "\n"; }

  void Add(const std::vector<double>& values) {
    for (const double value : values) text_ += std::to_string(std::bit_cast<std::uint64_t>(value)) + " ";
    text_ += "\n";
  }

  template <class Call>
  int Count(Call call) {
    int count = 0;
    return IsDone(call(&count)) ? count : 0;
  }

  // Arrays of unknown length.
  template <class Read>
  void AddArrays(Read read) {
    std::size_t count = 0;
    if (!IsDone(read(nullptr, nullptr, std::size_t{0}, &count))) return;
    std::vector<double> x(count);
    std::vector<double> y(count);
    if (!IsDone(read(x.data(), y.data(), count, &count))) return;
    Add(x);
    Add(y);
  }

  void AskSample(int sample) {
    zrml_sample record = {};
    record.size = sizeof record;
    if (IsDone(zrml_get_sample(source_, sample, &record))) Add(record.name);
    const int functions = Count([&](int* count) { return zrml_function_count(source_, sample, count); });
    for (int function = 0; function < functions; ++function) AskFunction(sample, function);
    AskTraces(sample, ZRML_OF_SAMPLE);
    AskMetadata(sample, ZRML_OF_SAMPLE);
    AskAbsorbance(sample);
  }

  void AskFunction(int sample, int function) {
    zrml_function record = {};
    record.size = sizeof record;
    if (IsDone(zrml_get_function(source_, sample, function, &record)))
      Add(record.id + std::string(" ") + record.name);
    const char* text = nullptr;
    std::size_t length = 0;
    if (IsDone(zrml_function_text(source_, sample, function, &text, &length)) && text != nullptr) Add(text);
    const int scans = Count([&](int* count) { return zrml_scan_count(source_, sample, function, count); });
    for (int scan = 0; scan < scans; ++scan) AskScan(sample, function, scan);
    AskSeries(sample, function, static_cast<std::size_t>(scans));
    AddArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_sum(source_, sample, function, 0, scans, 0.01, 0, x, y, room, count);
    });
    AskMean(sample, function);
    AskTraces(sample, function);
    AskMetadata(sample, function);
  }

  // Of the first two scans, less the second one.
  void AskMean(int sample, int function) {
    const int chosen[] = {1, 0};
    zrml_sum_options options = {};
    options.size = sizeof options;
    options.is_mean = 1;
    options.background = chosen;
    options.background_count = 1;
    zrml_sum sum = {};
    sum.size = sizeof sum;
    AddArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_sum_of_scans(source_, sample, function, chosen, 2, &options, x, y, room, count, &sum);
    });
    Add(std::to_string(sum.added) + " " + std::to_string(sum.left_out));
  }

  void AskScan(int sample, int function, int scan) {
    zrml_scan record = {};
    record.size = sizeof record;
    if (!IsDone(zrml_get_scan(source_, sample, function, scan, &record))) return;
    Add(std::vector<double>{record.minutes, record.end_minutes, record.total_intensity, record.precursor_mz,
                            record.scan_value});
    std::vector<double> mz(record.points);
    std::vector<double> intensities(record.points);
    std::size_t count = 0;
    if (IsDone(zrml_read_points(source_, sample, function, scan, mz.data(), intensities.data(), record.points,
                                &count, nullptr))) {
      Add(mz);
      Add(intensities);
      AskCentroids(mz, intensities, count);
    }
    int read = 0;
    if (IsDone(zrml_read_points_of_scans(source_, sample, function, scan, 1, mz.data(), intensities.data(),
                                         record.points, &count, nullptr, &read))) {
      Add(mz);
      Add(intensities);
    }
    int precursor[2] = {0, 0};
    if (IsDone(zrml_find_precursor(source_, sample, function, scan, precursor, precursor + 1)))
      Add(std::to_string(precursor[0]) + " " + std::to_string(precursor[1]));
  }

  void AskCentroids(const std::vector<double>& mz, const std::vector<double>& intensities,
                    std::size_t points) {
    std::vector<double> places(points);
    std::vector<double> heights(points);
    std::size_t count = 0;
    if (IsDone(zrml_find_centroids(mz.data(), intensities.data(), points, nullptr, places.data(),
                                   heights.data(), points, &count))) {
      Add(places);
      Add(heights);
    }
  }

  void AskSeries(int sample, int function, std::size_t scans) {
    std::vector<double> values(2 * scans);
    const zrml_range ranges[] = {{100, 200}, {150, 1000}};
    if (IsDone(zrml_read_minutes(source_, sample, function, values.data(), scans))) Add(values);
    if (IsDone(zrml_read_total_ions(source_, sample, function, values.data(), scans))) Add(values);
    if (IsDone(zrml_read_base_peaks(source_, sample, function, values.data(), scans))) Add(values);
    if (IsDone(zrml_read_mass_ranges(source_, sample, function, ranges, 2, ZRML_SUM, values.data(),
                                     values.size())))
      Add(values);
    zrml_scan_table table = {};
    table.size = sizeof table;
    table.base_peak_mz = values.data();
    table.scan_value = values.data() + scans;
    table.reads_points = 1;
    if (IsDone(zrml_read_scan_table(source_, sample, function, 0, static_cast<int>(scans), &table)))
      Add(values);
  }

  void AskTraces(int sample, int function) {
    const int traces = Count([&](int* count) { return zrml_trace_count(source_, sample, function, count); });
    for (int trace = 0; trace < traces; ++trace) {
      zrml_trace record = {};
      record.size = sizeof record;
      if (IsDone(zrml_get_trace(source_, sample, function, trace, &record))) Add(record.name);
      AddArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
        return zrml_read_trace(source_, sample, function, trace, x, y, room, count);
      });
    }
  }

  void AskMetadata(int sample, int function) {
    const int items =
        Count([&](int* count) { return zrml_metadata_count(source_, sample, function, count); });
    for (int item = 0; item < items; ++item) {
      zrml_metadata record = {};
      record.size = sizeof record;
      if (IsDone(zrml_get_metadata(source_, sample, function, item, &record)))
        Add(record.key + std::string("=") + (record.value != nullptr ? record.value : "null"));
    }
  }

  void AskAbsorbance(int sample) {
    const int scans = Count([&](int* count) { return zrml_absorbance_count(source_, sample, count); });
    for (int scan = 0; scan < scans; ++scan) {
      AddArrays([&](double* x, double* y, std::size_t room, std::size_t* count) {
        return zrml_read_absorbance(source_, sample, scan, x, y, room, count, nullptr);
      });
    }
  }

  zrml_source* source_;
  std::string& text_;
};

}  // namespace

Answers AskEverything(const std::string& path) {
  Answers answers;
  zrml_source* opened = nullptr;
  answers.status = zrml_open(path.c_str(), &opened);
  const std::unique_ptr<zrml_source, Close> source(opened);
  if (opened == nullptr) return answers;
  try {
    Asker(opened, answers.text).AskAll();
  } catch (const NoMemory&) {
    answers.status = ZRML_NO_MEMORY;
  }
  return answers;
}

}  // namespace zrml::test
