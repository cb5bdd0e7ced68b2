// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The program as a whole: usage, colour, and commands without a scheduler.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/wren_program.h"

namespace wren::cli {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class WrenProgramUsage : public WrenProgram {
 protected:
  WrenProgramUsage() { environment_ = {"CUPS_SERVER=" + pathOf("nobody-listens")}; }
};

TEST_F(WrenProgramUsage, AnswersHelpAndVersionOfEveryCommand) {
  EXPECT_THAT(done({"--help"}).out, HasSubstr("add-queue"));
  EXPECT_EQ(done({"--version"}).out, "wren " WREN_VERSION "\n");
  for (const char* command : {"print", "halftones", "devices", "add-queue", "remove-queue",
                              "drawer", "beep", "cut", "feed", "selftest", "doctor", "uninstall"}) {
    EXPECT_THAT(done({command, "--help"}).out, HasSubstr("Example: ")) << command;
    EXPECT_EQ(done({command, "--version"}).out, "wren " WREN_VERSION "\n") << command;
  }
}

TEST_F(WrenProgramUsage, IsRefusedInOneLine) {
  EXPECT_EQ(refusal(2, {"prnt"}),
            "unknown command 'prnt', did you mean 'print'? (wren --help lists them)");
  EXPECT_EQ(refusal(2, {"banana"}), "unknown command 'banana' (wren --help lists them)");
  EXPECT_THAT(refusal(2, {}), HasSubstr("see wren --help"));
  EXPECT_THAT(refusal(2, {"print"}), HasSubstr("FILE is required; see wren print --help"));
  EXPECT_THAT(refusal(2, {"print", "a", "-x"}), HasSubstr("-x"));
  EXPECT_THAT(refusal(2, {"add-queue", "till"}),
              HasSubstr("NAME and ADDRESS, or --from FILE.json, is required"));
  EXPECT_THAT(refusal(2, {"print", "a\nb", "--paper", "5\n8"}), HasSubstr("--paper"));
}

TEST_F(WrenProgramUsage, NamesTheCommandThatWasMisused) {
  EXPECT_EQ(refusal(2, {"print"}),
            "print cannot be called like this: FILE is required; see wren print --help");
  EXPECT_THAT(refusal(2, {"--zork"}), StartsWith("cannot be called like this: "));
  EXPECT_THAT(refusal(2, {"--zork"}), testing::EndsWith("; see wren --help"));
  // It is hidden: nobody is led to it, but its name is known.
  EXPECT_EQ(refusal(2, {"completion"}), "unknown command 'completion' (wren --help lists them)");
  EXPECT_THAT(refusal(2, {"completions"}), StartsWith("completions cannot be called like this: "));
  EXPECT_THAT(done({"--help"}).out, Not(HasSubstr("completions")));
}

TEST_F(WrenProgramUsage, WritesCompletions) {
  const std::string bash = done({"completions", "bash"}).out;
  EXPECT_THAT(bash, StartsWith("# bash completions of wren"));
  EXPECT_THAT(bash, testing::EndsWith("complete -o default -F _wren wren\n"));
  const std::string zsh = done({"completions", "zsh"}).out;
  EXPECT_THAT(zsh, StartsWith("#compdef wren\n"));
  EXPECT_THAT(zsh, testing::EndsWith("_wren \"$@\"\n"));
}

TEST_F(WrenProgramUsage, NeverWritesMessagesIntoAFile) {
  folder_.write("order.txt", "text\n");
  folder_.write("order.png", "mine");
  done({"print", "order.txt", "--out", "told.prn"});
  for (const int closed : {STDERR_FILENO, STDIN_FILENO}) {
    beforeExec_ = [closed] { close(closed); };
    EXPECT_THAT(done({"print", "order.txt"}).out, StartsWith("1 page(s), "));
    EXPECT_EQ(bytesOf("order.prn"), bytesOf("told.prn"));
    EXPECT_EQ(bytesOf("order.png"), "mine");
  }
}

TEST_F(WrenProgramUsage, CannotBeReadByThoseWhoMayNot) {
  folder_.write("locked.txt", "text\n");
  folder_.write("locked.json", "{}");
  std::filesystem::permissions(pathOf("locked.txt"), std::filesystem::perms::none);
  std::filesystem::permissions(pathOf("locked.json"), std::filesystem::perms::none);
  becomeOrdinary();
  EXPECT_EQ(refusal(3, {"print", "locked.txt"}), "'locked.txt' cannot be read");
  EXPECT_EQ(refusal(3, {"halftones", "locked.txt"}), "'locked.txt' cannot be read");
  EXPECT_EQ(refusal(3, {"add-queue", "--from", "locked.json"}),
            "the file 'locked.json' cannot be read");
}

// The files of Wren for a program that lies in a folder of its own.
class WrenProgramPlace : public WrenProgramUsage {
 protected:
  // What the program says from this place.
  wren_test::ProcessResult at(const std::string& place, const std::vector<std::string>& arguments) {
    std::filesystem::create_directories(std::filesystem::path(pathOf(place)).parent_path());
    std::filesystem::copy_file(WREN_PROGRAM, pathOf(place),
                               std::filesystem::copy_options::skip_existing);
    wren_test::ProcessSpec spec;
    spec.program = pathOf(place);
    spec.arguments = {"wren"};
    spec.arguments.insert(spec.arguments.end(), arguments.begin(), arguments.end());
    spec.environment = {"PATH=" + pathOf("bin") + ":/usr/bin:/bin"};
    spec.workingFolder = folder_.path();
    return wren_test::runProcess(spec);
  }
};

TEST_F(WrenProgramPlace, IsBesideItsPreview) {
  if (std::filesystem::exists("/usr/bin/wren-preview") ||
      std::filesystem::exists("/usr/sbin/wren-preview") ||
      std::filesystem::exists("/usr/local/sbin/wren-preview")) {
    GTEST_SKIP() << "an installed wren-preview would be found as well";
  }
  const auto missing = at("opt/wren", {"preview", "a.prn"});
  EXPECT_EQ(missing.exitStatus, 4);
  EXPECT_EQ(missing.err, "wren: wren-preview is missing; install the package again\n");
  standIn("wren-preview", "echo in PATH \"$@\"\n");
  EXPECT_EQ(at("opt/wren", {"preview", "a.prn"}).out, "in PATH a.prn\n");
  const auto install = [&](const std::string& name, const std::string& script) {
    std::filesystem::create_directories(std::filesystem::path(pathOf(name)).parent_path());
    std::filesystem::permissions(folder_.write(name, script), std::filesystem::perms(0755));
  };
  install("opt/wren-preview", "#!/bin/sh\necho beside \"$@\"\nexit 7\n");
  const auto beside = at("opt/wren", {"preview", "a b.prn", "--marks"});
  EXPECT_EQ(beside.out, "beside a b.prn --marks\n");
  EXPECT_EQ(beside.exitStatus, 7);
  // In a build tree, and in no other folder that has such neighbours.
  install("preview/wren-preview", "#!/bin/sh\necho of the build\n");
  EXPECT_EQ(at("opt/wren", {"preview"}).out, "beside\n");
  EXPECT_EQ(at("cli/wren", {"preview"}).out, "of the build\n");
  install("preview/wren-preview", "no program");
  const auto broken = at("cli/wren", {"preview"});
  EXPECT_EQ(broken.exitStatus, 4);
  EXPECT_EQ(broken.err, "wren: " + pathOf("preview/wren-preview") + " cannot be started\n");
}

TEST_F(WrenProgramPlace, NeedsThePpdOfThePaper) {
  folder_.write("order.txt", "text\n");
  for (const char* paper : {"58", "80", "112"}) {
    const std::string ppd = std::string(WREN_PPD_INSTALL_DIR "/wren") + paper + ".ppd";
    if (std::filesystem::exists(ppd)) GTEST_SKIP() << "Wren is installed";
    const auto missing = at("opt/wren", {"print", "order.txt", "--paper", paper});
    EXPECT_EQ(missing.exitStatus, 4);
    EXPECT_EQ(missing.err, "wren: the PPD " + ppd + " is missing; install the package again\n");
    EXPECT_EQ(at("opt/wren", {"halftones", "order.txt", "--paper", paper}).exitStatus, 4);
  }
}

TEST_F(WrenProgramUsage, CommandsForAQueueNeedAScheduler) {
  for (const std::vector<std::string>& command : {std::vector<std::string>{"drawer", "till"},
                                                  {"beep", ""},
                                                  {"cut", "till", "full"},
                                                  {"feed", "till", "9"}}) {
    EXPECT_THAT(refusal(1, command), StartsWith("the scheduler does not run; start it with: "));
  }
}

TEST_F(WrenProgramUsage, HandsPreviewItsArguments) {
  const auto result = wren({"preview", "--help"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("Example: wren-preview "));
  EXPECT_THAT(wren({"preview", "gone.prn"}).err, StartsWith("wren-preview: "));
}

TEST_F(WrenProgramUsage, FailsWhereStandardOutputIsFull) {
  wren_test::ProcessSpec spec;
  spec.program = "/bin/sh";
  spec.arguments = {"sh", "-c", "exec " WREN_PROGRAM " --help >/dev/full"};
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "wren: standard output cannot be written: No space left on device\n");
}

TEST_F(WrenProgramUsage, FailsWhereStandardOutputIsClosed) {
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"--help"}, {"completions", "bash"}, {"doctor", "--json"}}) {
    beforeExec_ = [] { close(STDOUT_FILENO); };
    const auto result = wren(command);
    EXPECT_EQ(result.exitStatus, 1) << command[0];
    EXPECT_EQ(result.err, "wren: standard output cannot be written: Bad file descriptor\n")
        << command[0];
  }
}

TEST_F(WrenProgramUsage, UsesNoColourOutsideATerminal) {
  environment_.push_back("TERM=xterm");
  EXPECT_THAT(wren({"doctor"}).out, Not(HasSubstr("\033")));
}

TEST_F(WrenProgramUsage, NamesTheCommandThatStartsTheScheduler) {
  const std::string start = std::filesystem::exists("/run/systemd/system")
                                ? "sudo systemctl start cups"
                                : "sudo service cups start";
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"drawer", "till"}, {"remove-queue", "till"}}) {
    EXPECT_EQ(refusal(1, command), "the scheduler does not run; start it with: " + start);
  }
  EXPECT_THAT(wren({"doctor"}).out,
              HasSubstr("BAD   the scheduler does not run\n      fix: " + start + "\n"));
}

TEST_F(WrenProgramUsage, SaysThatTheSchedulerDoesNotRun) {
  const auto doctor = wren({"doctor"});
  EXPECT_EQ(doctor.exitStatus, 1);
  EXPECT_THAT(doctor.out, HasSubstr("BAD   the scheduler does not run\n      fix: sudo "));
  EXPECT_THAT(refusal(1, {"remove-queue", "till"}),
              HasSubstr("the scheduler does not run; start it with: "));
}

TEST_F(WrenProgramUsage, NamesThePackagesOfMissingFonts) {
  standIn("fc-list", "echo 'Some Sans'\n");
  const std::string advice = wren({"doctor"}).out;
  EXPECT_THAT(advice, HasSubstr("--    text files may print with boxes"));
  EXPECT_THAT(advice, HasSubstr("sudo apt install fonts-arphic-uming\n"));
  standIn("fc-list", "echo 'DejaVu Sans Mono'; echo 'AR PL UMing CN,AR PL UMing'\n");
  EXPECT_THAT(wren({"doctor"}).out, Not(HasSubstr("fonts-")));
}

TEST_F(WrenProgramUsage, ReportsAsJsonWithASchema) {
  const auto doctor = nlohmann::json::parse(wren({"doctor", "--json"}).out);
  EXPECT_EQ(doctor["schema"], 1);
  EXPECT_GE(doctor["faults"], 1);
  EXPECT_TRUE(doctor["queues"].is_array());
  const auto devices = nlohmann::json::parse(wren({"devices", "--json", "--timeout", "1"}).out);
  EXPECT_EQ(devices["schema"], 1);
  // Root sees every printer without a scheduler too.
  EXPECT_EQ(devices["partial"], geteuid() != 0);
}

TEST_F(WrenProgramUsage, RefusesQueuesBeforeItAsksForAnything) {
  EXPECT_THAT(refusal(2, {"add-queue", "my till", "usb://Wren/80"}), HasSubstr("unlike 'my till'"));
  EXPECT_THAT(refusal(2, {"add-queue", "till", "/dev/usb/lp0"}),
              HasSubstr("unlike '/dev/usb/lp0'"));
  EXPECT_THAT(refusal(3, {"add-queue", "--from", "gone.json"}),
              HasSubstr("'gone.json' cannot be read"));
  EXPECT_EQ(refusal(3, {"add-queue", "--from", "."}), "the file '.' cannot be read");
  EXPECT_EQ(refusal(3, {"add-queue", "--from", "/dev/zero"}),
            "'/dev/zero' is longer than 16777216 bytes");
  folder_.write("bad.json", "{");
  EXPECT_THAT(refusal(2, {"add-queue", "--from", "bad.json"}), HasSubstr("bad.json is not JSON"));
  EXPECT_THAT(refusal(4, {"add-queue", "till", "usb://Wren/80", "--root", pathOf("nothing")}),
              HasSubstr("the filter is not installed"));
}

// A system of another root; checks of the owner need root, or a user who plays it.
class WrenProgramDoctor : public WrenProgramUsage {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(pathOf("root" WREN_CUPS_SERVERBIN "/filter"));
    for (const char* folder : {"root" WREN_CUPS_SERVERBIN "/filter", "root"}) {
      std::filesystem::permissions(pathOf(folder), std::filesystem::perms(0755));
    }
  }

  // A filter that ends with this status.
  void installFilter(int status) {
    const auto path = folder_.write("root" WREN_CUPS_SERVERBIN "/filter/rastertowren",
                                    "#!/bin/sh\nexit " + std::to_string(status) + "\n");
    std::filesystem::permissions(path, std::filesystem::perms(0755));
  }

  std::string diagnosis() { return wren({"doctor", "--root", pathOf("root")}).out; }
};

// The filter without arguments prints its usage and ends with 1.
TEST_F(WrenProgramDoctor, TakesNoFilterForSoundThatEndsInAnotherWay) {
  if (geteuid() != 0) GTEST_SKIP() << "the filter has to belong to root";
  installFilter(1);
  EXPECT_THAT(diagnosis(), HasSubstr("ok    the filter runs on this machine ("));
  for (const int status : {0, 2, 126, 139}) {
    installFilter(status);
    EXPECT_THAT(diagnosis(), HasSubstr("BAD   the filter does not run on this machine ("))
        << status;
    EXPECT_THAT(diagnosis(), HasSubstr(", status " + std::to_string(status) + ")"));
  }
}

// The mode that CUPS gives the folder itself: only root and CUPS may look into it.
TEST_F(WrenProgramDoctor, MakesTheFolderOfTheImagesAsCupsDoes) {
  const std::string folder = pathOf("root/var/spool/cups/tmp");
  EXPECT_THAT(diagnosis(), HasSubstr("BAD   there is no " + folder +
                                     ", so no debug images are written\n      fix: sudo install "
                                     "-d -o root -g lp -m 1770 " +
                                     folder + "\n"));
  std::filesystem::create_directories(folder);
  EXPECT_THAT(diagnosis(), HasSubstr("ok    " + folder + " holds 0 MB of debug images\n"));
}

TEST_F(WrenProgramDoctor, NamesEachPpdThatIsMissing) {
  for (const char* paper : {"58", "80", "112"}) {
    EXPECT_THAT(diagnosis(), HasSubstr("BAD   the PPD " + pathOf("root" WREN_PPD_INSTALL_DIR) +
                                       "/wren" + paper + ".ppd is missing\n"));
  }
}

class WrenProgramUninstall : public WrenProgramUsage {
 protected:
  // An installation without a package.
  void install() {
    std::filesystem::create_directories(pathOf("root" WREN_MANIFEST_FOLDER));
    std::filesystem::create_directories(pathOf("root/usr/bin"));
    folder_.write("root/usr/bin/wren-preview", "program");
    folder_.write("root/usr/bin/other", "not ours");
    folder_.write("root" WREN_MANIFEST_FOLDER "/install_manifest.txt",
                  "/usr/bin/wren-preview\n/usr/bin/other\n/usr/bin/../../../wren\nusr/bin/wren\n");
  }
};

TEST_F(WrenProgramUninstall, SaysWhatItWouldRemove) {
  install();
  const auto result = done({"uninstall", "--dry-run", "--root", pathOf("root")});
  EXPECT_THAT(result.out, HasSubstr("would remove " + pathOf("root/usr/bin/wren-preview") + "\n"));
  EXPECT_THAT(result.out, Not(HasSubstr("other")));
  EXPECT_EQ(bytesOf("root/usr/bin/wren-preview"), "program");
}

TEST_F(WrenProgramUninstall, RemovesItsOwnFilesAlone) {
  install();
  if (geteuid() != 0) {
    EXPECT_EQ(refusal(1, {"uninstall", "--root", pathOf("root")}),
              "only root may remove it: sudo wren uninstall");
    return;
  }
  done({"uninstall", "--root", pathOf("root")});
  EXPECT_FALSE(std::filesystem::exists(pathOf("root/usr/bin/wren-preview")));
  EXPECT_FALSE(std::filesystem::exists(pathOf("root" WREN_MANIFEST_FOLDER)));
  EXPECT_EQ(bytesOf("root/usr/bin/other"), "not ours");
  EXPECT_THAT(refusal(1, {"uninstall", "--root", pathOf("root")}),
              HasSubstr("nothing is installed"));
}

}  // namespace
}  // namespace wren::cli
