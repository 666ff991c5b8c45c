#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

#include "tools/zrml/interruption.h"

namespace zrml::tool {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

std::atomic<int> notedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);  // a handler may write it

// A signal just before a write that waits for its reader does not end the wait, so another follows, and
// again.
void Remind(int) { ::alarm(1); }

// A second one ends the program; but a limit on processor time signals every second.
void Note(int signal) {
  if (notedSignal.exchange(signal) != 0 && signal != SIGXCPU) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);  // delivered when this returns
  }
  Remind(signal);
}

// Without SA_RESTART: waiting calls must be interrupted.
void Handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

InterruptionWatch::InterruptionWatch() {
  for (const int signal : kSignals) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;  // as in nohup
    Handle(signal, Note);
  }
  Handle(SIGALRM, Remind);
}

InterruptionWatch::~InterruptionWatch() {
  ::alarm(0);
  std::signal(SIGALRM, SIG_DFL);
  for (const int signal : kSignals) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == Note) std::signal(signal, SIG_DFL);
  }
}

bool IsInterrupted() { return notedSignal != 0; }

void EndByInterruption() {
  std::signal(notedSignal, SIG_DFL);
  std::raise(notedSignal);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace zrml::tool
