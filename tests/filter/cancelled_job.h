// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Helpers of the tests of cancelled jobs.

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>

#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/printer_bytes.h"

namespace wren_test {

// Drawer, buzzers and cuts at the ends of pages and job, so that a missing command shows.
inline constexpr char kLoudOptions[] =
    "Buzzer1Setting=2 Buzzer1OnTime=1 Buzzer1Repeat=1 Buzzer2Setting=2 Buzzer2OnTime=1 "
    "Buzzer2Repeat=1 CashDrawerSetting=2 PageCutType=1 DocCutType=2 FeedCutAfterJobEnd=3";

inline std::string loudStart() {
  return std::string(64, '\0') + fromHex("1B40 1F1B1F4265657008 1B5500");
}

inline std::string loudCancelledEnd() {
  return fromHex("1B4A10 1B4A30 1D5601 1F1B1F4265657006 1B76");
}

inline FilterJob waitingJob() {
  FilterJob job;
  job.ppd = fullPpd().text();
  job.options = kLoudOptions;
  job.via = RasterVia::kPipe;
  return job;
}

inline void expectQuietEnd(const FilterResult& result) {
  EXPECT_TRUE(result.exited(0)) << result.exitStatus << " signal " << result.signal;
  for (const auto& line : linesOf(result.err)) {
    EXPECT_EQ(line.find("ERROR"), std::string::npos) << line;
    EXPECT_EQ(line.find("Ready to print."), std::string::npos) << line;
  }
}

inline bool waitUntil(const std::function<bool()>& condition, double seconds) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  while (!condition() && Clock::now() < end) usleep(50);
  return condition();
}

// A reader of printer bytes that is slower than the filter.
class SlowReader {
 public:
  SlowReader() { EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0); }
  SlowReader(const SlowReader&) = delete;
  SlowReader& operator=(const SlowReader&) = delete;
  ~SlowReader() { close(ends[0]); }
  int writeEnd() const { return ends[1]; }
  void started() { close(ends[1]); }
  /// Up to `count` bytes; empty at the end of the stream or after ten seconds without a byte.
  std::string take(std::size_t count) {
    pollfd waited = {ends[0], POLLIN, 0};
    if (poll(&waited, 1, 10000) <= 0) return {};
    std::string bytes(count, '\0');
    const ssize_t got = read(ends[0], bytes.data(), count);
    return bytes.substr(0, got > 0 ? static_cast<std::size_t>(got) : 0);
  }
  std::string rest() {
    std::string bytes;
    for (std::string part = take(65536); !part.empty(); part = take(65536)) bytes += part;
    return bytes;
  }

 private:
  int ends[2] = {-1, -1};
};

}  // namespace wren_test
