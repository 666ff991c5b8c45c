// zrml: mass-spectrometry data at the command line.
#include "tools/zrml/command_line.h"
#include "tools/zrml/host_system.h"

int main(int argc, char** argv) {
  return static_cast<int>(zrml::tool::RunCommandLine(zrml::tool::ProgramArguments(argc, argv)));
}
