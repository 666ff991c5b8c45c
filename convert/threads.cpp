#include "convert/threads.h"

#include <algorithm>

#ifdef _WIN32
#include <windows.h>
#else
#include <sched.h>
#endif

#include "convert/error.h"

namespace zrml::convert {

void* Thread::Enter(void* self) {
  static_cast<Thread*>(self)->body_();
  return nullptr;
}

Thread::Thread(std::function<void()> body) : body_(std::move(body)) {
  if (pthread_create(&thread_, nullptr, Enter, this) != 0) {
    throw Error(ErrorKind::kSystem, "the system gives no more threads");
  }
}

int ProcessorCount() {
#ifdef _WIN32
  SYSTEM_INFO info{};
  ::GetSystemInfo(&info);
  return std::max(1, static_cast<int>(info.dwNumberOfProcessors));
#else
  cpu_set_t set;
  return ::sched_getaffinity(0, sizeof set, &set) == 0 ? std::max(1, CPU_COUNT(&set)) : 1;
#endif
}

}  // namespace zrml::convert
