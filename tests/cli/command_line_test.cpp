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

TEST(OptionTree, HasTheDefaultsOfTheManual) {
  const PrintArguments print = parsed({"print", "a.pdf"}).print;
  EXPECT_EQ(print.copies, 1);
  EXPECT_EQ(print.paper, 80);
  EXPECT_THAT(print.options, ElementsAre());
  EXPECT_EQ(print.out + print.folder + print.raster + print.images, "");
  EXPECT_FALSE(print.json);
  const HalftonesArguments halftones = parsed({"halftones", "a.pdf"}).halftones;
  EXPECT_EQ(halftones.paper, 80);
  EXPECT_EQ(halftones.brightness, "-20 -10 0 10 20");
  EXPECT_EQ(halftones.width, 1600);
  EXPECT_EQ(halftones.out + halftones.folder + halftones.crop, "");
  EXPECT_FALSE(halftones.json);
  const DevicesArguments devices = parsed({"devices"}).devices;
  EXPECT_EQ(devices.seconds, 10);
  EXPECT_FALSE(devices.json);
  const AddQueueArguments queue = parsed({"add-queue", "till", "usb://x"}).addQueue;
  EXPECT_EQ(queue.paper, 0) << "as it is";
  EXPECT_FALSE(queue.dryRun);
  EXPECT_FALSE(queue.replace);
  EXPECT_FALSE(parsed({"remove-queue", "till"}).removeQueue.dryRun);
  EXPECT_FALSE(parsed({"doctor"}).doctor.json);
  const UninstallArguments uninstall = parsed({"uninstall"}).uninstall;
  EXPECT_FALSE(uninstall.dryRun);
  EXPECT_FALSE(uninstall.keepQueues);
}

TEST(OptionTree, GivesEachOptionItsPlace) {
  const PrintArguments print =
      parsed({"print", "a.pdf", "--copies", "7", "--into", "i", "--out", "o", "--raster", "r",
              "--images", "m", "--json", "--paper", "112"})
          .print;
  EXPECT_EQ(print.copies, 7);
  EXPECT_EQ(print.folder, "i");
  EXPECT_EQ(print.out, "o");
  EXPECT_EQ(print.raster, "r");
  EXPECT_EQ(print.images, "m");
  EXPECT_EQ(print.paper, 112);
  EXPECT_TRUE(print.json);
  const HalftonesArguments halftones =
      parsed({"halftones", "a.pdf", "-o", "cpi=1", "--paper", "58", "--out", "o", "--into", "i",
              "--brightness", "5", "--crop", "1x2+3+4", "--width", "300", "--json"})
          .halftones;
  EXPECT_EQ(halftones.document, "a.pdf");
  EXPECT_THAT(halftones.options, ElementsAre("cpi=1"));
  EXPECT_EQ(halftones.paper, 58);
  EXPECT_EQ(halftones.out, "o");
  EXPECT_EQ(halftones.folder, "i");
  EXPECT_EQ(halftones.brightness, "5");
  EXPECT_EQ(halftones.crop, "1x2+3+4");
  EXPECT_EQ(halftones.width, 300);
  EXPECT_TRUE(halftones.json);
  const DevicesArguments devices = parsed({"devices", "--timeout", "7", "--json"}).devices;
  EXPECT_EQ(devices.seconds, 7);
  EXPECT_TRUE(devices.json);
  const AddQueueArguments queue = parsed({"add-queue", "till", "usb://x", "58", "--option", "cpi=1",
                                          "-o", "lpi=2", "--dry-run", "--root", "/r"})
                                      .addQueue;
  EXPECT_EQ(queue.name, "till");
  EXPECT_EQ(queue.uri, "usb://x");
  EXPECT_EQ(queue.paper, 58);
  EXPECT_THAT(queue.options, ElementsAre("cpi=1", "lpi=2"));
  EXPECT_TRUE(queue.dryRun);
  EXPECT_FALSE(queue.replace);
  EXPECT_EQ(queue.root, "/r");
  const AddQueueArguments file = parsed({"add-queue", "--from", "f", "--replace"}).addQueue;
  EXPECT_EQ(file.file, "f");
  EXPECT_TRUE(file.replace);
  EXPECT_FALSE(file.dryRun);
  const RemoveQueueArguments removed = parsed({"remove-queue", "till", "--dry-run"}).removeQueue;
  EXPECT_EQ(removed.name, "till");
  EXPECT_TRUE(removed.dryRun);
  const DoctorArguments doctor = parsed({"doctor", "till", "--json", "--root", "/r"}).doctor;
  EXPECT_EQ(doctor.queue, "till");
  EXPECT_TRUE(doctor.json);
  EXPECT_EQ(doctor.root, "/r");
  const UninstallArguments dry = parsed({"uninstall", "--dry-run", "--root", "/r"}).uninstall;
  EXPECT_TRUE(dry.dryRun);
  EXPECT_FALSE(dry.keepQueues);
  EXPECT_EQ(dry.root, "/r");
  EXPECT_TRUE(parsed({"uninstall", "--keep-queues"}).uninstall.keepQueues);
  EXPECT_EQ(parsed({"completions", "zsh"}).shell, "zsh");
}

TEST(OptionTree, TakesValuesUpToItsLimits) {
  EXPECT_EQ(parsed({"print", "a", "-n", "9999"}).print.copies, 9999);
  EXPECT_EQ(parsed({"print", "a", "-n", "1"}).print.copies, 1);
  EXPECT_EQ(parsed({"devices", "--timeout", "1"}).devices.seconds, 1);
  EXPECT_EQ(parsed({"devices", "--timeout", "300"}).devices.seconds, 300);
  EXPECT_EQ(parsed({"halftones", "a", "--width", "200"}).halftones.width, 200);
  EXPECT_EQ(parsed({"halftones", "a", "--width", "20000"}).halftones.width, 20000);
  EXPECT_EQ(parsed({"feed", "till", "1"}).queueCommand.feedMm, 1);
  EXPECT_EQ(parsed({"feed", "till", "1000"}).queueCommand.feedMm, 1000);
  for (const char* paper : {"58", "80", "112"}) {
    EXPECT_EQ(std::to_string(parsed({"print", "a", "--paper", paper}).print.paper), paper);
    EXPECT_EQ(std::to_string(parsed({"halftones", "a", "--paper", paper}).halftones.paper), paper);
    EXPECT_EQ(std::to_string(parsed({"add-queue", "t", "usb://x", paper}).addQueue.paper), paper);
  }
}

TEST(OptionTree, TakesTheLastOfTwoPaths) {
  for (const char* option : {"--out", "--into", "--raster", "--images"}) {
    const auto print = parsed({"print", "x.pdf", option, "a", option, "b"}).print;
    EXPECT_EQ(print.out + print.folder + print.raster + print.images, "b") << option;
  }
  for (const char* option : {"--out", "--into"}) {
    const auto halftones = parsed({"halftones", "x.pdf", option, "a", option, "b"}).halftones;
    EXPECT_EQ(halftones.out + halftones.folder, "b") << option;
  }
  EXPECT_EQ(parsed({"add-queue", "--from", "a", "--from", "b"}).addQueue.file, "b");
}

struct Explanation {
  const char* command;
  const char* summary;
  std::vector<std::pair<const char*, const char*>> options;
};

const Explanation kExplanations[] = {
    {"print",
     "Turn a PDF, PNG, JPEG or text file into printer bytes",
     {{"FILE", "Document to print"},
      {"--copies", "Number of copies"},
      {"--option", "Option of the job, as for lp; repeat it for more"},
      {"--paper", "Width of the paper in mm: 58, 80 or 112"},
      {"--out", "Where the printer bytes go"},
      {"--into", "Folder for what has no path of its own"},
      {"--raster", "Keep the pages that the filter gets"},
      {"--images", "Folder for the debug images"},
      {"--json", "Report as a JSON document"}}},
    {"preview", "Show the paper that printer bytes print (runs wren-preview)", {}},
    {"halftones",
     "Draw a document with all nine halftone types on one sheet",
     {{"FILE", "Document to print"},
      {"--option", "Option of the job, as for lp; repeat it for more"},
      {"--paper", "Width of the paper in mm: 58, 80 or 112"},
      {"--out", "Where the sheet goes"},
      {"--into", "Folder for a sheet without --out"},
      {"--brightness", "Brightness values, in quotes"},
      {"--crop", "Show a part of the paper only, in dots"},
      {"--width", "Width of the sheet at most"},
      {"--json", "Report as a JSON document"}}},
    {"devices",
     "List USB and network printers with their addresses",
     {{"--timeout", "Seconds to look for network printers"},
      {"--json", "Report as a JSON document"}}},
    {"add-queue",
     "Add a print queue, or several from a file",
     {{"NAME", "Name of the queue"},
      {"ADDRESS", "Address of the printer (wren devices)"},
      {"PAPER", "Width of the paper: 58, 80 (default) or 112"},
      {"--option", "Default of the queue; repeat it for more"},
      {"--from", "Make the queues of a file, as doctor --json writes them"},
      {"--dry-run", "Say what would change, and change nothing"},
      {"--replace", "Allow another paper for a queue that is there"}}},
    {"remove-queue",
     "Remove a print queue of Wren's",
     {{"NAME", "Name of the queue"}, {"--dry-run", "Say what would change, and change nothing"}}},
    {"drawer", "Open the cash drawer, without paper", {{"QUEUE", "Name of the queue"}}},
    {"beep", "Sound the buzzer", {{"QUEUE", "Name of the queue"}}},
    {"cut",
     "Cut the paper",
     {{"QUEUE", "Name of the queue"}, {"KIND", "full or partial (default: as the queue cuts)"}}},
    {"feed", "Feed paper", {{"QUEUE", "Name of the queue"}, {"MM", "Millimetres, 1 to 1000"}}},
    {"selftest",
     "Print a page that shows what the printer can do",
     {{"QUEUE", "Name of the queue"}}},
    {"doctor",
     "Check everything between a document and the printer",
     {{"QUEUE", "Queue to check (default: every queue of Wren's)"},
      {"--json", "Report as a JSON document"}}},
    {"uninstall",
     "Remove the queues of Wren's and Wren itself",
     {{"--dry-run", "Say what would be removed, and remove nothing"},
      {"--keep-queues", "Leave the queues as they are"}}},
};

TEST(OptionTree, ExplainsEachOption) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  for (const auto& [name, summary, options] : kExplanations) {
    const CLI::App* command = app->get_subcommand(name);
    EXPECT_EQ(command->get_description(), summary) << name;
    for (const auto& [option, text] : options) {
      EXPECT_EQ(command->get_option(option)->get_description(), text) << name << " " << option;
      EXPECT_FALSE(command->get_option(option)->get_group().empty()) << name << " " << option;
    }
    if (options.empty()) continue;
    const auto shown = command->get_options([](const CLI::Option* option) {
      return !option->get_group().empty() && !option->check_lname("help") &&
             !option->check_lname("version");
    });
    EXPECT_EQ(shown.size(), options.size()) << name;
  }
  EXPECT_EQ(app->get_description(),
            "Prints on ESC/POS receipt printers with CUPS: trial prints, pictures, queues.");
}

TEST(OptionTree, ShowsExamplesThatItTakes) {
  const std::pair<const char*, std::vector<std::string>> kExamples[] = {
      {"print", {"print", "receipt.pdf", "-o", "HalftoneType=Burkes", "--paper", "58"}},
      {"halftones",
       {"halftones", "photo.png", "--brightness", "\"-10 0 10\"", "--crop", "300x200+0+0"}},
      {"devices", {"sudo", "devices"}},
      {"add-queue", {"sudo", "add-queue", "till", "socket://192.0.2.7:9100", "80"}},
      {"remove-queue", {"sudo", "remove-queue", "till"}},
      {"drawer", {"drawer", "till"}},
      {"beep", {"beep", "till"}},
      {"cut", {"cut", "till", "full"}},
      {"feed", {"feed", "till", "20"}},
      {"selftest", {"selftest", "till"}},
      {"doctor", {"doctor", "till"}},
      {"uninstall", {"sudo", "uninstall"}},
  };
  CommandLine line;
  const auto app = makeOptionTree(line);
  for (const auto& [name, words] : kExamples) {
    const bool isForRoot = words[0] == "sudo";
    const std::vector<std::string> arguments(words.begin() + (isForRoot ? 1 : 0), words.end());
    std::string example = isForRoot ? "Example: sudo wren" : "Example: wren";
    for (const std::string& word : arguments) example += " " + word;
    EXPECT_EQ(app->get_subcommand(name)->get_footer(), example) << name;
    EXPECT_NO_THROW(parsed(arguments)) << name;
  }
}

// The words of the README and of the man page. Newer versions of CLI11 break lines of 80 letters.
TEST(OptionTree, SaysWhatTheExitStatusesMean) {
  CommandLine line;
  const auto app = makeOptionTree(line);
  EXPECT_EQ(app->get_footer(),
            "Exit status: 0 done; 1 it was tried and failed; 2 wrong usage; 3 the document\n"
            "cannot be used; 4 something that is needed is missing. wren COMMAND --help\n"
            "shows an example.");
  EXPECT_THAT(app->help(), HasSubstr("Exit status: 0 done; 1 it was tried"));
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
      {"devices", "--timeout", "301"},
      {"halftones", "a", "--width", "199"},
      {"halftones", "a", "--width", "20001"},
      {"halftones", "a", "--paper", "81"},
      {"add-queue", "--from", "x.json", "till"},
      {"add-queue"},
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
      // Files, of which the folder has two; a name of a value may hold a colon.
      {"wren print ", {"lpstat", "_wren"}},
      {"wren print --raster ", {"lpstat", "_wren"}},
      {"wren preview --listen ", {"lpstat", "_wren"}},
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
