#include "tests/support/report_writer.h"

#include "tests/support/text_writer.h"

namespace zrml {
namespace {

ReportLines DataList(std::string_view marker, const ReportPairs& points) {
  ReportLines list;
  for (const auto& [x, y] : points) list.lines.push_back(Shortest(x) + "\t" + Shortest(y));
  return Block(marker, list);
}

}  // namespace

ReportLines operator+(ReportLines first, const ReportLines& second) {
  first.lines.insert(first.lines.end(), second.lines.begin(), second.lines.end());
  return first;
}

ReportLines Line(std::string line) { return {{std::move(line)}}; }

ReportLines Keys(const std::vector<std::pair<std::string, std::string>>& keys) {
  ReportLines lines;
  for (const auto& [key, value] : keys) lines.lines.push_back(key + "\t" + value);
  return lines;
}

ReportLines Block(std::string_view marker, const ReportLines& content) {
  return Line(std::string(marker)) + Line("{") + content + Line("}");
}

ReportLines SampleBlock(const ReportLines& content) { return Block("[SAMPLE]", content); }
ReportLines FunctionBlock(const ReportLines& content) { return Block("[FUNCTION]", content); }

ReportLines SpectrumBlock(const ReportLines& keys, const ReportPairs& points) {
  return Block("[SPECTRUM]", keys + DataList("[MS]", points));
}

ReportLines ChromatogramBlock(const ReportLines& keys, const ReportPairs& points) {
  return Block("[CHROMATOGRAM]", keys + DataList("[TRACE]", points));
}

std::string ReportText(const ReportLines& report, LineEnd lineEnd) {
  return BytesToText(WriteLines(report.lines, lineEnd));
}

}  // namespace zrml
