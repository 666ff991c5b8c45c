#include "tests/support/text_writer.h"

#include <array>
#include <charconv>

namespace zrml {

std::string Shortest(double value) {
  std::array<char, 32> text;
  const std::to_chars_result end = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), end.ptr};
}

FileBytes WriteLines(const std::vector<std::string>& lines, LineEnd lineEnd, LastLine lastLine) {
  const std::string_view end = lineEnd == LineEnd::kLf ? "\n" : "\r\n";
  std::string text;
  for (const std::string& line : lines) text.append(line).append(end);
  if (lastLine == LastLine::kUnended && !lines.empty()) text.resize(text.size() - end.size());
  return TextToBytes(text);
}

std::string HeaderLine(std::string_view key, std::string_view value) {
  return "$$ " + std::string(key) + ": " + std::string(value);
}

std::string CalLine(std::string_view kind, const std::vector<double>& coefficients, Domain domain) {
  std::string values;
  for (const double coefficient : coefficients) {
    values += (values.empty() ? "" : ",") + Shortest(coefficient);
  }
  if (domain == Domain::kRoot) values += ",T1";
  return HeaderLine("Cal " + std::string(kind), values);
}

std::string CreatorLine(std::string_view version) { return "Created by MassLynx v" + std::string(version); }

std::string FunctionHeading(int number, std::string_view label) {
  return "Function Parameters - Function " + std::to_string(number) + " - " + std::string(label);
}

}  // namespace zrml
