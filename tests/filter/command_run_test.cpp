// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The whole program commandtowren: arguments, input, exact messages, exit status and every byte.

#include "filter/command_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "tests/filter/expected_bytes.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/printer_bytes.h"

namespace wren_test {
namespace {

using Lines = std::vector<std::string>;

constexpr char kPulse[] = "1B 70 00 32 32";
constexpr char kFull[] = "1B 4A 50 1D 56 00";

struct CommandJob {
  std::string text = "#CUPS-COMMAND\nOpenDrawer\n";
  std::string options;
  bool viaFile = false;
  std::string path;     // of the file, in place of `text`
  std::string ppdPath;  // in place of a PPD of its own; "-" leaves the variable unset
  Lines arguments;      // in place of all others
  std::function<void()> beforeExec;
};

class CommandFilter : public testing::Test {
 protected:
  ProcessSpec specOf(const CommandJob& job) {
    ProcessSpec spec;
    spec.program = WREN_COMMAND_FILTER;
    spec.arguments = {"till", "1", "user", "title", "1", job.options};
    if (job.viaFile || !job.path.empty()) {
      spec.arguments.push_back(job.path.empty() ? folder_.write("commands", job.text).string()
                                                : job.path);
    }
    if (!job.arguments.empty()) spec.arguments = job.arguments;
    const std::string ppd = job.ppdPath.empty() ? folder_.write("ppd", ppd_).string() : job.ppdPath;
    if (ppd != "-") spec.environment = {"PPD=" + ppd};
    spec.beforeExec = job.beforeExec;
    return spec;
  }

  ProcessResult run(const CommandJob& job) {
    return runProcess(specOf(job), job.viaFile ? "" : job.text);
  }

  ProcessResult run(const std::string& commands, const std::string& options = {}) {
    CommandJob job;
    job.text = "#CUPS-COMMAND\n" + commands;
    job.options = options;
    return run(job);
  }

  TemporaryFolder folder_;
  std::string ppd_ = fullPpd().text();
};

// The messages after the lines of the settings.
Lines faultsOf(const ProcessResult& result) {
  Lines lines = messageLines(result.err);
  const auto settings = static_cast<long>(settingsLines().size());
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + std::min<long>(settings, lines.size())),
            settingsLines());
  lines.erase(lines.begin(), lines.begin() + std::min<long>(settings, lines.size()));
  return lines;
}

TEST_F(CommandFilter, WritesTheBytesOfItsCommandsAndNoOthers) {
  const struct {
    const char* commands;
    const char* options;
    std::string bytes;
  } rows[] = {
      {"OpenDrawer", "", kPulse},
      {"OpenDrawer", "CashDrawerPulseWidth=8", "1B 70 00 FA 32"},
      {"beep", "Buzzer2Repeat=3 Buzzer2OnTime=2",
       "1F 1B 1F 42 65 65 70 08 1B 42 03 02 1F 1B 1F 42 65 65 70 06"},
      {"Cut", "DocCutType=1 FeedCutAfterJobEnd=5", kFull},
      {"Cut partial", "DocCutType=1", "1D 56 01"},
      {"Feed 16\nOpenDrawer\nFeed 1", "", std::string("1B 4A FF 1B 4A 01 ") + kPulse + " 1B 4A 10"},
  };
  for (const auto& row : rows) {
    const auto result = run(row.commands, row.options);
    EXPECT_TRUE(result.exited(0));
    EXPECT_EQ(hexOf(result.out), row.bytes);
  }
}

TEST_F(CommandFilter, ReadsAFileOrStandardInput) {
  CommandJob job;
  for (const bool viaFile : {false, true}) {
    job.viaFile = viaFile;
    const auto result = run(job);
    EXPECT_TRUE(result.exited(0));
    EXPECT_EQ(hexOf(result.out), kPulse);
    EXPECT_EQ(faultsOf(result), Lines());
  }
}

TEST_F(CommandFilter, PrintsTheSelfTestPageOfItsPrinter) {
  ppd_ = fullPpd("None", "136.5").text();
  const auto result = run("PrintSelfTestPage");
  EXPECT_TRUE(result.exited(0));
  const auto pages = printedPages(result.out);
  ASSERT_EQ(pages.size(), 1U);
  EXPECT_EQ(pages[0].mode, 1U);
  EXPECT_EQ(pages[0].rows.at(0).size(), 384U);
  EXPECT_EQ(hexOf(result.out.substr(0, 7)), "1B 40 1B 55 00 1B 3C");
}

TEST_F(CommandFilter, DoesTheOthersWhereOneIsUnknown) {
  const auto result = run("Clean all\nOpenDrawer\nReportLevels\n");
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(hexOf(result.out), kPulse);
  EXPECT_EQ(faultsOf(result), Lines({"ERROR:Line 2: unknown command 'Clean'",
                                     "ERROR:Line 4: unknown command 'ReportLevels'"}));
}

TEST_F(CommandFilter, FailsWhereNothingIsDone) {
  const struct {
    std::string text;
    Lines faults;
  } rows[] = {
      {"", {"ERROR:The command file does not begin with #CUPS-COMMAND"}},
      {"OpenDrawer", {"ERROR:The command file does not begin with #CUPS-COMMAND"}},
      {"#CUPS-COMMAND\n", {"ERROR:No commands found!"}},
      {"#CUPS-COMMAND\n100%s", {"ERROR:Line 2: unknown command '100%s'"}},
      {"#CUPS-COMMAND\nCut",
       {"ERROR:Cut: the queue does not cut (DocCutType); ask for a full or partial cut"}},
      {"#CUPS-COMMAND\n" + std::string(70'000, '\n') + "Beep",
       {"ERROR:The command file is longer than 65536 bytes"}},
  };
  for (const auto& row : rows) {
    CommandJob job;
    job.text = row.text;
    const auto result = run(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(faultsOf(result), row.faults);
  }
}

TEST_F(CommandFilter, TooFewArgumentsPrintTheUsage) {
  const Lines five = {"/usr/lib/cups/filter/commandtowren", "1", "user", "title", "1"};
  for (long count = 1; count <= 5; ++count) {
    CommandJob job;
    job.arguments = {five.begin(), five.begin() + count};
    const auto result = run(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Usage: commandtowren job_id user title copies options [file]\n");
  }
}

TEST_F(CommandFilter, FileThatCannotBeReadIsOneLine) {
  for (const auto& [path, reason] :
       {std::pair{"/missing/commands", "No such file or directory"}, {"/", "Is a directory"}}) {
    CommandJob job;
    job.path = path;
    const auto result = run(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, std::string("ERROR:Unable to read the command file: ") + reason + "\n");
  }
}

TEST_F(CommandFilter, MissingPpdIsOneLineAndNoByte) {
  for (const char* path : {"-", "/missing/printer.ppd", "/"}) {
    CommandJob job;
    job.ppdPath = path;
    const auto result = run(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(linesOf(result.err).size(), 1U);
    EXPECT_EQ(result.err.rfind("ERROR:Unable to open the PPD file", 0), 0U) << result.err;
  }
}

// The next file to be opened must not become the printer.
TEST_F(CommandFilter, ClosedDescriptorsTakeNothing) {
  CommandJob job;
  job.viaFile = true;
  job.beforeExec = [] {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
  };
  const auto result = run(job);
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(faultsOf(result), Lines());
  job.beforeExec = [] { close(STDERR_FILENO); };
  EXPECT_EQ(hexOf(run(job).out), kPulse);
}

TEST_F(CommandFilter, EndsQuietlyWhenCancelledBeforeItsFirstByte) {
  const CommandJob job;
  Process filter(specOf(job));
  filter.feed("#CUPS-COMMAND\nOpenDrawer\n");
  usleep(200'000);  // it waits for the end of the commands
  EXPECT_FALSE(filter.hasEnded());
  filter.signal(SIGTERM);
  for (int i = 0; i < 2000 && !filter.hasEnded(); ++i) usleep(5000);
  const auto result = filter.finish();
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
}

// The pipe holds less than the page, so the filter waits within it.
TEST_F(CommandFilter, CompletesTheBandAndCutsWhenCancelledInThePage) {
  ppd_ = fullPpd("None", "295.3").text();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  CommandJob job;
  job.viaFile = true;
  job.text = "#CUPS-COMMAND\nPrintSelfTestPage\nOpenDrawer\n";
  job.options = "DocCutType=2 FeedCutAfterJobEnd=1";
  job.beforeExec = [&] {
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
  };
  Process filter(specOf(job));
  close(ends[1]);
  std::string out(1, '\0');
  ASSERT_EQ(read(ends[0], out.data(), 1), 1);
  usleep(200'000);
  filter.signal(SIGTERM);
  char part[4096];
  for (ssize_t count = 0; (count = read(ends[0], part, sizeof part)) > 0;) {
    out.append(part, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  EXPECT_TRUE(filter.finish().exited(0));
  const std::string end = fromHex("1B4A10 1B4A10 1D5601");
  ASSERT_GT(out.size(), end.size());
  EXPECT_EQ(hexOf(out.substr(out.size() - end.size())), hexOf(end));
  EXPECT_LT(out.size(), 170'000U);  // of 180'000
  for (const auto& command : decodePrinterBytes(out)) EXPECT_NE(command.name, "unknown");
}

TEST(CommandRun, NoArgumentsAtAllPrintTheUsageToo) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(wren::filter::runCommandFilter(0, nullptr, {}), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Usage:  job_id user title copies options [file]\n");
}

}  // namespace
}  // namespace wren_test
