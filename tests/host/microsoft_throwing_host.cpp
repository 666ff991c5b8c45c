// microsoft_throwing_host PLUG-IN DIRECTORY DATA-FILE: a host whose own Resize throws while the plug-in fills
// its spectrum. The exception passes the plug-in's frames, which do not know its kind and run no clean-up. It
// must reach the host, and the plug-in must not keep anything that those frames should have released.
#include "tests/host/microsoft_platform.h"

// The runtime's table of type descriptors, normally supplied by its import library.
extern "C" void* const typeInfoTable asm("??_7type_info@@6B@");
extern "C" void* const typeInfoTable = nullptr;

extern "C" __declspec(dllimport) void* CreateFileW(const wchar_t* path, unsigned access, unsigned share,
                                                   void* security, unsigned disposition, unsigned flags,
                                                   void* pattern);

extern "C" __declspec(dllimport) int CloseHandle(void* handle);

namespace microsoft_host {
namespace {

constexpr int kPoints = 37;  // of each scan of the directory's first function

struct NoRoom {};

class ThrowingSpectrum : public MassSpectrum {
 public:
  bool Resize(int, bool, bool, bool, bool) override { throw NoRoom(); }
};

void Check(bool holds, const char* what) {
  if (!holds) Fail(what);
  Print("ok ");
  Print(what);
  Print("\n");
}

bool ThrowsNoRoom(DataServer& server) {
  ThrowingSpectrum spectrum;
  try {
    server.GetSpectrum(0, 0, 0, spectrum);
  } catch (const NoRoom&) {
    return true;
  }
  return false;
}

bool ReadsSpectrum(DataServer& server) {
  MassSpectrum spectrum;
  return server.GetSpectrum(0, 0, 0, spectrum) && spectrum.count == kPoints;
}

constexpr unsigned kShareNothing = 0;
constexpr unsigned kShareAll = 7;

// Null if it cannot be opened.
void* OpenFile(const wchar_t* path, unsigned share) {
  constexpr unsigned kRead = 0x80000000;
  constexpr unsigned kExisting = 3;
  void* const file = CreateFileW(path, kRead, share, nullptr, kExisting, 0, nullptr);
  return file != reinterpret_cast<void*>(-1) ? file : nullptr;
}

bool IsOpenNowhere(const wchar_t* path) {
  void* const file = OpenFile(path, kShareNothing);
  if (file != nullptr) CloseHandle(file);
  return file != nullptr;
}

}  // namespace

void Main(wchar_t* arguments) {
  UseRuntimeHeap();
  const Plugin plugin = LoadPlugin(NextArgument(arguments));
  const wchar_t* const directory = NextArgument(arguments);
  const wchar_t* const dataFile = NextArgument(arguments);
  void* const file = OpenFile(dataFile, kShareAll);
  Check(file != nullptr && !IsOpenNowhere(dataFile), "an open file is noticed");
  CloseHandle(file);
  DataServer* const server = plugin.Create(0);
  Check(server->Open(directory), "the directory opens");
  for (int i = 0; i < 3; ++i) {
    Check(ThrowsNoRoom(*server), "the host's own exception reaches it");
    Check(ReadsSpectrum(*server), "the next spectrum is read");
  }
  Check(ThrowsNoRoom(*server), "once more, with nothing read after it");
  Check(server->Close(), "the directory closes");
  Check(IsOpenNowhere(dataFile), "the data file is not open any more");
  delete server;
  UnloadPlugin(plugin);
}

}  // namespace microsoft_host
