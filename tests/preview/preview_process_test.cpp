// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The program wren-preview: exit status, signals, and jobs from the socket
// backend of CUPS.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/escpos/printer_streams.h"
#include "tests/preview/loopback_client.h"
#include "tests/preview/png_reading.h"
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
  ListeningPreview() : process_(previewWith({"--listen", "0", "--directory", folder_.path()})) {
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

  wren_test::ProcessResult end(int signal) {
    process_.signal(signal);
    return process_.finish();
  }

 private:
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

TEST(PreviewProgram, FailsOnAPortInUseAndOnAPublicAddress) {
  ListeningPreview first;
  EXPECT_EQ(statusOf({"--listen", first.name()}), 1);
  EXPECT_EQ(statusOf({"--listen", "0.0.0.0:0"}), 1);
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
