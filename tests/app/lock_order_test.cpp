// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The order in which PAPPL locks a printer and the system.

#include "app/lock_order.h"

#include <gtest/gtest.h>
#include <pappl/pappl.h>
#include <pthread.h>

#include <cerrno>
#include <future>
#include <memory>

namespace wren::app {
namespace {

struct DeleteSystem {
  void operator()(pappl_system_t* system) const { papplSystemDelete(system); }
};

class LockOrder : public testing::Test {
 protected:
  void SetUp() override {
    system_.reset(papplSystemCreate(PAPPL_SOPTIONS_NONE, "test", 0, nullptr, nullptr, "-",
                                    PAPPL_LOGLEVEL_FATAL, nullptr, false));
    ASSERT_NE(system_, nullptr);
    keepLockOrder(system_.get());
  }

  // In PAPPL 1.3.1 the lock is the first member.
  pthread_rwlock_t* systemLock() { return reinterpret_cast<pthread_rwlock_t*>(system_.get()); }

  std::unique_ptr<pappl_system_t, DeleteSystem> system_;
  pthread_rwlock_t printerLock_ = PTHREAD_RWLOCK_INITIALIZER;
};

// As in a server: one thread refuses a job while another one saves the state.
TEST_F(LockOrder, LetsAPrinterBeLockedBeforeTheSystem) {
  std::promise<void> saves;
  pthread_rwlock_wrlock(&printerLock_);
  auto saving = std::async(std::launch::async, [&] {
    pthread_rwlock_rdlock(systemLock());
    saves.set_value();
    pthread_rwlock_rdlock(&printerLock_);
    const int writes = pthread_rwlock_trywrlock(systemLock());
    pthread_rwlock_unlock(&printerLock_);
    pthread_rwlock_unlock(systemLock());
    return writes;
  });
  saves.get_future().wait();
  EXPECT_EQ(pthread_rwlock_wrlock(systemLock()), 0);
  EXPECT_EQ(pthread_rwlock_unlock(systemLock()), 0);
  pthread_rwlock_unlock(&printerLock_);
  EXPECT_EQ(saving.get(), EBUSY) << "the reader has lost its lock";
  EXPECT_EQ(pthread_rwlock_trywrlock(systemLock()), 0) << "is still locked";
  pthread_rwlock_unlock(systemLock());
}

TEST_F(LockOrder, LocksTheSystemWhereNobodyHoldsIt) {
  pthread_rwlock_wrlock(&printerLock_);
  pthread_rwlock_wrlock(systemLock());
  auto other =
      std::async(std::launch::async, [&] { return pthread_rwlock_tryrdlock(systemLock()); });
  EXPECT_EQ(other.get(), EBUSY);
  pthread_rwlock_unlock(systemLock());
  EXPECT_EQ(pthread_rwlock_tryrdlock(systemLock()), 0) << "is still locked";
  pthread_rwlock_unlock(systemLock());
  pthread_rwlock_unlock(&printerLock_);
}

}  // namespace
}  // namespace wren::app
