// Handles failures inside a call from the host: our exceptions must not leave the call, since code of the
// host's compiler could not catch them.
#pragma once

#include <new>
#include <stdexcept>

namespace zrml::hostabi {

enum class Failure { kNone, kOutOfMemory, kOutOfRange, kOther };

/// Runs `work` and returns how it failed. Never inlined: its frame must be gone from the stack when
/// RaiseInHost() unwinds.
template <class Work>
[[gnu::noinline]] Failure Guarded(const Work& work) noexcept {
  try {
    work();
    return Failure::kNone;
  } catch (const std::bad_alloc&) {
    return Failure::kOutOfMemory;
  } catch (const std::length_error&) {
    return Failure::kOutOfMemory;
  } catch (const std::out_of_range&) {
    return Failure::kOutOfRange;
  } catch (...) {
    return Failure::kOther;
  }
}

/// Throws the host's own exception through its runtime library, where that is loaded; otherwise, and for
/// kNone and kOther, returns. Call it only from frames that need no clean-up.
void RaiseInHost(Failure failure);

}  // namespace zrml::hostabi
