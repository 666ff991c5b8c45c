#include "tools/zrml/source_list.h"

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "common/text.h"
#include "convert/native_path.h"
#include "tools/zrml/command.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/open_source.h"
#include "tools/zrml/output.h"

namespace zrml::tool {
namespace {

using convert::SystemPath;

// Any of them makes a folder a raw directory, whole or not.
constexpr std::array<const char*, 6> kRawFiles = {"_HEADER.TXT",  "_header.txt",  "_FUNCTNS.INF",
                                                  "_functns.inf", "_FUNC001.DAT", "_func001.dat"};

struct FoundEntry {
  std::string path;
  bool isFolder = false;

  bool operator<(const FoundEntry& other) const { return path < other.path; }
};

bool IsRawDirectory(const std::string& path) {
  if (ToLower(path).ends_with(".raw")) return true;
  const SystemPath folder = platform::FromUtf8Path(path);
  return std::any_of(kRawFiles.begin(), kRawFiles.end(), [&](const char* file) {
    return platform::IsThere(platform::PathIn(folder, platform::FromUtf8Path(file)));
  });
}

// In reverse order, for a stack. Links to folders are left alone: they may lead in circles.
std::vector<FoundEntry> EntriesOf(const std::string& folder, std::string& error) {
  std::vector<FoundEntry> entries;
  for (const platform::FolderEntry& entry : platform::ListFolder(platform::FromUtf8Path(folder), error)) {
    if (entry.isFolder && entry.isLink) continue;
    entries.push_back({convert::InFolder(folder, platform::ToUtf8Path(entry.name)), entry.isFolder});
  }
  std::sort(entries.rbegin(), entries.rend());
  return entries;
}

// A folder that cannot be listed is treated as a source, which will fail and say why.
void Search(const std::string& folder, std::vector<std::string>& sources) {
  std::vector<FoundEntry> waiting = {{folder, true}};
  while (!waiting.empty()) {
    const FoundEntry entry = std::move(waiting.back());
    waiting.pop_back();
    if (!entry.isFolder) {
      if (ToLower(entry.path).ends_with(".rpt")) sources.push_back(entry.path);
      continue;
    }
    std::string error;
    const bool isRaw = IsRawDirectory(entry.path);
    const std::vector<FoundEntry> inside = isRaw ? std::vector<FoundEntry>() : EntriesOf(entry.path, error);
    if (isRaw || !error.empty()) sources.push_back(entry.path);
    waiting.insert(waiting.end(), inside.begin(), inside.end());
  }
}

// Also of a folder's path that ends with separators.
SystemPath OwnName(SystemPath path) {
  while (!path.empty() && convert::NameOf(path).empty()) path.pop_back();
  return convert::NameOf(path);
}

}  // namespace

CLI::Option* AddSourceArguments(CLI::App& options, SourceArguments& arguments) {
  CLI::Option* const path =
      options
          .add_option(
              "PATH", arguments.paths,
              "The data sources: raw directories, data files of them, report files; with -r also folders")
          ->option_text("REQUIRED ...")
          ->required();
  options.add_flag("-r,--recursive", arguments.isSearched, "Search folders for sources");
  return path;
}

std::vector<std::string> ListSources(const SourceArguments& arguments) {
  std::vector<std::string> sources;
  for (const std::string& path : arguments.paths) {
    const std::size_t before = sources.size();
    if (!arguments.isSearched || path.empty() || !platform::IsDirectory(platform::FromUtf8Path(path))) {
      sources.push_back(path);
      continue;
    }
    Search(path, sources);
    if (sources.size() != before) continue;
    if (arguments.paths.size() == 1) throw Failure(ExitStatus::kNoProvider, "there is no source in " + path);
    sources.push_back(path);  // which will fail
  }
  return sources;
}

void LeaveOutRepeats(std::vector<std::string>& sources, const std::string& what, bool isQuiet) {
  std::map<std::pair<platform::FileId, platform::SystemPath>, std::string> known;
  std::erase_if(sources, [&](const std::string& source) {
    const platform::SystemPath path = platform::FromUtf8Path(source);
    const std::optional<platform::FileId> id = platform::IdOf(path);
    if (!id) return false;
    const auto [first, isNew] = known.emplace(std::pair(*id, OwnName(path)), source);
    if (isNew) return false;
    const bool isSame = first->second == source;
    const std::string repeat =
        isSame ? source + " is given twice" : source + " and " + first->second + " are the same source";
    if (!isQuiet) PrintError(repeat + ", which is " + what + " once");
    return true;
  });
}

std::unique_ptr<source::Source> OpenListed(const std::string& path) {
  try {
    return OpenSource(path);
  } catch (const Failure& failure) {
    const bool isOther = failure.status == ExitStatus::kNoProvider &&
                         platform::IsDirectory(platform::FromUtf8Path(path)) && !IsRawDirectory(path);
    if (!isOther) throw;
    throw Failure(failure.status, failure.message + "; -r searches it for sources");
  }
}

void ForEachSource(const std::vector<std::string>& sources, const std::string& are,
                   const std::function<void(const std::string& source)>& work) {
  ForEach(sources, "sources", are, [&](std::size_t index) { work(sources[index]); });
}

void PrintEachSource(const SourceArguments& arguments, bool isJson, const std::string& are, Output& out,
                     const std::function<void(const std::string& source, JsonWriter& json)>& print) {
  const std::vector<std::string> sources = ListSources(arguments);
  JsonWriter json(out);
  std::optional<Failure> failure;
  const auto printAll = [&] {
    try {
      ForEachSource(sources, are, [&](const std::string& path) { print(path, json); });
    } catch (const Failure& thrown) {
      failure = thrown;
    }
  };
  isJson&& arguments.IsList() ? json.Array(printAll) : printAll();
  if (!json.IsEmpty()) json.Finish();
  if (!failure) return;
  out.Finish();
  throw Failure(*failure);
}

Failure SomeFailed(const std::vector<std::string>& failed, std::size_t count, const std::string& what,
                   const std::string& are) {
  std::string names;
  for (const std::string& name : failed) names += (names.empty() ? "" : ", ") + name;
  return {ExitStatus::kSomeFailed, std::to_string(failed.size()) + " of " + std::to_string(count) + ' ' +
                                       what + ' ' + are + ": " + names};
}

void ForEach(const std::vector<std::string>& names, const std::string& what, const std::string& are,
             const std::function<void(std::size_t index)>& work) {
  std::vector<std::string> failed;
  for (std::size_t i = 0; i < names.size(); ++i) {
    try {
      work(i);
      continue;
    } catch (const Failure& failure) {
      if (names.size() == 1) throw;
      PrintError(failure.message);
    } catch (const std::bad_alloc&) {
      if (names.size() == 1) throw;
      PrintError("not enough memory for " + names[i]);
    }
    failed.push_back(names[i]);
  }
  if (!failed.empty()) throw SomeFailed(failed, names.size(), what, are);
}

}  // namespace zrml::tool
