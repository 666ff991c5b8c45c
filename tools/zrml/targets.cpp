#include "tools/zrml/targets.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <sstream>
#include <string_view>
#include <tuple>

#include <nlohmann/json.hpp>

#include "common/text.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/list_file.h"

namespace zrml::tool {
namespace {

using nlohmann::json;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr std::array<std::string_view, 8> kNames = {"mz",       "tolerance", "mz_start",       "mz_end",
                                                    "rt_start", "rt_end",    "tolerance_unit", "comment"};
constexpr std::span<const std::string_view> kNumbers = std::span(kNames).first(6);

struct Place {
  std::string_view path;
  int line;
};

struct Named {
  Place place;
  std::string text;
};

// A row or an object; empty and null values are left out.
struct Entry {
  Place place;
  std::map<std::string, Named, std::less<>> values = {};

  bool Has(std::string_view name) const { return values.contains(name); }
};

[[noreturn]] void Refuse(std::string_view path, const std::string& problem) {
  throw Failure(ExitStatus::kWrongUsage, std::string(path) + ": " + problem);
}

[[noreturn]] void Refuse(const Place& place, const std::string& problem) {
  Refuse(std::string(place.path) + ", line " + std::to_string(place.line), problem);
}

// Names that nobody reads may be there more than once.
void RequireFirst(const Place& place, std::string_view name, bool isFirst) {
  if (!isFirst && std::ranges::find(kNames, name) != kNames.end())
    Refuse(place, std::string(name) + " is there twice");
}

// `shown` is the value as it stands in the file, text in quotes.
[[noreturn]] void RefuseNumber(const Place& place, const std::string& name, const std::string& shown) {
  Refuse(place, name + " " + shown + " is not a number of 0 or more");
}

// A finite number without a sign.
double NumberOf(const std::string& name, const Named& value) {
  const std::string& text = value.text;
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = !text.starts_with('-') && end == text.data() + text.size();
  if (isWhole && error == std::errc::result_out_of_range)
    Refuse(value.place, name + " \"" + text + "\" is beyond the range of numbers");
  if (!isWhole || error != std::errc() || !std::isfinite(number))
    RefuseNumber(value.place, name, "\"" + text + "\"");
  return number;
}

std::optional<double> NumberOf(const Entry& entry, std::string_view name) {
  const auto found = entry.values.find(name);
  return found == entry.values.end() ? std::nullopt : std::optional(NumberOf(found->first, found->second));
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
  const auto& [place, text] = unit->second;
  const std::string name = ToLower(text);
  if (name != "ppm" && name != "da")
    Refuse(place, "tolerance_unit \"" + text + "\" is not \"ppm\" or \"da\"");
  return {*width, name == "ppm"};
}

source::Range EndsOf(const Entry& entry) {
  if (!entry.Has("mz_start") || !entry.Has("mz_end"))
    Refuse(entry.place, "mz_start and mz_end belong together");
  for (const char* const name : {"mz", "tolerance", "tolerance_unit"}) {
    if (entry.Has(name))
      Refuse(entry.place,
             std::string("mz_start and mz_end are the range; ") + name + " cannot be given, too");
  }
  return RangeOf(entry, "mz_start", "mz_end", {});
}

Target TargetOf(const Entry& entry, Tolerance tolerance) {
  Target target;
  if (entry.Has("mz_start") || entry.Has("mz_end")) {
    target.range = EndsOf(entry);
  } else {
    target.mz = NumberOf(entry, "mz");
    if (!target.mz) Refuse(entry.place, "there is neither mz nor mz_start and mz_end");
    target.range = RangeAround(*target.mz, ToleranceOf(entry, tolerance));
  }
  if (entry.Has("rt_start") || entry.Has("rt_end"))
    target.minutes = RangeOf(entry, "rt_start", "rt_end", {-kInfinity, kInfinity});
  const auto comment = entry.values.find("comment");
  if (comment != entry.values.end()) target.comment = comment->second.text;
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

std::vector<std::string_view> NamesIn(const Place& place, std::string_view line) {
  std::vector<std::string_view> names = Fields(line);
  for (auto name = names.begin(); name != names.end(); ++name)
    RequireFirst(place, *name, std::find(names.begin(), name, *name) == name);
  const auto has = [&](std::string_view name) { return std::ranges::find(names, name) != names.end(); };
  if (!has("mz") && !has("mz_start"))
    Refuse(place, "no column is named mz, or mz_start and mz_end; names have tabs between them");
  return names;
}

std::vector<Entry> EntriesOfTsv(std::string_view path, std::string_view text) {
  std::vector<Entry> entries;
  std::vector<std::string_view> names;
  Place place = {path, 0};
  for (const std::string_view line : LinesOf(path, text)) {
    ++place.line;
    if (line.empty()) continue;
    if (names.empty()) {
      names = NamesIn(place, line);
      continue;
    }
    const std::vector<std::string_view> fields = Fields(line);
    if (fields.size() > names.size()) Refuse(place, "there are more values than names in the first line");
    Entry& entry = entries.emplace_back(Entry{place});
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!fields[i].empty()) entry.values.emplace(names[i], Named{place, std::string(fields[i])});
    }
  }
  return entries;
}

// Gathers the entries of a JSON list while it is parsed, when their lines are known.
class JsonEntries {
 public:
  JsonEntries(std::string_view path, std::string_view text)
      : text_(text), stream_(std::string(text)), here_{path, 1} {}

  std::vector<Entry> Read() {
    try {
      std::ignore = json::parse(stream_, [this](int depth, Event event, const json& parsed) {
        Take(depth, event, parsed);
        return true;
      });
    } catch (const json::out_of_range&) {
      Refuse(Here(), "a number is beyond the range of numbers");
    } catch (const json::parse_error&) {
      Refuse(Here(), "this is not JSON");
    }
    return std::move(entries_);
  }

 private:
  using Event = json::parse_event_t;

  void Take(int depth, Event event, const json& parsed) {
    const bool isEnd = event == Event::object_end || event == Event::array_end;
    if (depth == 0 && !isEnd && event != Event::array_start) Refuse(Here(), "the targets are not a list");
    if (isEnd || depth == 0 || depth > 2) return;
    if (depth == 1) {
      if (event != Event::object_start) Refuse(Here(), "this is not an object");
      entries_.push_back({Here()});
      names_.clear();
    } else if (event == Event::key) {
      name_ = parsed.get<std::string>();
      RequireFirst(Here(), name_, names_.insert(name_).second);
    } else if (!(event == Event::value && parsed.is_null())) {
      Keep(event, parsed);
    }
  }

  // Names that nobody reads may have any values.
  void Keep(Event event, const json& parsed) {
    if (std::ranges::find(kNames, name_) == kNames.end()) return;
    const bool isNumber = std::ranges::find(kNumbers, name_) != kNumbers.end();
    if (event != Event::value) {
      Refuse(Here(), name_ + " is " + (event == Event::array_start ? "a list" : "an object") + ", not " +
                         (isNumber ? "a number" : "text"));
    }
    if (parsed.is_string() && isNumber) RefuseNumber(Here(), name_, parsed.dump());
    entries_.back().values[name_] = {Here(), parsed.is_string() ? parsed.get<std::string>() : parsed.dump()};
  }

  // The line of the last character that was read, or of the one before it, since a number ends with what
  // follows it.
  Place Here() {
    const auto read = static_cast<std::size_t>(stream_.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in));
    for (; counted_ + 1 < read; ++counted_) here_.line += text_[counted_] == '\n' ? 1 : 0;
    return here_;
  }

  std::string_view text_;
  std::istringstream stream_;
  std::size_t counted_ = 0;  // characters of which `here_` knows
  Place here_;
  std::vector<Entry> entries_;
  std::string name_;             // of the value that comes next
  std::set<std::string> names_;  // in the last object
};

}  // namespace

source::Range RangeAround(double mz, Tolerance tolerance) {
  double delta = tolerance.isPpm ? mz * tolerance.width / 1e6 : tolerance.width;
  if (std::isinf(delta)) delta = mz * (tolerance.width / 1e6);  // the product alone is too large
  return {mz - delta, mz + delta};
}

std::vector<Target> ReadTargets(const std::string& path, Tolerance tolerance) {
  const std::string text = ReadListFile(path, "targets");
  const std::size_t first = text.find_first_not_of(" \t\n");
  const bool isJson = first != text.npos && (text[first] == '[' || text[first] == '{');
  std::vector<Target> targets;
  for (const Entry& entry : isJson ? JsonEntries(path, text).Read() : EntriesOfTsv(path, text))
    targets.push_back(TargetOf(entry, tolerance));
  if (targets.empty()) Refuse(path, "there are no targets");
  return targets;
}

}  // namespace zrml::tool
