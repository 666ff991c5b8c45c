// The system functions that hosts built in Microsoft mode need: memory, output, the command line and module
// loading, directly from KERNEL32.
#pragma once

#include "tests/host/microsoft_types.h"

extern "C" {
__declspec(dllimport) void* GetProcessHeap();
__declspec(dllimport) void* HeapAlloc(void* heap, unsigned flags, size_t bytes);
__declspec(dllimport) int HeapFree(void* heap, unsigned flags, void* block);
__declspec(dllimport) void* GetStdHandle(unsigned which);
__declspec(dllimport) int WriteFile(void* file, const void* bytes, unsigned size, unsigned* written,
                                    void* overlapped);
__declspec(dllimport) __declspec(noreturn) void ExitProcess(unsigned status);
__declspec(dllimport) wchar_t* GetCommandLineW();
__declspec(dllimport) void* LoadLibraryW(const wchar_t* path);
__declspec(dllimport) void* GetProcAddress(void* module, const char* name);
__declspec(dllimport) int FreeLibrary(void* module);
}

namespace microsoft_host {

using GetInstanceFunction = bool (*)(unsigned long long index, DataServer** server);

/// Which heap the host's allocations come from: the process heap, as with the static runtime, or ucrtbase.dll
/// with the C++ runtime library loaded, as with the dynamic one.
void UseProcessHeap();
void UseRuntimeHeap();

/// Standard output, buffered.
void Print(const char* text, size_t size);
void Print(const char* text);

/// Writes the buffer out and ends the program.
[[noreturn]] void Exit(unsigned status);

/// The next word of a command line; blanks inside quotation marks belong to it.
wchar_t* NextArgument(wchar_t*& line);

/// The plug-in at `path`; the program ends when it cannot be loaded, or cannot be unloaded once all its
/// objects are gone.
struct Plugin {
  void* module;
  GetInstanceFunction getInstance;

  DataServer* Create(unsigned provider) const;
};
Plugin LoadPlugin(const wchar_t* path);
void UnloadPlugin(const Plugin& plugin);

/// The work of each host.
void Main(wchar_t* arguments);

}  // namespace microsoft_host
