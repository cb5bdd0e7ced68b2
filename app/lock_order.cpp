// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/lock_order.h"

#ifndef __APPLE__

#include <dlfcn.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

namespace {

// The lock of the system; null: not known yet.
std::atomic<pthread_rwlock_t*> systemLock = nullptr;

struct OfThisThread {
  std::array<pthread_rwlock_t*, 8> writing = {};  // locks held for writing
  bool withoutSystem = false;                     // holds the system's lock in name only
  bool isAsked = false;                           // the next lock for writing goes to `answer`
  pthread_rwlock_t* answer = nullptr;
};
thread_local OfThisThread mine;

void note(pthread_rwlock_t* from, pthread_rwlock_t* to) {
  const auto place = std::find(mine.writing.begin(), mine.writing.end(), from);
  if (place != mine.writing.end()) *place = to;
}

bool holdsAny() {
  return std::any_of(mine.writing.begin(), mine.writing.end(),
                     [](const pthread_rwlock_t* lock) { return lock != nullptr; });
}

bool lockInTime(pthread_rwlock_t* lock) {
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(wren::app::kLockPatienceMs);
  while (pthread_rwlock_trywrlock(lock) == EBUSY) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace

extern "C" int pthread_rwlock_wrlock(pthread_rwlock_t* lock) {
  using Lock = int (*)(pthread_rwlock_t*);
  static const auto kOriginal = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_rwlock_wrlock"));
  if (mine.isAsked) {
    mine.isAsked = false;
    mine.answer = lock;
  }
  if (lock == systemLock && holdsAny()) {
    if (lockInTime(lock)) {
      note(nullptr, lock);
    } else {
      mine.withoutSystem = true;
    }
    return 0;
  }
  const int result = kOriginal(lock);
  if (result == 0) note(nullptr, lock);
  return result;
}

extern "C" int pthread_rwlock_unlock(pthread_rwlock_t* lock) {
  using Unlock = int (*)(pthread_rwlock_t*);
  static const auto kOriginal = reinterpret_cast<Unlock>(dlsym(RTLD_NEXT, "pthread_rwlock_unlock"));
  if (mine.withoutSystem && lock == systemLock) {
    mine.withoutSystem = false;
    return 0;
  }
  note(lock, nullptr);
  return kOriginal(lock);
}

void wren::app::keepLockOrder(pappl_system_t* system) {
  mine.isAsked = true;
  mine.answer = nullptr;
  papplSystemSetMaxLogSize(system, papplSystemGetMaxLogSize(system));
  mine.isAsked = false;
  systemLock = mine.answer;
}

#else

void wren::app::keepLockOrder(pappl_system_t* /*system*/) {}

#endif
