// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs without a document: command files, the program wren, and the button of CUPS's web page.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>

#include "common/handles.h"
#include "tests/print/job_files.h"
#include "tests/queue/delivered_job.h"
#include "tests/support/same_bytes.h"

namespace {

using wren_test::SameBytes;

const Bytes kPulse = {0x1B, 0x70, 0x00, 0x32, 0x32};
const Bytes kBeep = {0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x08, 0x1B, 0x42,
                     0x01, 0x01, 0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06};
const Bytes kCut = {0x1B, 0x4A, 0xC0, 0x1D, 0x56, 0x01};  // 12 mm and a partial cut
const Bytes kFullCut = {0x1B, 0x4A, 0xC0, 0x1D, 0x56, 0x00};
const Bytes kFeed20 = {0x1B, 0x4A, 0xFF, 0x1B, 0x4A, 0x41};

// The name of a command file in the folder of documents.
std::string commandFile(const std::string& lines) {
  std::ofstream(bench->scheduler.work() + "/documents/commands") << "#CUPS-COMMAND\n" << lines;
  return "commands";
}

// The self-test page of a queue, by running the filter without a queue.
Bytes directSelfTestPage(const std::string& queue) {
  const std::string work = bench->scheduler.work();
  const std::string out = work + "/self-test.prn";
  const std::string command =
      "printf '#CUPS-COMMAND\\nPrintSelfTestPage\\n' | PPD=" + work + "/ppd/" + queue + ".ppd " +
      work + "/bin/filter/commandtowren 1 user title 1 '' >" + out + " 2>/dev/null";
  EXPECT_EQ(run(command), 0) << command;
  return job_files::bytesOfFile(out);
}

// CUPS finds the format by the first line, or is told.
TEST(QueueCommands, ArriveAsTheirBytesAlone) {
  for (const char* options : {"", "-o document-format=application/vnd.cups-command"}) {
    const auto job = bench->print("wren80", options, commandFile("OpenDrawer\n"));
    EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED);
    EXPECT_THAT(job.received, SameBytes(kPulse)) << options;
    EXPECT_TRUE(job.runs.empty()) << "pages were printed";
  }
}

TEST(QueueCommands, UseTheOptionsOfTheJob) {
  const auto job = bench->print("wren80", "-o DocCutType=1 -o FeedCutAfterJobEnd=12",
                                commandFile("Nonsense\nCut\n"));
  EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED);
  EXPECT_THAT(job.received, SameBytes(kFullCut));
}

std::string wrenCommand(const std::string& arguments) {
  return bench->scheduler.work() + "/program/cli/wren " + arguments;
}

int jobOf(const std::string& answer) {
  const auto at = answer.find(" as job ");
  return at == std::string::npos ? 0 : std::atoi(answer.c_str() + at + 8);
}

TEST(QueueCommands, AreSentByTheProgramWren) {
  const std::pair<const char*, Bytes> kCommands[] = {
      {"drawer wren80", kPulse},
      {"beep wren80", kBeep},
      {"cut wren80", kCut},
      {"cut wren80 full", kFullCut},
      {"cut WREN80 partial", kCut},
      {"feed wren80 20", kFeed20},
      {"selftest wren58", directSelfTestPage("wren58")},
  };
  for (const auto& [arguments, bytes] : kCommands) {
    const std::string answer = outputOf(wrenCommand(arguments));
    EXPECT_THAT(answer, testing::HasSubstr("' has taken ")) << arguments;
    EXPECT_EQ(bench->waitForEnd(jobOf(answer)), IPP_JSTATE_COMPLETED) << answer;
    EXPECT_THAT(bench->takeReceived(), SameBytes(bytes)) << arguments;
  }
}

TEST(QueueCommands, WaitInAStoppedQueue) {
  ASSERT_EQ(run("cupsdisable wren80"), 0);
  const std::string answer = outputOf(wrenCommand("drawer wren80 2>&1"));
  EXPECT_THAT(answer, testing::HasSubstr("the queue 'wren80' is stopped and the command waits; "
                                         "start it with: cupsenable wren80\n"));
  ASSERT_EQ(run("cupsenable wren80"), 0);
  EXPECT_EQ(bench->waitForEnd(jobOf(answer)), IPP_JSTATE_COMPLETED);
  EXPECT_THAT(bench->takeReceived(), SameBytes(kPulse));
}

// What wren says of a command that fails.
std::string refusalOf(const std::string& arguments) {
  // A failed command has no output for outputOf.
  return outputOf(wrenCommand(arguments + " 2>&1 || test $? -eq 1"));
}

TEST(QueueCommands, AreRefusedForQueuesThatCannotDoThem) {
  EXPECT_EQ(refusalOf("drawer nobody"), "wren: there is no queue 'nobody'\n");
  ASSERT_EQ(run("cupsreject wren80"), 0);
  EXPECT_THAT(refusalOf("drawer wren80"),
              testing::StartsWith("wren: the queue 'wren80' does not take the command: "));
  ASSERT_EQ(run("cupsaccept wren80"), 0);
}

// Its PPD names no filter for commands.
TEST(QueueCommands, AreRefusedForAQueueOfAnEarlierVersion) {
  const std::string work = bench->scheduler.work();
  ASSERT_EQ(run("sed '/commandtowren/d; /cupsCommands/d' " + work + "/ppd/wren80.ppd >" + work +
                "/earlier.ppd && lpadmin -p earlier80 -E -v socket://127.0.0.1:1/ -P " + work +
                "/earlier.ppd 2>/dev/null"),
            0);
  EXPECT_THAT(
      refusalOf("drawer earlier80"),
      testing::AllOf(testing::StartsWith("wren: the queue 'earlier80' does not take the command: "),
                     testing::EndsWith(" (wren doctor earlier80 says more)\n")));
  EXPECT_EQ(run("lpadmin -x earlier80"), 0);
}

// One request to the scheduler, as text; the answer up to its end.
std::string answerTo(const std::string& request) {
  const wren::FileDescriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = bench->scheduler.work() + "/state/socket";
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (connect(connection.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    return "no connection";
  }
  if (send(connection.get(), request.data(), request.size(), MSG_NOSIGNAL) < 0) return "not sent";
  std::string answer;
  std::array<char, 4096> part;
  for (ssize_t count = 0; (count = read(connection.get(), part.data(), part.size())) > 0;) {
    answer.append(part.data(), static_cast<std::size_t>(count));
  }
  return answer;
}

constexpr char kRequestEnd[] =
    " HTTP/1.1\r\nHost: localhost\r\nAccept-Language: en\r\nConnection: close\r\n";

std::string getPage(const std::string& path) {
  return answerTo("GET " + path + kRequestEnd + "\r\n");
}

std::string postForm(const std::string& path, const std::string& cookie, const std::string& form) {
  return answerTo("POST " + path + kRequestEnd + "Cookie: " + cookie +
                  "\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                  std::to_string(form.size()) + "\r\n\r\n" + form);
}

// The first group of a pattern in a text.
std::string found(const std::string& text, const char* pattern) {
  std::smatch match;
  return std::regex_search(text, match, std::regex(pattern)) ? match.str(1) : "";
}

// As a browser does it: the form has the number of the session that the cookie has.
TEST(QueueCommands, TheButtonOfTheWebPagePrintsTheSelfTestPage) {
  const std::string page = getPage("/printers/wren80");
  ASSERT_THAT(page, testing::HasSubstr("<OPTION VALUE=\"print-self-test-page\">"));
  const std::string cookie = found(page, "Set-Cookie: ([^;]+);");
  const std::string session = found(page, R"(NAME="org.cups.sid" VALUE="([0-9a-f]+)\")");
  ASSERT_NE(session, "") << page;
  ASSERT_EQ(cookie, "org.cups.sid=" + session);

  const std::string form = "org.cups.sid=" + session + "&OP=print-self-test-page";
  EXPECT_THAT(postForm("/printers/wren80", cookie, form), testing::HasSubstr("Self-Test Page"));
  EXPECT_THAT(bench->takeReceived(), SameBytes(directSelfTestPage("wren80")));
}

}  // namespace
