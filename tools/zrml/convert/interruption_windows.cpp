#include <windows.h>
// after windows.h, which it needs
#include <atomic>

#include "tools/zrml/convert/interruption.h"

namespace zrml {
namespace {

std::atomic<bool> isNoted = false;

// The second time: the system's own handler, which ends the program.
BOOL WINAPI Note(DWORD) { return isNoted.exchange(true) ? FALSE : TRUE; }

}  // namespace

InterruptionWatch::InterruptionWatch() { ::SetConsoleCtrlHandler(Note, TRUE); }
InterruptionWatch::~InterruptionWatch() { ::SetConsoleCtrlHandler(Note, FALSE); }

void ThrowIfInterrupted() {
  if (isNoted) throw Interrupted();
}

void EndByInterruption() {
  constexpr UINT kEndedByControlC = 0xC000013A;
  ::ExitProcess(kEndedByControlC);
}

}  // namespace zrml
