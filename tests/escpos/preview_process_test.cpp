// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-preview as a program: its exit status, and how it ends by a signal.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "escpos/preview/file_descriptor.h"
#include "tests/escpos/loopback_client.h"
#include "tests/escpos/png_reading.h"
#include "tests/escpos/scratch_folder.h"
#include "tests/escpos/streams.h"

extern char** environ;

namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

const Bytes kJob = streams::job(hex("1B3C") + bitImage(1, hex("FF")) + feed(16));

// wren-preview with its standard output in a pipe. Killed if the test forgets it.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    output_ = preview::FileDescriptor(ends[0]);
    const preview::FileDescriptor writeEnd(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writeEnd.get(), STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, output_.get());
    arguments.insert(arguments.begin(), WREN_PREVIEW_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const int code = posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (code != 0) pid_ = -1;
  }
  ~Program() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  std::string readLine() {
    std::string line;
    char byte;
    while (::read(output_.get(), &byte, 1) == 1 && byte != '\n') line += byte;
    return line;
  }

  void signal(int number) const { ::kill(pid_, number); }

  // The exit status, or 1000 and the number of the signal that ended it.
  int wait() {
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

 private:
  preview::FileDescriptor output_;
  pid_t pid_ = -1;
};

TEST(PreviewProgram, ReportsByItsExitStatus) {
  const ScratchFolder folder;
  EXPECT_EQ(Program({folder.write("good.prn", kJob)}).wait(), 0);
  EXPECT_EQ(Program({folder.write("bad.prn", kJob + hex("41"))}).wait(), 1);
  EXPECT_EQ(Program({folder.file("absent.prn")}).wait(), 1);
  EXPECT_EQ(Program({"--nonsense"}).wait(), 2);
  EXPECT_EQ(Program({"--version"}).wait(), 0);
}

class EndedBySignal : public testing::TestWithParam<int> {};

TEST_P(EndedBySignal, FinishesTheJobAndExitsWell) {
  const ScratchFolder folder;
  Program program({"--listen", "0", "--directory", folder.path()});
  const std::string greeting = program.readLine();
  ASSERT_EQ(greeting.substr(0, 23), "listening on 127.0.0.1:");
  const std::string name = greeting.substr(13);
  LoopbackClient first(name);
  EXPECT_TRUE(first.send(kJob));
  first.endAndWait();
  EXPECT_NE(program.readLine().find("job-0001.prn: 1 page"), std::string::npos);
  LoopbackClient second(name);
  EXPECT_TRUE(second.send({kJob.begin(), kJob.begin() + 88}));
  while (!std::filesystem::exists(folder.file("job-0002.prn"))) ::usleep(1000);
  program.signal(GetParam());
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(bytesOfFile(folder.file("job-0001.prn")), kJob);
  EXPECT_EQ(bytesOfFile(folder.file("job-0002.prn")).size(), 88u);
  EXPECT_EQ(readPng(folder.file("job-0002.png")).height, 8u);
}

INSTANTIATE_TEST_SUITE_P(Signals, EndedBySignal, testing::Values(SIGINT, SIGTERM));

TEST(PreviewProgram, SaysThatItsPortIsTaken) {
  const ScratchFolder folder;
  Program first({"--listen", "0", "--directory", folder.path()});
  const std::string name = first.readLine().substr(13);
  EXPECT_EQ(Program({"--listen", name}).wait(), 1);
  EXPECT_EQ(Program({"--listen", "0.0.0.0:0"}).wait(), 1);
  first.signal(SIGTERM);
  EXPECT_EQ(first.wait(), 0);
}

}  // namespace
