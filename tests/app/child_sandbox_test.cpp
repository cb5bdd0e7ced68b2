// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/child_sandbox.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "app/document_error.h"
#include "preview/loopback_socket.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Outcome {
  std::string output;
  std::vector<std::string> errorLines;
  SandboxedChild::Read last = SandboxedChild::Read::kBytes;
  ChildExit exit;
};

Outcome runProbe(std::vector<std::string> arguments, const ChildLimits& limits = {},
                 const CancelCheck& cancel = {}) {
  arguments.insert(arguments.begin(), WREN_SANDBOX_PROBE);
  Outcome outcome;
  SandboxedChild child(arguments, limits, cancel,
                       [&](const std::string& line) { outcome.errorLines.push_back(line); });
  std::uint8_t bytes[256];
  std::size_t count = 0;
  while ((outcome.last = child.read(bytes, sizeof bytes, &count)) == SandboxedChild::Read::kBytes) {
    outcome.output.append(reinterpret_cast<const char*>(bytes), count);
  }
  outcome.exit = child.finish();
  return outcome;
}

struct Attempt {
  const char* name;
  std::vector<std::string> arguments;
  const char* outcome;
};

void PrintTo(const Attempt& shown, std::ostream* out) {
  *out << shown.name;
}

class SandboxAttempt : public testing::TestWithParam<Attempt> {};

TEST_P(SandboxAttempt, HasTheOutcome) {
  const Outcome outcome = runProbe(GetParam().arguments);
  EXPECT_EQ(outcome.output, GetParam().outcome);
  EXPECT_EQ(outcome.exit.status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    OfAChild, SandboxAttempt,
    testing::Values(Attempt{"LocalSocket", {"local"}, "EACCES\n"},
                    Attempt{"SocketPair", {"pair"}, "EACCES\n"},
                    Attempt{"RingThatReachesSockets", {"ring"}, "EACCES\n"},
                    Attempt{"Process", {"process"}, "EACCES\n"},
                    Attempt{"ProcessWithHiddenFlags", {"clone3"}, "ENOSYS\n"},
                    Attempt{"SignalToItsParent", {"kill"}, "EACCES\n"},
                    Attempt{"Thread", {"thread"}, "ok\n"},
                    Attempt{"NoNewPrivileges", {"privileges"}, "1\n"},
                    Attempt{"MemoryWithinTheLimit", {"allocate", "100"}, "ok\n"},
                    Attempt{"MemoryBeyondTheLimit", {"allocate", "600"}, "ENOMEM\n"},
                    Attempt{"Descriptors", {"descriptors"}, "0 1 2 "}),
    [](const auto& shown) { return shown.param.name; });

// The port is open: the same program gets through without the sandbox.
TEST(ChildSandbox, DoesNotReachAnOpenPort) {
  const preview::LoopbackSocket listener = preview::openLoopbackSocket({"127.0.0.1", "0"});
  const std::string port = listener.name.substr(listener.name.rfind(':') + 1);
  wren_test::ProcessSpec outside;
  outside.program = WREN_SANDBOX_PROBE;
  outside.arguments = {"probe", "connect", port};
  EXPECT_EQ(wren_test::runProcess(outside).out, "ok\n");
  EXPECT_EQ(runProbe({"connect", port}).output, "EACCES\n");
}

TEST(ChildSandbox, WritesNoFile) {
  const wren_test::TemporaryFolder folder;
  const std::string path = folder.path() / "file";
  EXPECT_EQ(runProbe({"write", path}).output, "EFBIG\n");
  EXPECT_EQ(wren_test::readFile(path), "");
}

TEST(ChildSandbox, GetsNoDescriptorThatWasLeftOpen) {
  const int open = ::open("/dev/null", O_RDONLY);  // without O_CLOEXEC
  EXPECT_EQ(runProbe({"descriptors"}).output, "0 1 2 ");
  ::close(open);
}

TEST(ChildSandbox, TellsTheExitStatus) {
  EXPECT_EQ(runProbe({"status", "7"}).exit.status, 7);
}

TEST(ChildSandbox, TellsTheSignal) {
  EXPECT_EQ(runProbe({"crash"}).exit.signal, SIGABRT);
}

TEST(ChildSandbox, EndsAChildThatUsesUpItsProcessorTime) {
  EXPECT_EQ(runProbe({"spin"}, {.processorSeconds = 1}).exit.signal, SIGXCPU);
}

TEST(ChildSandbox, EndsASilentChild) {
  const Outcome outcome = runProbe({"sleep"}, {.silence = milliseconds(200)});
  EXPECT_EQ(outcome.last, SandboxedChild::Read::kSilent);
  EXPECT_EQ(outcome.exit.signal, SIGKILL);
}

TEST(ChildSandbox, EndsAChildThatClosedItsOutput) {
  const Outcome outcome = runProbe({"sleep", "quiet"}, {.silence = milliseconds(200)});
  EXPECT_EQ(outcome.last, SandboxedChild::Read::kEnd);
  EXPECT_EQ(outcome.exit.signal, SIGKILL);
}

TEST(ChildSandbox, CutsTheLinesOfStandardError) {
  const std::string cut(SandboxedChild::kMaxLineBytes, 'x');
  EXPECT_THAT(runProbe({"flood", "3"}).errorLines, testing::ElementsAre(cut, cut, cut));
}

// More than a pipe holds.
TEST(ChildSandbox, ReadsStandardErrorWhileItWaitsForOutput) {
  const Outcome outcome = runProbe({"flood", "5000"});
  EXPECT_EQ(outcome.errorLines.size(), 5000U);
  EXPECT_EQ(outcome.exit.status, 0);
}

TEST(ChildSandbox, RefusesAProgramThatIsMissing) {
  try {
    SandboxedChild child({"/nonexistent/program"}, {}, {}, {});
    FAIL() << "it started";
  } catch (const DocumentError& error) {
    EXPECT_EQ(error.kind(), DocumentError::Kind::kSystem);
    EXPECT_STREQ(error.what(), "/nonexistent/program cannot be started: No such file or directory");
  }
}

TEST(ChildSandbox, LeavesNoChildBehind) {
  { const SandboxedChild child({WREN_SANDBOX_PROBE, "sleep"}, {}, {}, {}); }
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(ChildSandbox, EndsACancelledChildWithinATenthOfASecond) {
  std::atomic<bool> cancelled{false};
  const CancelCheck cancel(
      [](const void* flag) { return static_cast<const std::atomic<bool>*>(flag)->load(); },
      &cancelled);
  Clock::time_point cancelTime;
  std::thread canceller([&] {
    std::this_thread::sleep_for(milliseconds(100));
    cancelTime = Clock::now();
    cancelled = true;
  });
  const Outcome outcome = runProbe({"spin"}, {}, cancel);
  const Clock::time_point end = Clock::now();
  canceller.join();
  EXPECT_EQ(outcome.last, SandboxedChild::Read::kCancelled);
  EXPECT_EQ(outcome.exit.signal, SIGKILL);
  EXPECT_LT(end - cancelTime, milliseconds(100));
}

// Children are started while other threads allocate: nothing between fork and exec may wait for a
// lock that one of them holds.
TEST(ChildSandbox, StartsFromSeveralThreads) {
  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&right] {
      for (int run = 0; run < 10; ++run) {
        if (runProbe({"echo", "here"}).output == "here\n") ++right;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right.load(), 40);
}

TEST(FindProgram, GivesAPath) {
  EXPECT_THAT(findProgram("pdftoppm"), testing::EndsWith("/pdftoppm"));
  EXPECT_EQ(findProgram("no-such-program"), "");
}

}  // namespace
}  // namespace wren::app
