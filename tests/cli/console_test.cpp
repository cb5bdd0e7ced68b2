// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "common/handles.h"
#include "tests/support/process.h"

namespace wren::cli {
namespace {

TEST(Notes, AreOneLineOnStandardError) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  note("a\nb\tc\x1b[31m\x7F caf\xC3\xA9 ~");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "wren: a b c [31m  caf\xC3\xA9 ~\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(Lines, GoToStandardOutputOrToAnotherStream) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  say("100 % of it");
  say("else", stderr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "100 % of it\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "else\n");
}

TEST(ShellWords, ArePlainWhereTheyMayBe) {
  for (const char* text :
       {"till", "usb://Wren/80", "192.0.2.7:9100", "a_b-c.d,e@f%g+h=i", "Z0z9"}) {
    EXPECT_EQ(shellWord(text), text);
  }
  EXPECT_EQ(shellWord(""), "''");
  EXPECT_EQ(shellWord("a b"), "'a b'");
  EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
}

TEST(ShellWords, AreReadByAShellAsTheyWere) {
  std::string command = "printf '%s|'";
  std::string expected;
  for (int c = 1; c < 256; ++c) {
    const std::string alone(1, static_cast<char>(c));
    for (const std::string& text : {alone, "a" + alone + "b", "#" + alone}) {
      command += " " + shellWord(text);
      expected += text + "|";
    }
  }
  wren_test::ProcessSpec spec;
  spec.program = "/bin/sh";
  spec.arguments = {"sh", "-c", command};
  EXPECT_EQ(wren_test::runProcess(spec).out, expected);
}

// Standard output on a terminal, and an environment, until the end of the test.
class Colours : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"TERM", "NO_COLOR"}) {
      const char* value = std::getenv(name);
      kept_.emplace_back(name, value == nullptr ? "" : value);
    }
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
  }
  void TearDown() override {
    for (const auto& [name, value] : kept_) {
      if (value.empty()) {
        unsetenv(name);
      } else {
        setenv(name, value.c_str(), 1);
      }
    }
  }

  // Coloured for a standard output of this kind.
  static std::string onTerminal(Colour colour) {
    const FileDescriptor terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    EXPECT_EQ(grantpt(terminal.get()), 0);
    EXPECT_EQ(unlockpt(terminal.get()), 0);
    return on(open(ptsname(terminal.get()), O_RDWR | O_NOCTTY | O_CLOEXEC), colour);
  }
  static std::string on(int opened, Colour colour) {
    const FileDescriptor stream(opened);
    std::fflush(stdout);
    const FileDescriptor kept(dup(STDOUT_FILENO));
    dup2(stream.get(), STDOUT_FILENO);
    std::string text = coloured("text", colour);
    dup2(kept.get(), STDOUT_FILENO);
    return text;
  }

 private:
  std::vector<std::pair<const char*, std::string>> kept_;
};

TEST_F(Colours, AreForTerminals) {
  EXPECT_EQ(onTerminal(Colour::kGreen), "\033[32mtext\033[0m");
  EXPECT_EQ(onTerminal(Colour::kRed), "\033[31;1mtext\033[0m");
  EXPECT_EQ(onTerminal(Colour::kYellow), "\033[33mtext\033[0m");
  EXPECT_EQ(on(open("/dev/null", O_WRONLY | O_CLOEXEC), Colour::kRed), "text");
}

TEST_F(Colours, AreLeftOutWhereTheyAreNotWanted) {
  setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(onTerminal(Colour::kRed), "text");
  setenv("NO_COLOR", "", 1);
  EXPECT_EQ(onTerminal(Colour::kRed), "\033[31;1mtext\033[0m") << "an empty value counts as none";
  unsetenv("NO_COLOR");
  setenv("TERM", "dumb", 1);
  EXPECT_EQ(onTerminal(Colour::kRed), "text");
  unsetenv("TERM");
  EXPECT_EQ(onTerminal(Colour::kRed), "text");
}

}  // namespace
}  // namespace wren::cli
