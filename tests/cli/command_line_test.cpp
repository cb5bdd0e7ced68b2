// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The option tree: its help, its completions and its man page belong together.

#include "cli/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/completions.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<CLI::App*> commandsOf(CLI::App& app) {
  std::vector<CLI::App*> shown;
  for (CLI::App* command : app.get_subcommands({})) {
    if (!command->get_group().empty()) shown.push_back(command);
  }
  return shown;
}

CommandLine parsed(std::vector<std::string> arguments) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  app->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  return line;
}

TEST(OptionTree, HasTheCommandsOfTheManual) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  std::vector<std::string> names;
  for (const CLI::App* command : commandsOf(*app)) names.push_back(command->get_name());
  EXPECT_THAT(names,
              ElementsAre("print", "preview", "halftones", "devices", "add-queue", "remove-queue",
                          "drawer", "beep", "cut", "feed", "selftest", "doctor", "uninstall"));
}

TEST(OptionTree, ShowsAnExampleOfEachCommand) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  for (const CLI::App* command : commandsOf(*app)) {
    EXPECT_THAT(command->help(),
                testing::AnyOf(HasSubstr("Example: wren " + command->get_name()),
                               HasSubstr("Example: sudo wren " + command->get_name())));
  }
}

TEST(OptionTree, IsDescribedInTheManPage) {
  std::string page = wren_test::readFile(WREN_SOURCE_DIR "/cli/wren.1");
  std::erase(page, '\\');  // dashes are written with one
  CommandLine line;
  const auto app = makeOptionTree(line);
  for (const CLI::App* command : commandsOf(*app)) {
    const auto section = page.find("\n.SS " + command->get_name());
    ASSERT_NE(section, std::string::npos) << command->get_name();
    const std::string text = page.substr(section, page.find("\n.S", section + 1) - section);
    for (const CLI::Option* option : command->get_options()) {
      if (option->get_group().empty()) continue;
      for (const std::string& name : option->get_lnames()) {
        if (name == "help" || name == "version") continue;
        EXPECT_THAT(text, HasSubstr("--" + name)) << command->get_name();
      }
    }
  }
}

TEST(OptionTree, ReadsValuesInEveryUsualForm) {
  const auto line = parsed({"print", "-oPageType=1", "-o", "fit-to-page", "a.pdf", "--paper=58",
                            "-n2", "--out=x.prn", "--option", "cpi=14"});
  EXPECT_EQ(line.print.document, "a.pdf");
  EXPECT_EQ(line.print.paper, 58);
  EXPECT_EQ(line.print.copies, 2);
  EXPECT_EQ(line.print.out, "x.prn");
  EXPECT_THAT(line.print.options, ElementsAre("PageType=1", "fit-to-page", "cpi=14"));
}

TEST(OptionTree, TakesADocumentThatLooksLikeAnOptionAfterTwoDashes) {
  EXPECT_EQ(parsed({"print", "--", "-a.pdf"}).print.document, "-a.pdf");
}

TEST(OptionTree, TakesTheLastOfTwoFolders) {
  EXPECT_EQ(parsed({"print", "--into", "a", "x.pdf", "--into", "b"}).print.folder, "b");
}

TEST(OptionTree, TakesNegativeBrightnessValues) {
  EXPECT_EQ(parsed({"halftones", "a.png", "--brightness", "-20 0"}).halftones.brightness, "-20 0");
  EXPECT_EQ(parsed({"halftones", "a.png", "--brightness", "-20"}).halftones.brightness, "-20");
}

TEST(OptionTree, RefusesWrongUsage) {
  const std::vector<std::vector<std::string>> kWrong = {
      {},
      {"print"},
      {"print", "a", "b"},
      {"print", "-x", "a"},
      {"print", "a", "-n"},
      {"print", "a", "-n", "0"},
      {"print", "a", "-n", "two"},
      {"print", "a", "-n", "10000"},
      {"print", "a", "--paper", "79"},
      {"halftones"},
      {"halftones", "a", "b"},
      {"halftones", "a", "-n", "2"},
      {"devices", "x"},
      {"devices", "--timeout", "0"},
      {"add-queue", "till"},
      {"add-queue", "till", "usb://x", "79"},
      {"add-queue", "till", "usb://x", "80", "more"},
      {"add-queue", "--from", "x.json", "till", "usb://x"},
      {"add-queue", "--from", "x.json", "-o", "HalftoneType=Burkes"},
      {"remove-queue"},
      {"drawer"},
      {"drawer", "till", "now"},
      {"cut", "till", "half"},
      {"feed", "till"},
      {"feed", "till", "0"},
      {"feed", "till", "1001"},
      {"feed", "till", "2.5"},
      {"feed", "20"},
      {"selftest", "a", "b"},
      {"doctor", "a", "b"},
      {"uninstall", "now"},
      {"completions", "fish"},
  };
  for (const auto& arguments : kWrong) {
    EXPECT_THROW(parsed(arguments), CLI::ParseError) << testing::PrintToString(arguments);
  }
}

TEST(OptionTree, MakesALineOfACommandFileOfACommandForAQueue) {
  const std::pair<std::vector<std::string>, const char*> kCommands[] = {
      {{"drawer", "till"}, "OpenDrawer"},
      {{"beep", "till"}, "Beep"},
      {{"cut", "till"}, "Cut"},
      {{"cut", "till", "full"}, "Cut full"},
      {{"cut", "till", "partial"}, "Cut partial"},
      {{"feed", "till", "20"}, "Feed 20"},
      {{"selftest", "till"}, "PrintSelfTestPage"},
  };
  for (const auto& [arguments, expected] : kCommands) {
    const auto command = parsed(arguments).queueCommand;
    EXPECT_EQ(command.queue, "till");
    EXPECT_EQ(commandLineFor(arguments[0], command), expected);
  }
}

// The print system of these tests has two queues.
std::string writeLpstat(const wren_test::TemporaryFolder& folder) {
  const std::string lpstat = folder.write("lpstat", "#!/bin/sh\nprintf 'till\\nbar\\n'\n");
  std::filesystem::permissions(lpstat, std::filesystem::perms::owner_all);
  return "PATH=" + folder.path().string() + ":/usr/bin:/bin";
}

// What bash would offer for the last of some words.
std::string offeredFor(const std::string& words) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  const wren_test::TemporaryFolder folder;
  const std::string file = folder.write("wren.bash", writeCompletions(*app, "bash"));
  wren_test::ProcessSpec spec;
  spec.program = "/bin/bash";
  spec.arguments = {
      "bash", "-euc",
      "source " + file + "; COMP_WORDS=(" + words +
          "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _wren; echo \"${COMPREPLY[*]}\""};
  spec.environment = {writeLpstat(folder)};
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result.out;
}

TEST(Completions, OfferTheOptionsOfThePreview) {
  EXPECT_EQ(offeredFor("wren preview --ma"), "--marks --max-length --max-bytes --max-seconds\n");
  EXPECT_EQ(offeredFor("wren preview -o"), "-o\n");
}

TEST(Completions, OfferTheQueuesToCommandsThatTakeOne) {
  for (const char* command :
       {"remove-queue", "doctor", "drawer", "beep", "cut", "feed", "selftest"}) {
    EXPECT_EQ(offeredFor(std::string("wren ") + command + " ''"), "till bar\n") << command;
    EXPECT_EQ(offeredFor(std::string("wren ") + command + " --he"), "--help\n") << command;
  }
  EXPECT_EQ(offeredFor("wren print drawer ''"), "\n");
}

TEST(Completions, OfferCommandsOptionsAndPapers) {
  EXPECT_EQ(offeredFor("wren pr"), "print preview\n");
  EXPECT_EQ(offeredFor("wren print --ra"), "--raster\n");
  EXPECT_EQ(offeredFor("wren add-queue till usb://x --re"), "--replace\n");
  EXPECT_EQ(offeredFor("wren print --paper ''"), "58 80 112\n");
  EXPECT_EQ(offeredFor("wren doctor --ra"), "\n");
  EXPECT_EQ(offeredFor("wren cut till ''"), "full partial\n");
  EXPECT_EQ(offeredFor("wren cut till p"), "partial\n");
  EXPECT_EQ(offeredFor("wren feed till ''"), "\n");
}

// What an interactive zsh shows for some words and the tabulator.
std::string shownByZsh(const std::string& words) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  const wren_test::TemporaryFolder folder;
  folder.write("_wren", writeCompletions(*app, "zsh"));
  wren_test::ProcessSpec spec;
  spec.program = "/usr/bin/env";
  spec.arguments = {
      "env", "zsh", "-f", WREN_SOURCE_DIR "/tests/cli/zsh_offers.zsh", folder.path().string(),
      words};
  spec.environment = {writeLpstat(folder), "TERM=xterm", "HOME=" + folder.path().string(),
                      "LC_ALL=C"};
  spec.workingFolder = folder.path();
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result.out;
}

TEST(Completions, WorkInAnInteractiveZsh) {
  if (!std::filesystem::exists("/usr/bin/zsh") && !std::filesystem::exists("/bin/zsh")) {
    GTEST_SKIP() << "there is no zsh";
  }
  const std::pair<const char*, std::vector<const char*>> kShown[] = {
      {"wren pr", {"print ", "preview "}},
      {"wren preview --ma", {"--marks", "--max-length", "--max-bytes"}},
      {"wren print --paper ", {"58", "80", "112"}},
      {"wren print -o a=b -o c=d --co", {"--copies"}},
      {"wren remove-queue ", {"till", "bar"}},
      {"wren doctor ", {"till", "bar"}},
      {"wren drawer ", {"till", "bar"}},
      {"wren beep ", {"till", "bar"}},
      {"wren cut ", {"till", "bar"}},
      {"wren cut till ", {"full", "partial"}},
      {"wren feed ", {"till", "bar"}},
      {"wren selftest ", {"till", "bar"}},
  };
  for (const auto& [words, offers] : kShown) {
    const std::string shown = shownByZsh(words);
    for (const char* offer : offers) EXPECT_THAT(shown, HasSubstr(offer)) << words;
  }
}

TEST(Completions, DoNotShowWhatIsHidden) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  for (const char* shell : {"bash", "zsh"}) {
    const std::string text = writeCompletions(*app, shell);
    EXPECT_THAT(text, testing::Not(HasSubstr("--root"))) << shell;
    EXPECT_THAT(text, testing::Not(HasSubstr(" completions)"))) << shell;
    EXPECT_THAT(text, HasSubstr("--replace")) << shell;
  }
}

}  // namespace
}  // namespace wren::cli
