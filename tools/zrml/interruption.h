// The user's wish to stop (Ctrl-C, a termination signal), seen between two pieces of work so that what was
// begun can be removed.
#pragma once

namespace zrml::tool {

/// While it lives, the first such wish is noted; a second one ends the program at once.
class InterruptionWatch {
 public:
  InterruptionWatch();
  InterruptionWatch(const InterruptionWatch&) = delete;
  InterruptionWatch& operator=(const InterruptionWatch&) = delete;
  ~InterruptionWatch();
};

/// Whether one is noted: work checks it to give up. Then only clean up and call EndByInterruption.
bool IsInterrupted();

/// Ends the program as the noted signal would have.
[[noreturn]] void EndByInterruption();

}  // namespace zrml::tool
