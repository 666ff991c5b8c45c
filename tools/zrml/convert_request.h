// What the user asks of `zrml convert`: the options of the command line, parsed and checked.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "convert/convert.h"

namespace zrml::tool {

struct ConvertRequest {
  std::vector<std::string> paths = {};
  int sample = 0;   // from 1; 0 for all
  int threads = 0;  // 0 when not given, until the request is completed

  std::string folder = {};  // of the files; empty for the current one
  std::string file = {};    // empty unless named
  bool isToStandardOutput = false;
  bool isForced = false;
  bool isGzipped = false;

  bool isQuiet = false;
  bool isVerbose = false;
  convert::Options conversion = {};
};

/// Adds the options to the parser, which fills `request`.
void AddConvertOptions(CLI::App& options, ConvertRequest& request);

/// Of files: ".mzML".
std::string ExtensionOf(convert::Format format);

/// Fills in what was not given. Throws a Failure when options do not go together.
void Complete(ConvertRequest& request);

}  // namespace zrml::tool
