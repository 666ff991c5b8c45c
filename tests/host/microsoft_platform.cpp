#include "tests/host/microsoft_platform.h"

extern "C" {
int _fltused = 0;  // the compiler refers to it in code with floating point

void* memset(void* target, int value, size_t size) {
  for (size_t i = 0; i < size; ++i)
    static_cast<volatile unsigned char*>(target)[i] = static_cast<unsigned char>(value);
  return target;
}

void* memcpy(void* target, const void* source, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    static_cast<volatile unsigned char*>(target)[i] = static_cast<const volatile unsigned char*>(source)[i];
  }
  return target;
}

void Start() {
  wchar_t* line = GetCommandLineW();
  microsoft_host::NextArgument(line);
  microsoft_host::Main(line);
  microsoft_host::Exit(0);
}
}

void operator delete(void* block, size_t) noexcept { microsoft_host::Release(block); }
void operator delete(void* block) noexcept { microsoft_host::Release(block); }

namespace microsoft_host {
namespace {

void* (*runtimeMalloc)(size_t) = nullptr;
void (*runtimeFree)(void*) = nullptr;

char buffer[1 << 16];
unsigned used = 0;

void Flush() {
  constexpr unsigned kStandardOutput = static_cast<unsigned>(-11);
  unsigned written = 0;
  WriteFile(GetStdHandle(kStandardOutput), buffer, used, &written, nullptr);
  used = 0;
}

}  // namespace

void UseProcessHeap() {}

void UseRuntimeHeap() {
  void* const runtime = LoadLibraryW(L"ucrtbase.dll");
  LoadLibraryW(L"msvcp140.dll");
  runtimeMalloc = reinterpret_cast<void* (*)(size_t)>(GetProcAddress(runtime, "malloc"));
  runtimeFree = reinterpret_cast<void (*)(void*)>(GetProcAddress(runtime, "free"));
}

void* Allocate(size_t bytes) {
  return runtimeMalloc != nullptr ? runtimeMalloc(bytes) : HeapAlloc(GetProcessHeap(), 0, bytes);
}

void Release(void* block) {
  if (runtimeFree != nullptr) return runtimeFree(block);
  if (!HeapFree(GetProcessHeap(), 0, block)) Fail("block is not of the process heap");
}

void Print(const char* text, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    if (used == sizeof(buffer)) Flush();
    buffer[used++] = text[i];
  }
}

void Print(const char* text) {
  size_t size = 0;
  while (text[size] != 0) ++size;
  Print(text, size);
}

void Exit(unsigned status) {
  Flush();
  ExitProcess(status);
}

void Fail(const char* what) {
  Print("FAILED: ");
  Print(what);
  Print("\n");
  Exit(1);
}

wchar_t* NextArgument(wchar_t*& line) {
  while (*line == L' ') ++line;
  const wchar_t end = *line == L'"' ? L'"' : L' ';
  if (end == L'"') ++line;
  wchar_t* const argument = line;
  while (*line != 0 && *line != end) ++line;
  if (*line != 0) *line++ = 0;
  return argument;
}

Plugin LoadPlugin(const wchar_t* path) {
  void* const module = LoadLibraryW(path);
  if (module == nullptr) Fail("the plug-in does not load");
  void* const function = GetProcAddress(module, "GetInstance");
  if (function == nullptr) Fail("the plug-in has no GetInstance");
  return {module, reinterpret_cast<GetInstanceFunction>(function)};
}

DataServer* Plugin::Create(unsigned provider) const {
  DataServer* server = nullptr;
  if (!getInstance(provider, &server)) Fail("GetInstance");
  return server;
}

void UnloadPlugin(const Plugin& plugin) {
  if (!FreeLibrary(plugin.module)) Fail("the plug-in does not unload");
}

}  // namespace microsoft_host
