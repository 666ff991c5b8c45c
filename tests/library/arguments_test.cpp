// Wrong arguments of every function: null pointers, positions that are not there, too little room, records
// that are too small. None of them may write anything.
#include <climits>
#include <cstring>
#include <functional>

#include "tests/library/opened.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/small_acquisition.h"

namespace zrml::test {
namespace {

// Where a call is about, right unless a test says otherwise.
struct Place {
  int sample = 0;
  int function = 0;
  int item = 0;  // a scan, a trace, an item
};

// Which of the pointers that a call needs is null, from 0 on; none where there is no such pointer.
constexpr int kNone = -1;

// Room of every array, more than any function of the source needs.
constexpr std::size_t kRoom = 8;

struct Call {
  const char* name;
  int pointers;  // that it needs
  bool hasSample, hasFunction, hasItem;
  std::function<zrml_status(zrml_source*, const Place&, int null)> call;
};

// Memory that calls write to; all of it is 0x55 before a call.
struct Written {
  union Record {
    zrml_sample sample;
    zrml_function function;
    zrml_scan scan;
    zrml_trace trace;
    zrml_metadata metadata;
    zrml_sum sum;
    zrml_finding finding;
  } record;
  int number[2];
  std::size_t count;
  const char* text;
  double x[kRoom];
  double y[kRoom];
};
Written written;

template <class Pointer>
Pointer* Unless(bool isNull, Pointer* pointer) {
  return isNull ? nullptr : pointer;
}

template <class Record>
Record* Sized(Record& record, bool isNull, std::size_t size = sizeof(Record)) {
  record.size = size;
  return Unless(isNull, &record);
}

const zrml_range kRanges[] = {{100, 200}};

zrml_scan_table Table() {
  zrml_scan_table table = {};
  table.size = sizeof table;
  table.minutes = written.x;
  return table;
}

const std::vector<Call>& Calls() {
  static const std::vector<Call> calls = {
      {"sample_count", 1, false, false, false,
       [](auto* s, auto&, int n) { return zrml_sample_count(s, Unless(n == 0, written.number)); }},
      {"get_sample", 1, true, false, false,
       [](auto* s, auto& at, int n) {
         return zrml_get_sample(s, at.sample, Sized(written.record.sample, n == 0));
       }},
      {"function_count", 1, true, false, false,
       [](auto* s, auto& at, int n) {
         return zrml_function_count(s, at.sample, Unless(n == 0, written.number));
       }},
      {"get_function", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_get_function(s, at.sample, at.function, Sized(written.record.function, n == 0));
       }},
      {"function_text", 2, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_function_text(s, at.sample, at.function, Unless(n == 0, &written.text),
                                   Unless(n == 1, &written.count));
       }},
      {"scan_count", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_scan_count(s, at.sample, at.function, Unless(n == 0, written.number));
       }},
      {"get_scan", 1, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_get_scan(s, at.sample, at.function, at.item, Sized(written.record.scan, n == 0));
       }},
      {"read_scan_table", 1, true, true, true,
       [](auto* s, auto& at, int n) {
         const zrml_scan_table table = Table();
         return zrml_read_scan_table(s, at.sample, at.function, at.item, 1, Unless(n == 0, &table));
       }},
      {"read_points", 3, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_read_points(s, at.sample, at.function, at.item, Unless(n == 0, written.x),
                                 Unless(n == 1, written.y), kRoom, Unless(n == 2, &written.count), nullptr);
       }},
      {"read_points_of_scans", 4, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_read_points_of_scans(s, at.sample, at.function, at.item, 1, Unless(n == 0, written.x),
                                          Unless(n == 1, written.y), kRoom, Unless(n == 2, &written.count),
                                          nullptr, Unless(n == 3, written.number));
       }},
      {"find_precursor", 2, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_find_precursor(s, at.sample, at.function, at.item, Unless(n == 0, written.number),
                                    Unless(n == 1, written.number + 1));
       }},
      {"read_minutes", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_read_minutes(s, at.sample, at.function, Unless(n == 0, written.x), kRoom);
       }},
      {"read_total_ions", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_read_total_ions(s, at.sample, at.function, Unless(n == 0, written.x), kRoom);
       }},
      {"read_base_peaks", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_read_base_peaks(s, at.sample, at.function, Unless(n == 0, written.x), kRoom);
       }},
      {"read_mass_ranges", 2, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_read_mass_ranges(s, at.sample, at.function, Unless(n == 0, kRanges), 1, ZRML_SUM,
                                      Unless(n == 1, written.x), kRoom);
       }},
      {"read_sum", 3, true, true, true,
       [](auto* s, auto& at, int n) {
         const int end = at.item == INT_MAX ? at.item : at.item + 1;
         return zrml_read_sum(s, at.sample, at.function, at.item, end, 0, 0, Unless(n == 0, written.x),
                              Unless(n == 1, written.y), kRoom, Unless(n == 2, &written.count));
       }},
      {"read_sum_of_scans", 4, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_read_sum_of_scans(s, at.sample, at.function, Unless(n == 0, &at.item), 1, nullptr,
                                       Unless(n == 1, written.x), Unless(n == 2, written.y), kRoom,
                                       Unless(n == 3, &written.count), nullptr);
       }},
      {"read_sum_less_a_background", 1, true, true, true,
       [](auto* s, auto& at, int n) {
         const int scan = 0;
         zrml_sum_options options = {};
         options.background = Unless(n == 0, &at.item);
         options.background_count = 1;
         return zrml_read_sum_of_scans(s, at.sample, at.function, &scan, 1, Sized(options, false), written.x,
                                       written.y, kRoom, &written.count, Sized(written.record.sum, false));
       }},
      {"drift_bin_count", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_drift_bin_count(s, at.sample, at.function, Unless(n == 0, written.number));
       }},
      {"read_drift_bin", 3, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_read_drift_bin(s, at.sample, at.function, at.item, 1, Unless(n == 0, written.x),
                                    Unless(n == 1, written.y), kRoom, Unless(n == 2, &written.count));
       }},
      {"trace_count", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_trace_count(s, at.sample, at.function, Unless(n == 0, written.number));
       }},
      {"get_trace", 1, true, false, true,
       [](auto* s, auto& at, int n) {
         return zrml_get_trace(s, at.sample, ZRML_OF_SAMPLE, at.item, Sized(written.record.trace, n == 0));
       }},
      {"read_trace", 3, true, false, true,
       [](auto* s, auto& at, int n) {
         return zrml_read_trace(s, at.sample, ZRML_OF_SAMPLE, at.item, Unless(n == 0, written.x),
                                Unless(n == 1, written.y), kRoom, Unless(n == 2, &written.count));
       }},
      {"absorbance_count", 1, true, false, false,
       [](auto* s, auto& at, int n) {
         return zrml_absorbance_count(s, at.sample, Unless(n == 0, written.number));
       }},
      {"get_absorbance_function", 1, true, false, false,
       [](auto* s, auto& at, int n) {
         return zrml_get_absorbance_function(s, at.sample, Sized(written.record.function, n == 0));
       }},
      {"read_absorbance_minutes", 1, true, false, false,
       [](auto* s, auto& at, int n) {
         return zrml_read_absorbance_minutes(s, at.sample, Unless(n == 0, written.x), kRoom);
       }},
      {"read_absorbance", 3, true, false, true,
       [](auto* s, auto& at, int n) {
         return zrml_read_absorbance(s, at.sample, at.item, Unless(n == 0, written.x),
                                     Unless(n == 1, written.y), kRoom, Unless(n == 2, &written.count),
                                     nullptr);
       }},
      {"read_absorbance_matrix", 3, true, false, false,
       [](auto* s, auto& at, int n) {
         return zrml_read_absorbance_matrix(s, at.sample, 2, Unless(n == 0, written.x),
                                            Unless(n == 1, written.y), Unless(n == 2, written.number));
       }},
      {"metadata_count", 1, true, true, false,
       [](auto* s, auto& at, int n) {
         return zrml_metadata_count(s, at.sample, at.function, Unless(n == 0, written.number));
       }},
      {"get_metadata", 1, true, true, true,
       [](auto* s, auto& at, int n) {
         return zrml_get_metadata(s, at.sample, at.function, at.item, Sized(written.record.metadata, n == 0));
       }},
      {"finding_count", 1, false, false, false,
       [](auto* s, auto&, int n) { return zrml_finding_count(s, Unless(n == 0, written.number)); }},
      {"get_finding", 1, false, false, true,
       [](auto* s, auto& at, int n) {
         return zrml_get_finding(s, at.item, Sized(written.record.finding, n == 0));
       }},
  };
  return calls;
}

std::string BytesBehindSize() {
  const char* const begin = reinterpret_cast<const char*>(&written);
  return {begin + sizeof(std::size_t), begin + sizeof written};
}

class LibraryArguments : public testing::Test {
 protected:
  // The source has a finding, mobility data and everything else that a call needs.
  LibraryArguments() {
    raw_.WriteText("_FUNC001.CDT", "");
    raw_.Truncate("_FUNC006.DAT", 1);
  }

  void ExpectWrong(const Call& call, const Place& at, int null = kNone) {
    SCOPED_TRACE(testing::Message() << call.name << " of " << at.sample << ", " << at.function << ", "
                                    << at.item << ", null " << null);
    const Opened opened(raw_);
    written = Untouched();
    EXPECT_EQ(call.call(opened.Get(), at, null), ZRML_WRONG_ARGUMENT);
    EXPECT_STRNE(zrml_message(opened.Get()), "");
    EXPECT_EQ(BytesBehindSize(), std::string(sizeof written - sizeof(std::size_t), 0x55));
  }

  static Written Untouched() {
    Written untouched;
    std::memset(&untouched, 0x55, sizeof untouched);
    return untouched;
  }

  TempDirectory raw_ = SmallAcquisition().Build();
};

TEST_F(LibraryArguments, EveryCallIsRightToBeginWith) {
  const Opened opened(raw_);
  for (const Call& call : Calls()) {
    EXPECT_EQ(call.call(opened.Get(), {}, kNone), ZRML_OK) << call.name << ": " << zrml_message(opened.Get());
  }
  EXPECT_STREQ(zrml_message(opened.Get()), "");
}

TEST_F(LibraryArguments, NoSource) {
  for (const Call& call : Calls()) {
    written = Untouched();
    EXPECT_EQ(call.call(nullptr, {}, kNone), ZRML_WRONG_ARGUMENT) << call.name;
    EXPECT_EQ(BytesBehindSize(), std::string(sizeof written - sizeof(std::size_t), 0x55)) << call.name;
  }
  EXPECT_EQ(zrml_set_progress(nullptr, nullptr, nullptr), ZRML_WRONG_ARGUMENT);
  EXPECT_STREQ(zrml_message(nullptr), "there is no source");
  EXPECT_STREQ(zrml_path(nullptr), "");
  EXPECT_EQ(zrml_format_of(nullptr), ZRML_NO_FORMAT);
  zrml_close(nullptr);
}

TEST_F(LibraryArguments, NullPointers) {
  for (const Call& call : Calls()) {
    for (int null = 0; null < call.pointers; ++null) ExpectWrong(call, {}, null);
  }
}

TEST_F(LibraryArguments, PositionsThatAreNotThere) {
  for (const Call& call : Calls()) {
    for (const int position : {-1, 99, INT_MIN, INT_MAX}) {
      const bool meansSample = position == ZRML_OF_SAMPLE && (std::string(call.name) == "trace_count" ||
                                                              std::string(call.name).ends_with("metadata") ||
                                                              std::string(call.name) == "metadata_count");
      if (call.hasSample) ExpectWrong(call, {position, 0, 0});
      if (call.hasFunction && !meansSample) ExpectWrong(call, {0, position, 0});
      if (call.hasItem) ExpectWrong(call, {0, 0, position});
    }
  }
}

// One value less than there are, for each function that fills arrays of a known length.
TEST_F(LibraryArguments, TooLittleRoom) {
  const Opened opened(raw_);
  zrml_source* const s = opened.Get();
  double* const x = written.x;
  const std::vector<std::pair<std::size_t, std::function<zrml_status(std::size_t)>>> calls = {
      {3, [&](std::size_t room) { return zrml_read_minutes(s, 0, 0, x, room); }},
      {3, [&](std::size_t room) { return zrml_read_total_ions(s, 0, 0, x, room); }},
      {3, [&](std::size_t room) { return zrml_read_base_peaks(s, 0, 0, x, room); }},
      {3, [&](std::size_t room) { return zrml_read_mass_ranges(s, 0, 0, kRanges, 1, ZRML_SUM, x, room); }},
      {2, [&](std::size_t room) { return zrml_read_absorbance_minutes(s, 0, x, room); }},
      {3,
       [&](std::size_t room) {
         return zrml_read_points(s, 0, 0, 0, x, written.y, room, &written.count, nullptr);
       }},
      {3,
       [&](std::size_t room) {
         return zrml_read_points_of_scans(s, 0, 0, 0, 1, x, written.y, room, &written.count, nullptr,
                                          written.number);
       }},
  };
  for (const auto& [needed, call] : calls) {
    written = Untouched();
    EXPECT_EQ(call(needed - 1), ZRML_WRONG_ARGUMENT);
    EXPECT_EQ(BytesBehindSize(), std::string(sizeof written - sizeof(std::size_t), 0x55));
    EXPECT_EQ(call(needed), ZRML_OK) << zrml_message(s);
  }
}

TEST_F(LibraryArguments, ManyRangesNeedRoomForAll) {
  const Opened opened(raw_);
  std::vector<zrml_range> ranges(3, {0, 1000});
  Doubles values(9);
  const auto read = [&](std::size_t count, std::size_t room) {
    return zrml_read_mass_ranges(opened.Get(), 0, 0, ranges.data(), count, ZRML_SUM, values.data(), room);
  };
  EXPECT_EQ(read(3, 9), ZRML_OK);
  EXPECT_EQ(read(3, 8), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(read(SIZE_MAX / 2, 9), ZRML_WRONG_ARGUMENT) << "more than can be multiplied";
  EXPECT_EQ(zrml_read_mass_ranges(opened.Get(), 0, 0, ranges.data(), 1, 2, values.data(), 9),
            ZRML_WRONG_ARGUMENT);
}

TEST_F(LibraryArguments, PartsOfTheTableThatAreNotThere) {
  const Opened opened(raw_);
  const zrml_scan_table table = Table();
  const auto read = [&](int first, int count) {
    return zrml_read_scan_table(opened.Get(), 0, 0, first, count, &table);
  };
  EXPECT_EQ(read(0, 3), ZRML_OK);
  EXPECT_EQ(read(3, 0), ZRML_OK);
  EXPECT_EQ(read(0, 4), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(read(1, 3), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(read(1, INT_MAX), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(read(0, -1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(read(4, 0), ZRML_WRONG_ARGUMENT);
}

TEST_F(LibraryArguments, ScansThatAreNotThere) {
  const Opened opened(raw_);
  Doubles mz(8);
  Doubles intensities(8);
  std::size_t ends[3];
  int count = -1;
  const auto read = [&](int first, int scans) {
    return zrml_read_points_of_scans(opened.Get(), 0, 0, first, scans, mz.data(), intensities.data(), 8, ends,
                                     nullptr, &count);
  };
  EXPECT_EQ(read(0, 3), ZRML_OK);
  EXPECT_EQ(read(3, 0), ZRML_OK);
  EXPECT_EQ(count, 0);
  for (const auto& [first, scans] :
       std::vector<std::pair<int, int>>{{0, 4}, {1, 3}, {1, INT_MAX}, {0, -1}, {4, 0}, {-1, 1}})
    EXPECT_EQ(read(first, scans), ZRML_WRONG_ARGUMENT) << first << " " << scans;
}

template <class Record, class Function, class... Places>
void ExpectSizeCounts(Function get, zrml_source* source, Places... places) {
  Record record;
  std::memset(&record, 0x55, sizeof record);
  for (const std::size_t size : {std::size_t{0}, sizeof(std::size_t), sizeof(Record) - 1}) {
    record.size = size;
    EXPECT_EQ(get(source, places..., &record), ZRML_WRONG_ARGUMENT) << size;
  }
  record.size = sizeof record;
  EXPECT_EQ(get(source, places..., &record), ZRML_OK);
}

TEST_F(LibraryArguments, RecordsThatAreTooSmall) {
  const Opened opened(raw_);
  ExpectSizeCounts<zrml_sample>(zrml_get_sample, opened.Get(), 0);
  ExpectSizeCounts<zrml_function>(zrml_get_function, opened.Get(), 0, 0);
  ExpectSizeCounts<zrml_function>(zrml_get_absorbance_function, opened.Get(), 0);
  ExpectSizeCounts<zrml_scan>(zrml_get_scan, opened.Get(), 0, 0, 0);
  ExpectSizeCounts<zrml_trace>(zrml_get_trace, opened.Get(), 0, ZRML_OF_SAMPLE, 0);
  ExpectSizeCounts<zrml_metadata>(zrml_get_metadata, opened.Get(), 0, 0, 0);
  ExpectSizeCounts<zrml_finding>(zrml_get_finding, opened.Get(), 0);
}

// Of a record with what is wanted, also those of a later version that has more.
TEST_F(LibraryArguments, RecordsOfOtherVersions) {
  const Opened opened(raw_);
  const auto expectSizeCounts = [](auto record, auto call) {
    struct Later {
      decltype(record) known;
      std::int64_t more;
    } later = {record, 0};
    for (const std::size_t size : {std::size_t{0}, sizeof record - 1}) {
      later.known.size = size;
      EXPECT_EQ(call(&later.known), ZRML_WRONG_ARGUMENT) << size;
    }
    later.known.size = sizeof later;
    EXPECT_EQ(call(&later.known), ZRML_OK);
    later.more = 1;
    EXPECT_EQ(call(&later.known), ZRML_WRONG_ARGUMENT) << "it asks for more than is known";
  };
  expectSizeCounts(Table(), [&](const zrml_scan_table* table) {
    return zrml_read_scan_table(opened.Get(), 0, 0, 0, 1, table);
  });
  const int scan = 0;
  const auto sum = [&](const zrml_sum_options* options, zrml_sum* record) {
    return zrml_read_sum_of_scans(opened.Get(), 0, 0, &scan, 1, options, written.x, written.y, kRoom,
                                  &written.count, record);
  };
  expectSizeCounts(zrml_sum_options(),
                   [&](const zrml_sum_options* options) { return sum(options, nullptr); });
  expectSizeCounts(zrml_centroid_options(), [](const zrml_centroid_options* options) {
    return zrml_find_centroids(nullptr, nullptr, 0, options, nullptr, nullptr, 0, &written.count);
  });
  written = Untouched();
  EXPECT_EQ(sum(nullptr, Sized(written.record.sum, false, sizeof(zrml_sum) - 1)), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(BytesBehindSize(), std::string(sizeof written - sizeof(std::size_t), 0x55));
}

TEST_F(LibraryArguments, OpenNeedsBothPointers) {
  zrml_source* source = reinterpret_cast<zrml_source*>(&written);
  EXPECT_EQ(zrml_open(nullptr, &source), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(source, nullptr);
  EXPECT_STREQ(zrml_open_message(), "path is a null pointer");
  EXPECT_EQ(zrml_open(PathOf(raw_).c_str(), nullptr), ZRML_WRONG_ARGUMENT);
  EXPECT_STREQ(zrml_open_message(), "source is a null pointer");
}

}  // namespace
}  // namespace zrml::test
