// The object of a zrml_source, and what the library's functions share: no exception leaves them, and records
// and arrays are checked in one place.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "source/source.h"
#include "zrml/zrml.h"

namespace zrml::library {

/// Two arrays of one length that were read before the caller had room for them.
struct Arrays {
  std::vector<double> x;
  std::vector<double> y;
  std::size_t lost = 0;
  zrml_sum sum = {};  // of a sum
};

/// How scans are added up: positions that ascend.
struct SumRequest {
  std::vector<int> scans;
  std::vector<int> background = {};
  double width = 0;
  bool isPpm = false;
  bool isMean = false;

  bool operator==(const SumRequest&) const = default;
};

/// Identifies requested arrays: their kind, sample, function, and a scan or trace with a bin, or a sum.
enum class Asked { kSum, kDriftBin, kTrace, kAbsorbance };
struct Request {
  Asked asked;
  int sample;
  int function;
  int item = 0;
  int bin = 0;
  SumRequest sum = {};

  bool operator==(const Request&) const = default;
};

}  // namespace zrml::library

struct zrml_source {
  std::unique_ptr<zrml::source::Source> source;
  std::string message;
  std::unordered_set<std::string> texts;  // that records point to
  std::string functionText;

  zrml_progress progress = nullptr;
  void* context = nullptr;

  // The last results, in case they are requested again.
  std::optional<std::pair<zrml::library::Request, zrml::library::Arrays>> arrays;
  std::optional<std::pair<std::pair<int, int>, std::vector<zrml::source::Trace>>> traces;
  std::optional<std::pair<std::pair<int, int>, std::vector<zrml::source::MetadataItem>>> metadata;

  const char* Text(std::string text) { return texts.insert(std::move(text)).first->c_str(); }
};

namespace zrml::library {

/// A number that no file holds.
inline constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

/// The status for the exception that is being handled; its words become `message`. Takes no memory when there
/// is none.
zrml_status StatusOfException(std::string& message) noexcept;

/// Runs `work` on the source and returns its status.
template <class Work>
zrml_status Run(zrml_source* handle, Work work) noexcept {
  if (handle == nullptr) return ZRML_WRONG_ARGUMENT;
  try {
    work(*handle->source);
    return ZRML_OK;
  } catch (...) {
    return StatusOfException(handle->message);
  }
}

[[noreturn]] void ThrowWrongArgument(const char* what);

/// Throws when `pointer`, called `name` in the header, is null.
void Require(const void* pointer, const char* name);

/// Throws when there is no such sample; sources ask only where samples differ.
void RequireSample(source::Source& source, int sample);

/// Throws when there is no room for `count` values at `array`.
void RequireRoom(std::size_t count, const void* array, std::size_t room);

/// Sets what `given` has room for to `filled`, the rest to 0.
template <class Record>
void Fill(Record* given, Record filled) {
  Require(given, "record");
  filled.size = given->size;
  // A record that has grown may be shorter, as its first version was.
  if (filled.size < sizeof(Record)) ThrowWrongArgument("the size of the record is too small");
  std::memcpy(given, &filled, sizeof(Record));
  std::memset(reinterpret_cast<char*>(given) + sizeof(Record), 0, filled.size - sizeof(Record));
}

/// For records with what is wanted: throws when `given` is too small, or of a later version and has members
/// that are not known here.
template <class Record>
void RequireKnown(const Record& given) {
  if (given.size < sizeof given) ThrowWrongArgument("the size of the record is too small");
  const char* const begin = reinterpret_cast<const char*>(&given);
  if (std::any_of(begin + sizeof given, begin + given.size, [](char c) { return c != 0; }))
    ThrowWrongArgument("the record has members that this version of the library does not know");
}

/// Counts, for callers who count in `int`.
int CountOf(std::size_t size);

/// Asks the progress function of the source before the first of `all` steps, and then before each 64th.
source::Cancel CancelOf(const zrml_source& handle, std::size_t all);

}  // namespace zrml::library
