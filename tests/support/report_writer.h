// Builds OpenLynx reports line by line: blocks in braces after their markers. Lines are bytes: they may hold
// any value.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/text_writer.h"

namespace zrml {

/// Lines of a report; `+` concatenates them.
struct ReportLines {
  std::vector<std::string> lines;
};

ReportLines operator+(ReportLines first, const ReportLines& second);

ReportLines Line(std::string line);

/// "Time<tab>1.5" and so on.
ReportLines Keys(const std::vector<std::pair<std::string, std::string>>& keys);

/// `marker`, "{", the content, "}".
ReportLines Block(std::string_view marker, const ReportLines& content);

ReportLines SampleBlock(const ReportLines& content);
ReportLines FunctionBlock(const ReportLines& content);

/// Data lines of two numbers, as short as possible.
using ReportPairs = std::vector<std::pair<double, double>>;

/// The keys, then the "[MS]" or "[TRACE]" list in its own braces.
ReportLines SpectrumBlock(const ReportLines& keys, const ReportPairs& points);
ReportLines ChromatogramBlock(const ReportLines& keys, const ReportPairs& points);

std::string ReportText(const ReportLines& report, LineEnd lineEnd = LineEnd::kLf);

}  // namespace zrml
