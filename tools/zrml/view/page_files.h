// The scripts and the style of the page, embedded by the build.
#pragma once

#include <string_view>

namespace zrml::view {

struct PageFile {
  std::string_view text;
  std::string_view sha256;  ///< in hexadecimal digits
};

extern const PageFile kPlotScript;  ///< uPlot
extern const PageFile kPageScript;
extern const PageFile kPageStyle;

}  // namespace zrml::view
