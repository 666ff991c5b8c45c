#include <windows.h>

#include "common/platform/platform.h"

namespace zrml::platform {
namespace {

using MallocFunction = void* (*)(std::size_t);
using FreeFunction = void (*)(void*);

void* ProcessHeapAllocate(std::size_t bytes) { return ::HeapAlloc(::GetProcessHeap(), 0, bytes); }
void ProcessHeapFree(void* block) { ::HeapFree(::GetProcessHeap(), 0, block); }

struct SharedHeap {
  MallocFunction allocate = ProcessHeapAllocate;
  FreeFunction release = ProcessHeapFree;
};

// A host with the dynamic runtime allocates with ucrtbase.dll; one with the static runtime on the process
// heap. On Windows the two are one heap, elsewhere (Wine) they are not.
SharedHeap FindSharedHeap() {
  HMODULE runtime = nullptr;  // pinned: its blocks must always be freed by it
  if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, L"ucrtbase.dll", &runtime)) return {};
  const FARPROC allocate = ::GetProcAddress(runtime, "malloc");
  const FARPROC release = ::GetProcAddress(runtime, "free");
  if (allocate == nullptr || release == nullptr) return {};
  return {reinterpret_cast<MallocFunction>(reinterpret_cast<void*>(allocate)),
          reinterpret_cast<FreeFunction>(reinterpret_cast<void*>(release))};
}

// Chosen once, before the first block, and fixed from then on: every block returns to the heap it came from.
const SharedHeap& TheSharedHeap() {
  static const SharedHeap heap = FindSharedHeap();
  return heap;
}

}  // namespace

void* SharedHeapAllocate(std::size_t bytes) noexcept {
  return TheSharedHeap().allocate(bytes != 0 ? bytes : 1);
}
void SharedHeapFree(void* block) noexcept { TheSharedHeap().release(block); }

void PreferLargePages(void*, std::size_t) noexcept {}

}  // namespace zrml::platform
