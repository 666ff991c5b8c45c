// The sources of a command: the named ones and, with -r, those in folders.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "source/source.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/json_writer.h"

namespace zrml::tool {

struct SourceArguments {
  std::vector<std::string> paths = {};
  bool isSearched = false;  ///< folders are searched for sources

  /// Whether the answer is a list, also when there is only one source in it.
  bool IsList() const { return isSearched || paths.size() > 1; }
};

/// PATH... and -r, which fill `arguments`. The option of PATH.
CLI::Option* AddSourceArguments(CLI::App& options, SourceArguments& arguments);

/// In the order given; those of a folder by name, without those inside raw directories and beyond links.
/// Throws a Failure when a searched folder holds none.
std::vector<std::string> ListSources(const SourceArguments& arguments);

/// Leaves out what is given again, also by another path, with a line on standard error: "is converted once".
/// Links of other names stay: what is made of them has these names.
void LeaveOutRepeats(std::vector<std::string>& sources, const std::string& what, bool isQuiet);

/// As OpenSource does, with advice when `path` is a folder of something else.
std::unique_ptr<source::Source> OpenListed(const std::string& path);

/// Calls `work` for each source; one that fails does not stop the others. The failure of a single source
/// is passed on. Of several, each is printed, and at the end a Failure says how many `are` ("are not
/// converted").
void ForEachSource(const std::vector<std::string>& sources, const std::string& are,
                   const std::function<void(const std::string& source)>& work);

/// Calls `print` for each source, as ForEachSource does. JSON is a list where the arguments are. What was
/// printed before a failure stays, and JSON is completed.
void PrintEachSource(const SourceArguments& arguments, bool isJson, const std::string& are, Output& out,
                     const std::function<void(const std::string& source, JsonWriter& json)>& print);
/// The failure of a command for some of `count` things, the names `failed`.
Failure SomeFailed(const std::vector<std::string>& failed, std::size_t count, const std::string& what,
                   const std::string& are);

/// The same as ForEachSource for other parts of a source: `names` for the Failure at the end, `what` as its
/// noun ("samples of plate.rpt").
void ForEach(const std::vector<std::string>& names, const std::string& what, const std::string& are,
             const std::function<void(std::size_t index)>& work);

}  // namespace zrml::tool
