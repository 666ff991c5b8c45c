// zrml: a command-line host for the plug-in.
#include "tools/zrml/command_line.h"
#include "tools/zrml/host_system.h"

int main(int argc, char** argv) {
  return static_cast<int>(zrml::RunCommandLine(zrml::ProgramArguments(argc, argv)));
}
