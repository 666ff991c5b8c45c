// Threads and their synchronisation. POSIX threads on every system: the Windows compiler's library has no
// std::thread.
#pragma once

#include <functional>
#include <pthread.h>

namespace zrml::convert {

class Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  ~Mutex() { pthread_mutex_destroy(&mutex_); }

 private:
  friend class Lock;
  friend class Unlock;
  friend class Condition;
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

/// Holds a mutex while it lives.
class Lock {
 public:
  explicit Lock(Mutex& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_.mutex_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  ~Lock() { pthread_mutex_unlock(&mutex_.mutex_); }

 private:
  friend class Condition;
  friend class Unlock;
  Mutex& mutex_;
};

/// Releases another's Lock while it lives.
class Unlock {
 public:
  explicit Unlock(Lock& lock) : lock_(lock) { pthread_mutex_unlock(&lock_.mutex_.mutex_); }
  Unlock(const Unlock&) = delete;
  Unlock& operator=(const Unlock&) = delete;
  ~Unlock() { pthread_mutex_lock(&lock_.mutex_.mutex_); }

 private:
  Lock& lock_;
};

class Condition {
 public:
  Condition() = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;
  ~Condition() { pthread_cond_destroy(&condition_); }

  /// Returns at once, or after a notification that makes it so, with `isTrue` true.
  template <class Predicate>
  void Wait(Lock& lock, Predicate isTrue) {
    while (!isTrue()) pthread_cond_wait(&condition_, &lock.mutex_.mutex_);
  }
  void NotifyAll() { pthread_cond_broadcast(&condition_); }

 private:
  pthread_cond_t condition_ = PTHREAD_COND_INITIALIZER;
};

/// Runs `body`, which must not throw, until it returns; the destructor waits for that.
class Thread {
 public:
  /// Throws an Error when the system gives no thread.
  explicit Thread(std::function<void()> body);
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  ~Thread() { pthread_join(thread_, nullptr); }

 private:
  static void* Enter(void* self);

  std::function<void()> body_;
  pthread_t thread_{};
};

/// Processors that this program may use; at least 1.
int ProcessorCount();

}  // namespace zrml::convert
