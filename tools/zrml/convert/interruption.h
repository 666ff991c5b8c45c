// The user's wish to stop (Ctrl-C, a termination signal), seen between two pieces of work so that what was
// begun can be removed.
#pragma once

namespace zrml {

/// Thrown once the wish is seen; all that is left to do is to clean up and to call EndByInterruption.
struct Interrupted {};

/// While it lives, the first such wish is noted; a second one ends the program at once.
class InterruptionWatch {
 public:
  InterruptionWatch();
  InterruptionWatch(const InterruptionWatch&) = delete;
  InterruptionWatch& operator=(const InterruptionWatch&) = delete;
  ~InterruptionWatch();
};

bool IsInterrupted();
void ThrowIfInterrupted();

/// Ends the program as the noted signal would have.
[[noreturn]] void EndByInterruption();

}  // namespace zrml
