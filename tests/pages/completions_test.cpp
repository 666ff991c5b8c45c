// Completions and pages of options that are made up here: those that the program has at present need not be
// of every kind.
#include "tools/pages/completions.h"

#include <gtest/gtest.h>

#include "tools/pages/man_page.h"

namespace {

using zrml::pages::Command;
using zrml::pages::Option;

std::vector<Command> Commands() {
  Command program;
  program.usage = "zrml [OPTIONS] COMMAND";
  Command command;
  command.name = "make";
  command.description = "Makes 'it'";
  command.usage = "zrml make [OPTIONS]";
  command.options = {
      {.names = {"-f", "--format"}, .value = "one|two-2", .description = "A [format]: such"},
      {.names = {"--level"}, .value = "[LIST]", .description = ".5 or \\"},
      {.names = {"--range"}, .value = "NM | LO-HI", .description = "A range", .isRequired = true},
      {.names = {"--flag"}, .value = {}, .description = "A flag"},
  };
  return {program, command};
}

void ExpectHas(const std::string& text, const std::string& line) {
  EXPECT_NE(text.find(line), text.npos) << line << "\nin\n" << text;
}

TEST(Completions, Bash) {
  const std::string text = zrml::pages::BashCompletion(Commands());
  ExpectHas(
      text,
      "    make:-f:*|make:--format:*) mapfile -t COMPREPLY < <(compgen -W 'one two-2' -- \"$word\") ;;\n");
  EXPECT_EQ(text.find("make:--level:"), text.npos) << "another option may follow at once";
  EXPECT_EQ(text.find("make:--flag:"), text.npos);
  ExpectHas(text, "    make:--range:*) : ;;\n");
  ExpectHas(text,
            "make:*:-*) mapfile -t COMPREPLY < <(compgen -W '-f --format --level --range --flag' -- "
            "\"$word\") ;;\n");
}

TEST(Completions, Zsh) {
  const std::string text = zrml::pages::ZshCompletion(Commands());
  ExpectHas(text, "'make:Makes '\\''it'\\'''\n");
  ExpectHas(text, "'(-f --format)-f+[A \\[format\\]\\: such]:one|two-2:(one two-2)'");
  ExpectHas(text, "'(-f --format)--format=[A \\[format\\]\\: such]:one|two-2:(one two-2)'");
  ExpectHas(text, "'(--level)--level=[.5 or \\\\]::\\[LIST\\]: '");
  ExpectHas(text, "'(--flag)--flag[A flag]'");
}

TEST(Pages, ManualPage) {
  const std::string text = zrml::pages::CommandPage(Commands().back(), "1.2.3");
  ExpectHas(text, ".TH ZRML\\-MAKE 1 \"\" \"zrml 1.2.3\"");
  ExpectHas(text, ".TP\n\\fB\\-f\\fR, \\fB\\-\\-format\\fR one|two\\-2\nA [format]: such\n");
  ExpectHas(text, ".TP\n\\fB\\-\\-level\\fR [LIST]\n\\&.5 or \\e\n");
  ExpectHas(text, ".TP\n\\fB\\-\\-range\\fR NM | LO\\-HI\nA range (required)\n");
}

}  // namespace
