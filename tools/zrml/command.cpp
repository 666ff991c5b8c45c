#include "tools/zrml/command.h"

#include <charconv>

namespace zrml::tool {
std::optional<int> ParseNumber(const std::string& text, int most) {
  int number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end && number >= 1 && number <= most
             ? std::optional(number)
             : std::nullopt;
}

CLI::Validator IsNotEmpty() {
  return CLI::Validator([](std::string& text) { return std::string(text.empty() ? "is empty" : ""); }, "");
}

Command::Command(CLI::App& parser, const std::string& name, const std::string& description)
    : options_(*parser.add_subcommand(name, description)) {
  options_.group("Commands");
}

Command::~Command() = default;

CLI::Option* AddNumber(CLI::App& options, const std::string& option, int& number,
                       const std::string& description, int most) {
  const auto parse = [most](const std::string& text) { return ParseNumber(text, most); };
  const std::string expected = "a whole number from 1 to " + std::to_string(most);
  return AddParsed(options, option, number, parse, expected, description)->option_text("N");
}

SourceCommand::SourceCommand(CLI::App& parser, const std::string& name, const std::string& description)
    : Command(parser, name, description) {
  Options()
      .add_option("PATH", path_, "The data source: a raw directory, a data file of one, or a report file")
      ->option_text("REQUIRED")
      ->required();
  Options().add_flag("--json", wantsJson_, "Print JSON, for programs");
}

void SourceCommand::Print(const Printout& printout, Output& out) const {
  wantsJson_ ? PrintJson(printout, out) : PrintText(printout, out);
}

FunctionCommand::FunctionCommand(CLI::App& parser, const std::string& name, const std::string& description)
    : SourceCommand(parser, name, description) {
  AddParsed(Options(), "--function", function_, source::ParseFunctionId, "a function such as 4, p2 or p2.2",
            "The function, by the number of its files; p2 is processed data")
      ->option_text("N");
  AddNumber(Options(), "--sample", sample_, "The sample, counted from 1; the first by default");
}

FunctionPosition FunctionCommand::Find(source::Source& source) const {
  return FindChosen(source, sample_, function_);
}

bool FunctionCommand::IsAbsorbance(source::Source& source, int sample) const {
  if (!source.HasAbsorbance(sample)) return false;
  return function_ ? *function_ == source.AbsorbanceFunction(sample).id : source.Functions(sample).empty();
}

}  // namespace zrml::tool
