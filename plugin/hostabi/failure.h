// What becomes of a failure inside a call of the host: no exception of ours may leave the call, since the
// host's compiler could not catch it.
#pragma once

#include <new>
#include <stdexcept>

namespace zrml::hostabi {

enum class Failure { kNone, kOutOfMemory, kOutOfRange, kOther };

/// Runs `work` and tells how it failed. Never inlined: nothing of it may be left on the stack when
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
/// kNone and kOther, returns. To be called from frames that have nothing to clean up.
void RaiseInHost(Failure failure);

}  // namespace zrml::hostabi
