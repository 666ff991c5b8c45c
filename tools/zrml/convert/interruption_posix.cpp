#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

#include "tools/zrml/convert/interruption.h"

namespace zrml {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

std::atomic<int> notedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);  // a handler may write it

// A signal just before a write that waits for its reader does not end the wait, so another follows, and
// again.
void Remind(int) { ::alarm(1); }

void Note(int signal) {
  notedSignal = signal;
  Remind(signal);
}

// Without SA_RESTART: what waits is to be interrupted.
void Handle(int signal, void (*handler)(int), unsigned flags) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = static_cast<int>(flags);
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

InterruptionWatch::InterruptionWatch() {
  for (const int signal : kSignals) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;  // as in nohup
    Handle(signal, Note, SA_RESETHAND);
  }
  Handle(SIGALRM, Remind, 0);
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

void ThrowIfInterrupted() {
  if (IsInterrupted()) throw Interrupted();
}

void EndByInterruption() {
  std::signal(notedSignal, SIG_DFL);
  std::raise(notedSignal);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace zrml
