#include "tools/zrml/targets.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <string_view>

#include <nlohmann/json.hpp>

#include "common/text.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/list_file.h"

namespace zrml::tool {
namespace {

using nlohmann::json;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A row or an object, its values as text; empty and null values are left out.
struct Entry {
  std::string place;  // "targets.tsv, line 3"
  std::map<std::string, std::string, std::less<>> values;
};

[[noreturn]] void Refuse(const std::string& place, const std::string& problem) {
  throw Failure(ExitStatus::kWrongUsage, place + ": " + problem);
}

// A plain number: without a sign in front of it and not infinite.
std::optional<double> ParseNumber(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isPlain = error == std::errc() && end == text.data() + text.size() && value >= 0;
  return isPlain && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<double> NumberOf(const Entry& entry, std::string_view name) {
  const auto found = entry.values.find(name);
  if (found == entry.values.end()) return std::nullopt;
  const std::optional<double> number = ParseNumber(found->second);
  if (!number) {
    Refuse(entry.place, std::string(name) + " \"" + found->second + "\" is not a number of 0 or more");
  }
  return number;
}

// The two ends; a missing one is `low` or `high`.
source::Range RangeOf(const Entry& entry, const char* start, const char* end, source::Range open) {
  const source::Range range = {NumberOf(entry, start).value_or(open.low),
                               NumberOf(entry, end).value_or(open.high)};
  if (range.low > range.high) Refuse(entry.place, std::string(start) + " is larger than " + end);
  return range;
}

Tolerance ToleranceOf(const Entry& entry, Tolerance tolerance) {
  const std::optional<double> width = NumberOf(entry, "tolerance");
  const auto unit = entry.values.find("tolerance_unit");
  if (!width && unit != entry.values.end()) Refuse(entry.place, "a tolerance_unit needs a tolerance");
  if (!width) return tolerance;
  if (unit == entry.values.end())
    Refuse(entry.place, "a tolerance needs a tolerance_unit, \"ppm\" or \"da\"");
  const std::string name = ToLower(unit->second);
  if (name != "ppm" && name != "da")
    Refuse(entry.place, "tolerance_unit \"" + unit->second + "\" is not \"ppm\" or \"da\"");
  return {*width, name == "ppm"};
}

Target TargetOf(const Entry& entry, Tolerance tolerance) {
  Target target;
  target.mz = NumberOf(entry, "mz");
  const bool hasStart = entry.values.contains("mz_start");
  if (hasStart != entry.values.contains("mz_end")) Refuse(entry.place, "mz_start and mz_end belong together");
  if (!target.mz && !hasStart) Refuse(entry.place, "there is neither mz nor mz_start and mz_end");
  target.range = hasStart ? RangeOf(entry, "mz_start", "mz_end", {})
                          : RangeAround(*target.mz, ToleranceOf(entry, tolerance));
  if (entry.values.contains("rt_start") || entry.values.contains("rt_end"))
    target.minutes = RangeOf(entry, "rt_start", "rt_end", {-kInfinity, kInfinity});
  const auto comment = entry.values.find("comment");
  if (comment != entry.values.end()) target.comment = comment->second;
  return target;
}

std::vector<std::string_view> Fields(std::string_view line) {
  std::vector<std::string_view> fields;
  for (std::size_t tab = 0; tab != line.npos;) {
    tab = line.find('\t');
    fields.push_back(line.substr(0, tab));
    line.remove_prefix(tab == line.npos ? line.size() : tab + 1);
  }
  return fields;
}

std::vector<Entry> EntriesOfTsv(const std::string& path, std::string_view text) {
  std::vector<Entry> entries;
  std::vector<std::string_view> names;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (line.empty()) continue;
    const std::vector<std::string_view> fields = Fields(line);
    if (names.empty()) {
      names = fields;
      continue;
    }
    Entry& entry = entries.emplace_back(Entry{path + ", line " + std::to_string(number), {}});
    if (fields.size() > names.size())
      Refuse(entry.place, "there are more values than names in the first line");
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!fields[i].empty()) entry.values.emplace(names[i], fields[i]);
    }
  }
  return entries;
}

// Names the kind of a list or an object.
std::string TextOfJson(const json& value) {
  if (value.is_string()) return value.get<std::string>();
  return value.is_structured() ? value.type_name() : value.dump();
}

std::vector<Entry> EntriesOfJson(const std::string& path, std::string_view text) {
  json list;
  try {
    list = json::parse(text);
  } catch (const json::out_of_range&) {
    Refuse(path, "a number is too large");
  } catch (const json::parse_error& error) {
    const std::string_view before = text.substr(0, error.byte == 0 ? 0 : error.byte - 1);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    Refuse(path + ", line " + std::to_string(lines + 1), "this is not JSON");
  }
  if (!list.is_array()) Refuse(path, "the targets are not a list");
  std::vector<Entry> entries;
  for (const json& object : list) {
    Entry& entry = entries.emplace_back(Entry{path + ", target " + std::to_string(entries.size() + 1), {}});
    if (!object.is_object()) Refuse(entry.place, "this is not an object");
    for (const auto& [name, value] : object.items()) {
      if (!value.is_null()) entry.values[name] = TextOfJson(value);
    }
  }
  return entries;
}

}  // namespace

source::Range RangeAround(double mz, Tolerance tolerance) {
  const double delta = tolerance.isPpm ? mz * tolerance.width / 1e6 : tolerance.width;
  return {mz - delta, mz + delta};
}

std::vector<Target> ReadTargets(const std::string& path, Tolerance tolerance) {
  const std::string text = ReadListFile(path, "targets");
  const std::size_t first = text.find_first_not_of(" \t\n");
  const bool isJson = first != text.npos && (text[first] == '[' || text[first] == '{');
  std::vector<Target> targets;
  for (const Entry& entry : isJson ? EntriesOfJson(path, text) : EntriesOfTsv(path, text))
    targets.push_back(TargetOf(entry, tolerance));
  if (targets.empty()) Refuse(path, "there are no targets");
  return targets;
}

}  // namespace zrml::tool
