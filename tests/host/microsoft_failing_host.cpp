// microsoft_failing_host process|runtime PLUG-IN: shows what reaches a host when operations of the plug-in
// fail. Built twice: with exceptions, importing the runtime, where failures arrive as the host's own
// exceptions; and without, where the runtime is not loaded and they arrive as empty results.
#include "tests/host/microsoft_platform.h"

#ifdef __cpp_exceptions
// The runtime's table of type descriptors, normally supplied by its import library.
extern "C" void* const typeInfoTable asm("??_7type_info@@6B@");
extern "C" void* const typeInfoTable = nullptr;

namespace std {
class exception {
 public:
  virtual ~exception();
  virtual const char* what() const;

 private:
  void* data_[2];
};
class bad_alloc : public exception {};
class out_of_range : public exception {};
}  // namespace std
#endif

namespace microsoft_host {
namespace {

enum class Outcome { kReturned, kBadAlloc, kOutOfRange, kOther };

template <class Call>
Outcome OutcomeOf(const Call& call) {
#ifdef __cpp_exceptions
  try {
    call();
    return Outcome::kReturned;
  } catch (const std::bad_alloc&) {
    return Outcome::kBadAlloc;
  } catch (const std::out_of_range&) {
    return Outcome::kOutOfRange;
  } catch (...) {
    return Outcome::kOther;
  }
#else
  call();
  return Outcome::kReturned;
#endif
}

void Check(bool holds, const char* what) {
  if (!holds) Fail(what);
  Print("ok ");
  Print(what);
  Print("\n");
}

#ifdef __cpp_exceptions
constexpr Outcome kNoMemory = Outcome::kBadAlloc;
constexpr Outcome kBadIndex = Outcome::kOutOfRange;
#else
constexpr Outcome kNoMemory = Outcome::kReturned;
constexpr Outcome kBadIndex = Outcome::kReturned;
#endif

void CheckFailures(DataServer& server) {
  const WString text = L"a path that is longer than seven characters";
  bool opened = false;
  bool valid = false;
  bool read = false;
  int count = 0;
  size_t size = 1;
  Check(OutcomeOf([&] { size = server.GetProviderName().size(); }) == kNoMemory, "no memory for a string");
  if (kNoMemory == Outcome::kReturned) Check(size == 0, "the string is empty");
  Check(OutcomeOf([&] { size = server.GetProviderGuid().size(); }) == Outcome::kReturned,
        "another failure for a string");
  Check(size == 0, "that string is empty");
  Check(OutcomeOf([&] { opened = server.Open(text); }) == Outcome::kReturned && !opened,
        "another failure gives false");
  Check(OutcomeOf([&] { valid = server.ValidateSource(text); }) == kNoMemory && !valid,
        "a length out of bounds");
  Check(OutcomeOf([&] { count = server.GetScanCount(0, 0); }) == kBadIndex && count == 0,
        "an index out of range");
  MassSpectrum spectrum;
  Check(OutcomeOf([&] { read = server.GetSpectrum(0, 0, 0, spectrum); }) == kNoMemory && !read,
        "no memory for points");
  WString value = L"what was there before, longer than inside";
  Check(OutcomeOf([&] { read = server.GetMetadataValue(0, 0, text, value); }) == kNoMemory && !read,
        "no memory for a value");
  Check(value.data()[0] == L'w', "the value is untouched");
  Check(server.Close(), "the server is still usable");
}

// The upper bits of a register that carries a bool or an int are garbage.
void CheckNarrowArguments(DataServer& server) {
  using Slot = bool (*)(DataServer*, unsigned long long compute, unsigned long long sample, int function,
                        Chromatogram*);
  constexpr int kTotalIonChromatogram = 24;
  const auto slot = reinterpret_cast<Slot>((*reinterpret_cast<void***>(&server))[kTotalIonChromatogram]);
  Chromatogram chromatogram;
  constexpr unsigned long long kSampleMinus2 = 0xdeadbeeffffffffe;
  Check(slot(&server, 0xffffffffffffff01, kSampleMinus2, 0, &chromatogram), "garbage above a true");
  Check(!slot(&server, 0xffffffffffffff00, kSampleMinus2, 0, &chromatogram), "garbage above a false");
}

}  // namespace

void Main(wchar_t* arguments) {
  NextArgument(arguments)[0] == L'r' ? UseRuntimeHeap() : UseProcessHeap();
  const Plugin plugin = LoadPlugin(NextArgument(arguments));
  DataServer* const server = plugin.Create(0);
  CheckFailures(*server);
  CheckNarrowArguments(*server);
  delete server;
  UnloadPlugin(plugin);
}

}  // namespace microsoft_host
