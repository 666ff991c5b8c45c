// What the user asks of `zrml convert`: the options of the command line, parsed and checked.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "convert/convert.h"
#include "tools/zrml/source_list.h"

namespace zrml::tool {

struct ConvertRequest {
  SourceArguments sources = {};
  std::string list = {};                // the file that lists more of them
  std::vector<std::string> paths = {};  // of the sources, once the request is completed
  int sample = 0;                       // from 1; 0 for all
  int threads = 0;                      // 0 when not given, until the request is completed

  std::string folder = {};  // of the files; empty for the current one
  std::string file = {};    // empty unless named
  bool isToStandardOutput = false;
  std::optional<convert::Format> format = {};  // none when not given, until the request is completed
  bool isForced = false;
  bool isKept = false;  // keep files that are whole and newer than their source
  bool isGzipped = false;

  std::string log = {};  // empty for none
  bool isQuiet = false;
  bool isVerbose = false;
  convert::Options conversion = {};
};

/// Adds the options to the parser, which fills `request`.
void AddConvertOptions(CLI::App& options, ConvertRequest& request);

/// The extension of files: ".mzML".
std::string ExtensionOf(convert::Format format);

/// Fills in what was not given. Throws a Failure when options do not go together.
void Complete(ConvertRequest& request);

}  // namespace zrml::tool
