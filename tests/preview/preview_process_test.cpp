// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The program wren-preview: exit status, signals, and jobs from the socket
// backend of CUPS.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "preview/listen_run.h"
#include "preview/loopback_socket.h"
#include "tests/escpos/printer_streams.h"
#include "tests/preview/failing_accept.h"
#include "tests/preview/loopback_client.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/running_printer.h"
#include "tests/preview/scratch_folder.h"
#include "tests/support/process.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

const Bytes kJob = streams::job(hex("1B3C") + bitImage(1, hex("FF")) + feed(16));

wren_test::ProcessSpec previewWith(std::vector<std::string> arguments) {
  wren_test::ProcessSpec spec;
  spec.program = WREN_PREVIEW_PROGRAM;
  spec.arguments = std::move(arguments);
  spec.arguments.insert(spec.arguments.begin(), "wren-preview");
  return spec;
}

int statusOf(std::vector<std::string> arguments) {
  return wren_test::runProcess(previewWith(std::move(arguments))).exitStatus;
}

void waitForFile(const std::string& path) {
  for (int i = 0; i < 2000 && !std::filesystem::exists(path); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

// A wren-preview that listens on a free port and stores its jobs in a temporary folder.
class ListeningPreview {
 public:
  explicit ListeningPreview(const std::function<void()>& beforeExec = {})
      : process_(specOf(folder_, beforeExec)) {
    const std::string greeting = "listening on ";
    for (int i = 0; i < 2000 && name_.empty(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      const std::string text = process_.outSoFar();
      if (text.find('\n') == std::string::npos) continue;
      name_ = text.substr(greeting.size(), text.find('\n') - greeting.size());
    }
  }

  const std::string& name() const { return name_; }
  std::string file(const std::string& name) const { return folder_.file(name); }

  bool hasEnded() { return process_.hasEnded(); }
  bool waitForError(const std::string& text) const { return process_.waitForError(text); }

  wren_test::ProcessResult end(int signal) {
    process_.signal(signal);
    return process_.finish();
  }

 private:
  static wren_test::ProcessSpec specOf(const ScratchFolder& folder,
                                       const std::function<void()>& beforeExec) {
    auto spec = previewWith({"--listen", "0", "--directory", folder.path()});
    spec.beforeExec = beforeExec;
    return spec;
  }

  ScratchFolder folder_;
  wren_test::Process process_;
  std::string name_;
};

TEST(PreviewProgram, ReportsByItsExitStatus) {
  const ScratchFolder folder;
  EXPECT_EQ(statusOf({folder.write("good.prn", kJob)}), 0);
  EXPECT_EQ(statusOf({folder.write("bad.prn", kJob + hex("41"))}), 1);
  EXPECT_EQ(statusOf({folder.file("absent.prn")}), 1);
  EXPECT_EQ(statusOf({"--nonsense"}), 2);
  EXPECT_EQ(statusOf({"--version"}), 0);
}

TEST(PreviewProgram, ReadsStandardInput) {
  const ScratchFolder folder;
  const auto spec = previewWith({"-", "-o", folder.file("paper.png")});
  const auto result = wren_test::runProcess(spec, std::string(kJob.begin(), kJob.end()));
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(readPng(folder.file("paper.png")).height, 8u);
}

// The name is that of the input; that of standard input is fixed.
TEST(PreviewProgram, NamesThePictureOfStandardInput) {
  const ScratchFolder folder;
  auto spec = previewWith({});
  spec.workingFolder = folder.path();
  const auto result = wren_test::runProcess(spec, std::string(kJob.begin(), kJob.end()));
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(result.out, "-: 1 page, 1.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, " +
                            std::to_string(kJob.size()) + " bytes\nwren-preview.png\n");
  EXPECT_EQ(readPng(folder.file("wren-preview.png")).height, 8u);
}

// Scripts read the first two lines, as docs/PREVIEW.md shows.
TEST(PreviewProgram, SaysWhereItListens) {
  const ScratchFolder folder;
  wren_test::Process process(previewWith(
      {"--listen", "0", "--control", "0", "--fault", "paper out", "--directory", folder.path()}));
  std::string text;
  for (int i = 0; i < 2000 && std::count(text.begin(), text.end(), '\n') < 2; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    text = process.outSoFar();
  }
  const std::string start = "listening on 127.0.0.1:";
  EXPECT_EQ(text.substr(0, start.size()), start);
  const std::size_t second = text.find('\n') + 1;
  const std::string control = "control on ";
  ASSERT_EQ(text.substr(second, control.size()), control);
  const std::string address =
      text.substr(second + control.size(), text.size() - 1 - second - control.size());
  const auto told = wren_test::runProcess(previewWith({"--tell", address, "status"}));
  EXPECT_EQ(told.exitStatus, 0) << told.err;
  EXPECT_EQ(told.out.substr(0, 30), "{\"online\":false,\"paper\":\"out\",");
  process.signal(SIGTERM);
  const auto result = process.finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.out, text);
  EXPECT_EQ(result.err, "");
}

TEST(PreviewProgram, SaysNothingOfAControlPortThatItHasNot) {
  ListeningPreview printer;
  const std::string expected = "listening on " + printer.name() + "\n";
  const auto result = printer.end(SIGTERM);
  EXPECT_EQ(result.out, expected);
  EXPECT_EQ(result.err, "");
}

// The socket breaks: nobody could print any more, so a service manager has to know.
TEST(Listener, FailsWithItsSocket) {
  struct sigaction before[2];
  ASSERT_EQ(::sigaction(SIGINT, nullptr, &before[0]), 0);
  ASSERT_EQ(::sigaction(SIGTERM, nullptr, &before[1]), 0);
  const ScratchFolder folder;
  Options options;
  // A port that is free now, on an address that no other program uses.
  options.address = openLoopbackSocket({"127.8.9.10", "0"}).name;
  options.directory = folder.path();
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  failNextAccepts({EINVAL});
  int status = -1;
  std::thread listener([&] { status = runListener(options); });
  for (int i = 0; i < 2000 && acceptErrorsLeft() > 0; ++i) {
    const LoopbackSocket client = connectLoopbackSocket(*parseListenAddress(options.address));
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  listener.join();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "listening on " + options.address + "\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "wren-preview: " + options.address + ": Invalid argument\n");
  EXPECT_EQ(status, 1);
  ::sigaction(SIGINT, &before[0], nullptr);
  ::sigaction(SIGTERM, &before[1], nullptr);
}

// What was received is kept; the printer goes on.
TEST(PreviewProgram, OutlivesAFullDisk) {
  ListeningPreview printer([] {
    const rlimit small = {1000, 1000};
    ::setrlimit(RLIMIT_FSIZE, &small);
    ::signal(SIGXFSZ, SIG_IGN);
  });
  LoopbackClient large(printer.name());
  large.send(kJob + streams::repeat(100'000, 0));
  large.waitForClose();
  LoopbackClient small(printer.name());
  EXPECT_TRUE(small.send(kJob));
  small.endAndWait();
  EXPECT_EQ(bytesOfFile(printer.file("job-0001.prn")).size(), 1000u);
  EXPECT_EQ(bytesOfFile(printer.file("job-0002.prn")), kJob);
  const auto result = printer.end(SIGTERM);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_NE(result.out.find(", cut short, " + printer.file("job-0001.png") + ", " +
                            printer.file("job-0001.prn") + ": File too large\n"),
            std::string::npos)
      << result.out;
}

class EndedBySignal : public testing::TestWithParam<int> {};

TEST_P(EndedBySignal, FinishesTheJobAndExitsWithStatus0) {
  ListeningPreview printer;
  ASSERT_EQ(printer.name().substr(0, 10), "127.0.0.1:");
  LoopbackClient first(printer.name());
  EXPECT_TRUE(first.send(kJob));
  first.endAndWait();
  LoopbackClient second(printer.name());
  EXPECT_TRUE(second.send({kJob.begin(), kJob.begin() + 88}));
  waitForFile(printer.file("job-0002.prn"));
  const auto result = printer.end(GetParam());
  EXPECT_EQ(result.exitStatus, 0) << result.signal;
  EXPECT_NE(result.out.find("job-0001.prn: 1 page"), std::string::npos) << result.out;
  EXPECT_EQ(bytesOfFile(printer.file("job-0001.prn")), kJob);
  EXPECT_EQ(bytesOfFile(printer.file("job-0002.prn")).size(), 88u);
  EXPECT_EQ(readPng(printer.file("job-0002.png")).height, 8u);
}

INSTANTIATE_TEST_SUITE_P(Signals, EndedBySignal, testing::Values(SIGINT, SIGTERM));

// Standard output is a pipe whose reader is gone after the address is known.
TEST(PreviewProgram, OutlivesTheReaderOfItsOutput) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  wren::FileDescriptor readEnd(ends[0]);
  wren::FileDescriptor writeEnd(ends[1]);
  const ScratchFolder folder;
  auto spec = previewWith({"--listen", "0", "--directory", folder.path()});
  spec.beforeExec = [&] {
    ::dup2(writeEnd.get(), STDOUT_FILENO);
    // A reader of its own would keep the pipe alive.
    ::close(readEnd.get());
    // Whoever runs the tests may have it ignored, which the program would inherit.
    ::signal(SIGPIPE, SIG_DFL);
  };
  wren_test::Process process(spec);
  writeEnd.reset();
  std::string greeting;
  char byte = 0;
  while (::read(readEnd.get(), &byte, 1) == 1 && byte != '\n') greeting += byte;
  readEnd.reset();
  for (int i = 0; i < 2; ++i) {
    LoopbackClient client(greeting);
    EXPECT_TRUE(client.send(kJob));
    client.endAndWait();
  }
  EXPECT_EQ(readPng(folder.file("job-0001.png")).height, 8u);
  EXPECT_EQ(readPng(folder.file("job-0002.png")).height, 8u);
  process.signal(SIGTERM);
  EXPECT_EQ(process.finish().exitStatus, 0);
}

// Six descriptors are in use when the server listens, so that the second connection gets none.
TEST(PreviewProgram, OutlivesAShortageOfDescriptors) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer needs descriptors of its own";
#endif
  ListeningPreview printer([] {
    // Whoever runs the tests may leave descriptors open.
    constexpr int kInherited = 64;
    for (int i = STDERR_FILENO + 1; i < kInherited; ++i) ::close(i);
    const rlimit few = {6, 6};
    ::setrlimit(RLIMIT_NOFILE, &few);
  });
  ASSERT_EQ(printer.name().substr(0, 10), "127.0.0.1:");
  LoopbackClient client(printer.name());
  EXPECT_TRUE(printer.waitForError("Too many open files\n"));
  std::this_thread::sleep_for(std::chrono::milliseconds(120));
  EXPECT_FALSE(printer.hasEnded());
  const auto result = printer.end(SIGTERM);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.err, "wren-preview: " + printer.name() + ": Too many open files\n");
}

TEST(PreviewProgram, FailsIfItsOutputCannotBeWritten) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const ScratchFolder folder;
  for (const char* option : {"--list", "--json", "--dpi=203"}) {
    auto spec = previewWith({folder.write("job.prn", kJob), option});
    spec.beforeExec = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    const auto result = wren_test::runProcess(spec);
    EXPECT_EQ(result.exitStatus, 1) << option;
    EXPECT_EQ(result.err, "wren-preview: standard output cannot be written\n") << option;
    EXPECT_EQ(readPng(folder.file("job.png")).height, 8u) << option;
  }
}

TEST(PreviewProgram, FailsIfTheAnswerOfAPrinterCannotBeWritten) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const RunningPrinter printer;
  auto spec = previewWith({"--tell", printer.controlAddress(), "status"});
  spec.beforeExec = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); };
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "wren-preview: standard output cannot be written\n");
}

// 19 kB that would be 671 thousand million pixels; the bound is the same as the listener's.
TEST(PreviewProgram, BoundsThePictureOfAHostileFile) {
  Bytes job = bitImage(1, streams::repeat(4096, 0x80));
  for (int i = 0; i < 5000; ++i) job = job + feed(255);
  const ScratchFolder folder;
  const std::string path = folder.write("hostile.prn", job);
  const auto result = wren_test::runProcess(previewWith({path, "--scale", "16"}));
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "wren-preview: " + folder.file("hostile.png") +
                            ": ends after 95.5 mm; a job has at most 800000000 pixels in 10000 "
                            "pictures\n");
}

TEST(PreviewProgram, FailsOnAPortInUseAndOnAPublicAddress) {
  ListeningPreview first;
  const std::pair<std::string, std::string> cases[] = {
      {first.name(), "Address already in use"},
      {"0.0.0.0:0", "not a loopback address; only this computer may print here"},
  };
  for (const auto& [address, message] : cases) {
    const auto result = wren_test::runProcess(previewWith({"--listen", address}));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "wren-preview: " + address + ": " + message + "\n");
  }
  EXPECT_EQ(first.end(SIGTERM).exitStatus, 0);
}

TEST(PreviewProgram, ReceivesJobsFromTheSocketBackendOfCups) {
  const std::string backend = WREN_SOCKET_BACKEND;
  if (::access(backend.c_str(), X_OK) != 0) GTEST_SKIP() << "there is no " << backend;
  ListeningPreview printer;
  const ScratchFolder folder;
  wren_test::ProcessSpec spec;
  // A backend uses descriptors 3 and 4 as channels to the scheduler if they are open.
  spec.program = "/bin/sh";
  spec.arguments = {"sh", "-c", "exec \"$@\" 3<&- 4<&-",      "sh", backend, "1", "user", "title",
                    "1",  "",   folder.write("job.prn", kJob)};
  spec.environment = {"DEVICE_URI=socket://" + printer.name()};
  const auto sent = wren_test::runProcess(spec);
  EXPECT_EQ(sent.exitStatus, 0) << sent.err;
  // The backend ends when its bytes are in the socket buffer, before the job has been read.
  waitForFile(printer.file("job-0001.png"));
  EXPECT_EQ(printer.end(SIGTERM).exitStatus, 0);
  EXPECT_EQ(bytesOfFile(printer.file("job-0001.prn")), kJob);
  EXPECT_EQ(readPng(printer.file("job-0001.png")).height, 8u);
}

}  // namespace
}  // namespace wren::preview
