#include "tools/zrml/thread_option.h"

#include <algorithm>

#include "convert/threads.h"
#include "tools/zrml/command.h"

namespace zrml::tool {
namespace {

constexpr int kMostThreads = 256;
constexpr int kMostThreadsUnasked = 8;

}  // namespace

void AddThreadOption(CLI::App& options, int& threads) {
  AddNumber(options, "--threads", threads,
            "How many threads in all; by default as many as there are processors, at most 8", kMostThreads);
}

int ThreadCount(int asked) {
  return asked != 0 ? asked : std::min(convert::ProcessorCount(), kMostThreadsUnasked);
}

}  // namespace zrml::tool
