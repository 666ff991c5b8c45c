// For preloading into zrml: counts how often it asks the system about paths, and for connections, and writes
// both numbers to the file named in ZRML_CALLS when the program ends.
#undef _FORTIFY_SOURCE  // whose headers define the functions that are replaced here
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::atomic<long> calls = 0;
std::atomic<long> accepts = 0;

void WriteNumbers() {
  const char* const path = std::getenv("ZRML_CALLS");
  std::FILE* const file = path != nullptr ? std::fopen(path, "w") : nullptr;
  if (file == nullptr) return;
  std::fprintf(file, "%ld %ld", calls.load(), accepts.load());
  std::fclose(file);
}

struct AtTheEnd {
  ~AtTheEnd() { WriteNumbers(); }
} atTheEnd;

template <class Function>
Function* SystemFunction(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int stat(const char* path, struct stat* facts) noexcept {
  ++calls;
  return SystemFunction<int(const char*, struct stat*)>("stat")(path, facts);
}

extern "C" __attribute__((visibility("default"))) int stat64(const char* path,
                                                             struct stat64* facts) noexcept {
  ++calls;
  return SystemFunction<int(const char*, struct stat64*)>("stat64")(path, facts);
}

extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
  // The third argument, or what stands in its place.
  __builtin_va_list arguments;
  __builtin_va_start(arguments, flags);
  const auto mode = __builtin_va_arg(arguments, unsigned);
  __builtin_va_end(arguments);
  ++calls;
  return SystemFunction<int(const char*, int, ...)>("open")(path, flags, mode);
}

extern "C" __attribute__((visibility("default"))) int lstat(const char* path, struct stat* facts) noexcept {
  ++calls;
  return SystemFunction<int(const char*, struct stat*)>("lstat")(path, facts);
}

extern "C" __attribute__((visibility("default"))) int accept(int socket, struct sockaddr* address,
                                                             socklen_t* length) {
  ++accepts;
  return SystemFunction<int(int, struct sockaddr*, socklen_t*)>("accept")(socket, address, length);
}

extern "C" __attribute__((visibility("default"))) void _Exit(int status) noexcept {
  WriteNumbers();  // an end without destructors
  ::_exit(status);
}
