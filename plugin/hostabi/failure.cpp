#include "plugin/hostabi/failure.h"

#include <windows.h>

namespace zrml::hostabi {
namespace {

// A function of the runtime library shared by hosts of this compiler family; null when it is not loaded.
FARPROC RuntimeFunction(const char* decoratedName) {
  const HMODULE runtime = ::GetModuleHandleW(L"msvcp140.dll");
  return runtime != nullptr ? ::GetProcAddress(runtime, decoratedName) : nullptr;
}

}  // namespace

void RaiseInHost(Failure failure) {
  if (failure == Failure::kOutOfMemory) {
    const FARPROC raise = RuntimeFunction("?_Xbad_alloc@std@@YAXXZ");
    if (raise != nullptr) reinterpret_cast<void (*)()>(reinterpret_cast<void*>(raise))();
  } else if (failure == Failure::kOutOfRange) {
    const FARPROC raise = RuntimeFunction("?_Xout_of_range@std@@YAXPEBD@Z");
    if (raise != nullptr)
      reinterpret_cast<void (*)(const char*)>(reinterpret_cast<void*>(raise))("index out of range");
  }
}

}  // namespace zrml::hostabi
