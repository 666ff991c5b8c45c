#include <windows.h>
// after windows.h, which it needs
#include <atomic>

#include "tools/zrml/interruption.h"

namespace zrml::tool {
namespace {

std::atomic<bool> isNoted = false;

// The second time: the system's own handler, which ends the program. So does the system itself once this
// returns when the console is closed, the user logs off or the machine shuts down: then it waits until the
// program has cleaned up and ended, or the system loses patience.
BOOL WINAPI Note(DWORD event) {
  const bool isSecond = isNoted.exchange(true);
  if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) return isSecond ? FALSE : TRUE;
  ::Sleep(INFINITE);
  return TRUE;
}

}  // namespace

InterruptionWatch::InterruptionWatch() { ::SetConsoleCtrlHandler(Note, TRUE); }
InterruptionWatch::~InterruptionWatch() { ::SetConsoleCtrlHandler(Note, FALSE); }

bool IsInterrupted() { return isNoted; }

void EndByInterruption() {
  constexpr UINT kEndedByControlC = 0xC000013A;
  ::ExitProcess(kEndedByControlC);
}

}  // namespace zrml::tool
