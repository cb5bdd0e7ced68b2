// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_turns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace wren_test {
namespace {

using wren::app::JobTurns;

bool always() {
  return true;
}

void nothing() {}

TEST(JobTurns, GoToOneJobOfEachPrinter) {
  JobTurns turns;
  EXPECT_TRUE(turns.take({1, 1}));
  EXPECT_FALSE(turns.take({1, 2}));
  EXPECT_TRUE(turns.take({2, 1}));
  turns.give(1, nothing);
  EXPECT_TRUE(turns.take({1, 2}));
}

TEST(JobTurns, GoToTheOldestOfThoseThatWait) {
  JobTurns turns;
  ASSERT_TRUE(turns.take({1, 1}));
  std::mutex mutex;
  std::vector<int> order;
  std::atomic<int> asked = 0;
  std::vector<std::thread> jobs;
  for (const int job : {4, 2, 3}) {
    jobs.emplace_back([&, job] {
      std::atomic<bool> counted = false;
      const auto goesOn = [&] {
        if (!counted.exchange(true)) ++asked;
        return true;
      };
      if (!turns.wait({1, job}, always, goesOn)) return;
      {
        const std::lock_guard lock(mutex);
        order.push_back(job);
      }
      turns.give(1, nothing);
    });
  }
  while (asked < 3) std::this_thread::yield();
  turns.give(1, nothing);
  for (auto& job : jobs) job.join();
  EXPECT_THAT(order, testing::ElementsAre(2, 3, 4));
}

TEST(JobTurns, AreNotTakenBeforeAnOlderJobThatWaits) {
  JobTurns turns;
  std::atomic<bool> isFirst = false;
  std::atomic<bool> isWaiting = false;
  std::thread older([&] {
    EXPECT_TRUE(turns.wait(
        {1, 2}, [&] { return isFirst.load(); }, [&] { return isWaiting = true; }));
  });
  while (!isWaiting) std::this_thread::yield();
  EXPECT_FALSE(turns.take({1, 3}));
  EXPECT_TRUE(turns.take({1, 1}));
  turns.give(1, nothing);
  isFirst = true;
  older.join();
}

TEST(JobTurns, AreNotWaitedForByAJobThatGivesUp) {
  JobTurns turns;
  ASSERT_TRUE(turns.take({1, 1}));
  EXPECT_FALSE(turns.wait({1, 2}, always, [] { return false; }));
  turns.give(1, nothing);
  EXPECT_TRUE(turns.take({1, 3}));
}

TEST(JobTurns, AreWaitedForBySixteenJobsAtMost) {
  JobTurns turns;
  ASSERT_TRUE(turns.take({1, 1}));
  std::atomic<bool> areWaiting = true;
  std::atomic<int> asked = 0;
  std::vector<std::thread> jobs;
  for (int job = 2; job < 18; ++job) {
    jobs.emplace_back([&, job] {
      bool counted = false;
      EXPECT_FALSE(turns.wait({1, job}, always, [&] {
        if (!counted) ++asked;
        counted = true;
        return areWaiting.load();
      }));
    });
  }
  while (asked < 16) std::this_thread::yield();
  EXPECT_FALSE(turns.wait({1, 18}, always, always));
  areWaiting = false;
  for (auto& job : jobs) job.join();
}

TEST(JobTurns, StartTheNextJobAfterTheyAreGivenBack) {
  JobTurns turns;
  ASSERT_TRUE(turns.take({1, 1}));
  bool isNextTaken = false;
  turns.give(1, [&] { isNextTaken = turns.take({1, 2}); });
  EXPECT_TRUE(isNextTaken);
}

TEST(JobTurns, AreNeitherTakenNorWaitedForAfterTheEnd) {
  JobTurns turns;
  ASSERT_TRUE(turns.take({1, 1}));
  std::thread waiting([&] { EXPECT_FALSE(turns.wait({1, 2}, always, always)); });
  turns.close();
  waiting.join();
  turns.give(1, [] { ADD_FAILURE() << "a job was started"; });
  EXPECT_FALSE(turns.take({1, 3}));
}

}  // namespace
}  // namespace wren_test
