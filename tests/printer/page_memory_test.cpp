// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/page_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace {

using wren::printer::PageMemory;
using wren::printer::ScratchPage;

constexpr std::size_t kRollBytes = std::size_t{576} * 40000 + 5;
constexpr std::size_t kTooManyBytes = SIZE_MAX / 4;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAllocatorReportsFailure = false;  // it ends the program instead
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kAllocatorReportsFailure = false;
#else
constexpr bool kAllocatorReportsFailure = true;
#endif
#else
constexpr bool kAllocatorReportsFailure = true;
#endif

TEST(PageMemory, KeepsItsMemoryForPagesThatAreNotLarger) {
  PageMemory memory;
  ASSERT_TRUE(memory.resize(1000));
  const std::uint8_t* first = memory.data();
  std::memset(memory.data(), 1, 1000);
  ASSERT_TRUE(memory.resize(10));
  EXPECT_EQ(memory.data(), first);
  ASSERT_TRUE(memory.resize(1000));
  EXPECT_EQ(memory.data(), first);
}

TEST(PageMemory, HasAnAddressForAPageWithoutBytes) {
  PageMemory memory;
  EXPECT_TRUE(memory.resize(0));
  EXPECT_NE(memory.data(), nullptr);
}

TEST(PageMemory, HoldsEveryByteOfALongRoll) {
  PageMemory memory;
  ASSERT_TRUE(memory.resize(10));
  ASSERT_TRUE(memory.resize(kRollBytes));
  std::memset(memory.data(), 0xA5, kRollBytes);
  EXPECT_EQ(memory.data()[0], 0xA5);
  EXPECT_EQ(memory.data()[kRollBytes - 1], 0xA5);
}

TEST(PageMemory, ReportsAFailureAndCanTakeASmallerPageAfterIt) {
  if (!kAllocatorReportsFailure) GTEST_SKIP() << "the sanitizer's allocator reports no failure";
  PageMemory memory;
  ASSERT_TRUE(memory.resize(10));
  EXPECT_FALSE(memory.resize(kTooManyBytes));
  EXPECT_EQ(memory.data(), nullptr);
  EXPECT_FALSE(memory.resize(kTooManyBytes));
  ASSERT_TRUE(memory.resize(10));
  memory.data()[9] = 1;
}

TEST(PageMemory, IsEmptyAndUsableAfterAMove) {
  PageMemory memory;
  ASSERT_TRUE(memory.resize(1000));
  const std::uint8_t* first = memory.data();
  PageMemory other = std::move(memory);
  EXPECT_EQ(other.data(), first);
  EXPECT_EQ(memory.data(), nullptr);
  ASSERT_TRUE(memory.resize(10));
  EXPECT_NE(memory.data(), first);
}

int handlerCalls = 0;

TEST(AskForMemory, CallsTheNewHandlerAndThrowsWithoutOne) {
  const std::new_handler before = std::set_new_handler([] { ++handlerCalls; });
  wren::printer::askForMemory();
  EXPECT_EQ(handlerCalls, 1);
  std::set_new_handler(nullptr);
  EXPECT_THROW(wren::printer::askForMemory(), std::bad_alloc);
  std::set_new_handler(before);
}

TEST(ScratchPage, TellsWhetherThereIsRoom) {
  EXPECT_TRUE(ScratchPage(0).isThere());
  EXPECT_TRUE(ScratchPage(1000).isThere());
  if (!kAllocatorReportsFailure) GTEST_SKIP() << "the sanitizer's allocator reports no failure";
  EXPECT_FALSE(ScratchPage(kTooManyBytes).isThere());
}

}  // namespace
