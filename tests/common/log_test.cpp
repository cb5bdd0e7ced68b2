// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/log.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::string logged(int level) {
  CaptureStderr();
  wrenLogCommon(level, "%s %d", "text", 7);
  return GetCapturedStderr();
}

TEST(Log, EachLevelHasItsKeywordAndNoBlankFollowsIt) {
  EXPECT_EQ(logged(0), "DEBUG:text 7\n");
  EXPECT_EQ(logged(1), "DEBUG:text 7\n");
  EXPECT_EQ(logged(2), "WARN:text 7\n");
  EXPECT_EQ(logged(3), "ERROR:text 7\n");
  EXPECT_EQ(logged(4), "CRIT:text 7\n");
  EXPECT_EQ(logged(5), "INVALID:text 7\n");
}

TEST(Log, LevelsOutsideTheTableAreInvalid) {
  EXPECT_EQ(logged(6), "INVALID:text 7\n");
  EXPECT_EQ(logged(-1), "INVALID:text 7\n");
  EXPECT_EQ(logged(2147483647), "INVALID:text 7\n");
}

TEST(Log, EmptyMessageIsTheKeywordAlone) {
  CaptureStderr();
  wrenLogCommon(1, "%s", "");
  EXPECT_EQ(GetCapturedStderr(), "DEBUG:\n");
}

TEST(Log, EmptyFormatIsTheKeywordAlone) {
  // A compiler that looks at the format warns of an empty one.
  void (*const log)(int, const char*, ...) = wrenLogCommon;
  CaptureStderr();
  log(3, "");
  EXPECT_EQ(GetCapturedStderr(), "ERROR:\n");
}

TEST(Log, NewlineOfTheMessageGivesAnEmptyLineAfterIt) {
  CaptureStderr();
  wrenLogCommon(0, "getOptionChoiceIndex: %s = %d\n", "PageType", 1);
  EXPECT_EQ(GetCapturedStderr(), "DEBUG:getOptionChoiceIndex: PageType = 1\n\n");
}

TEST(Log, PlainMessagesGetNeitherKeywordNorNewline) {
  CaptureStderr();
  wrenWriteMessage("ERROR: %s - ", "x");
  EXPECT_EQ(GetCapturedStderr(), "ERROR: x - ");
}

// Standard error as a socket that keeps single writes apart.
class SeparateWrites {
 public:
  SeparateWrites() {
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const int room = 1 << 20;
    setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    saved = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
  }
  std::vector<std::string> take() {
    dup2(saved, STDERR_FILENO);
    close(saved);
    close(ends[1]);
    std::vector<std::string> writes;
    std::string room(1 << 20, '\0');
    for (ssize_t count = 0; (count = recv(ends[0], room.data(), room.size(), 0)) > 0;) {
      writes.push_back(room.substr(0, static_cast<std::size_t>(count)));
    }
    close(ends[0]);
    return writes;
  }

 private:
  int ends[2] = {-1, -1};
  int saved = -1;
};

TEST(Log, EveryLineLeavesInOneWriteWhateverItsLength) {
  std::vector<std::string> expected;
  SeparateWrites separate;
  for (const std::size_t length : {0, 1, 400, 504, 505, 506, 507, 511, 512, 4096, 9000, 100000}) {
    const std::string text(length, 'x');
    wrenLogCommon(3, "%s", text.c_str());
    expected.push_back("ERROR:" + text + "\n");
  }
  EXPECT_EQ(separate.take(), expected);
}

// What a process that gets no more memory writes to standard error when it logs `text`.
std::string loggedWithoutMemory(const std::string& text) {
  int ends[2] = {-1, -1};
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    const rlimit nothing = {1, 1};
    setrlimit(RLIMIT_AS, &nothing);
    wrenLogCommon(3, "%s", text.c_str());
    _exit(0);
  }
  close(ends[1]);
  std::string written;
  std::string room(1 << 16, '\0');
  for (ssize_t count = 0; (count = read(ends[0], room.data(), room.size())) > 0;) {
    written.append(room, 0, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  return written;
}

void writeToStandardError(void* /*context*/, const char* text, std::size_t length) {
  static_cast<void>(std::fwrite(text, 1, length, stderr));
}

TEST(Log, SinkGetsTheStartOfALongMessageIfThereIsNoMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a sanitizer needs all the address space";
#endif
  const wren::MessageSink sink(writeToStandardError, nullptr);
  const std::string written = loggedWithoutMemory(std::string(std::size_t{1} << 26, 'x'));
  EXPECT_EQ(written, "ERROR:" + std::string(504, 'x') + "\n");
}

TEST(Log, LongMessageIsCompleteWithoutMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a sanitizer needs all the address space";
#endif
  const std::string text(std::size_t{1} << 26, 'x');
  const std::string written = loggedWithoutMemory(text);
  ASSERT_EQ(written.size(), text.size() + std::string("ERROR:\n").size());
  EXPECT_EQ(written.substr(0, 10), "ERROR:xxxx");
  EXPECT_EQ(written.find_first_not_of('x', 6), written.size() - 1);
  EXPECT_EQ(written.back(), '\n');
}

// --- Sinks ---

using Messages = std::vector<std::string>;

void collect(void* messages, const char* text, std::size_t length) {
  static_cast<Messages*>(messages)->emplace_back(text, length);
}

TEST(MessageSink, ReceivesWholeMessagesInPlaceOfStandardError) {
  Messages messages;
  CaptureStderr();
  {
    const wren::MessageSink sink(collect, &messages);
    wrenLogCommon(3, "%s", "one");
    wrenWriteMessage("%d\n", 2);
    wrenLogCommon(0, "%s", std::string(3000, 'x').c_str());
  }
  wrenLogCommon(1, "after");
  EXPECT_EQ(messages, (Messages{"ERROR:one\n", "2\n", "DEBUG:" + std::string(3000, 'x') + "\n"}));
  EXPECT_EQ(GetCapturedStderr(), "DEBUG:after\n");
}

TEST(MessageSink, InnerOneIsInForceUntilItsEnd) {
  Messages outer;
  Messages inner;
  const wren::MessageSink sink(collect, &outer);
  wrenLogCommon(3, "1");
  {
    const wren::MessageSink nested(collect, &inner);
    wrenLogCommon(3, "2");
  }
  wrenLogCommon(3, "3");
  EXPECT_EQ(outer, (Messages{"ERROR:1\n", "ERROR:3\n"}));
  EXPECT_EQ(inner, (Messages{"ERROR:2\n"}));
}

TEST(MessageSink, BelongsToTheThreadThatMadeIt) {
  Messages messages;
  const wren::MessageSink sink(collect, &messages);
  CaptureStderr();
  std::thread([] { wrenLogCommon(3, "other thread"); }).join();
  EXPECT_EQ(GetCapturedStderr(), "ERROR:other thread\n");
  EXPECT_EQ(messages, Messages{});
}

}  // namespace
