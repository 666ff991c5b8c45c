#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>

#include "tools/zrml/convert/interruption.h"

namespace zrml {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> notedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);  // a handler may write it

void Note(int signal) { notedSignal = signal; }

}  // namespace

InterruptionWatch::InterruptionWatch() {
  for (const int signal : kSignals) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;  // as in nohup
    action.sa_handler = Note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

InterruptionWatch::~InterruptionWatch() {
  for (const int signal : kSignals) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == Note) std::signal(signal, SIG_DFL);
  }
}

void ThrowIfInterrupted() {
  if (notedSignal != 0) throw Interrupted();
}

void EndByInterruption() {
  std::signal(notedSignal, SIG_DFL);
  std::raise(notedSignal);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace zrml
