// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren uninstall: queues, files and the package, and nothing of others.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/cli/queue_program.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Refusal = SchedulerStandIn::Refusal;

constexpr char kManifest[] = WREN_MANIFEST_FOLDER "/install_manifest.txt";

class WrenProgramRemoval : public WrenProgramQueues {
 protected:
  void SetUp() override {
    addQueue("till", "usb://x");
    scheduler_.add(SchedulerStandIn::Queue{"other", "usb://o", "*NickName: \"Other\"\n"});
    addQueue("bar", "usb://x");
  }

  // An installation without a package, with debug images.
  void installFiles() {
    for (const char* folder : {WREN_MANIFEST_FOLDER, "/usr/bin", "/usr/share/ppd/wren"}) {
      fs::create_directories(root() + folder);
    }
    folder_.write("root/usr/bin/wren", "program");
    folder_.write("root/usr/share/ppd/wren/wren58.ppd", "ppd");
    folder_.write(std::string("root") + kManifest,
                  "/usr/bin/wren\n/usr/share/ppd/wren/wren58.ppd\n/usr/bin/wren-gone\n");
    for (const char* name : {"origin_a_1.bmp", "dithered_a_1.bmp", "origin_a.png", "other.bmp"}) {
      folder_.write(std::string("root/var/spool/cups/tmp/") + name, "image");
    }
  }

  // With the rights of root.
  wren_test::ProcessResult asRoot(const std::vector<std::string>& arguments) {
    if (geteuid() == 0) return wren(arguments);
    wren_test::ProcessSpec spec;
    spec.program = "/usr/bin/env";
    spec.arguments = {"env", "unshare", "-r", WREN_PROGRAM};
    spec.arguments.insert(spec.arguments.end(), arguments.begin(), arguments.end());
    spec.environment = environment_;
    spec.environment.insert(spec.environment.end(),
                            {"PATH=" + pathOf("bin") + ":/usr/bin:/bin", "LC_ALL=C.UTF-8"});
    spec.workingFolder = folder_.path();
    return wren_test::runProcess(spec);
  }

  bool canBeRoot() { return geteuid() == 0 || asRoot({"--version"}).exitStatus == 0; }

  // A package that dpkg knows, and an apt-get that writes down how it is called.
  void installPackage(const std::string& state, int status = 0) {
    standIn("dpkg-query", "echo \"$@\" >" + pathOf("query") + "\nprintf '" + state + "'\n");
    standIn("apt-get", "echo \"$@\" >" + pathOf("apt") +
                           "\necho of apt\necho error of apt >&2\nexit " + std::to_string(status) +
                           "\n");
  }
};

TEST_F(WrenProgramRemoval, TakesQueuesFilesAndImagesOfWrenAlone) {
  if (!canBeRoot()) GTEST_SKIP() << "not root, and no user namespace";
  installFiles();
  const auto result = asRoot({"uninstall", "--root", root()});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(
      result.out,
      testing::StartsWith("removed the queue till\nremoved the queue bar\nremoved " + root() +
                          "/usr/bin/wren\nremoved " + root() + "/usr/share/ppd/wren/wren58.ppd\n"));
  for (const char* name : {"origin_a_1.bmp", "dithered_a_1.bmp"}) {
    EXPECT_THAT(result.out, HasSubstr("removed " + root() + "/var/spool/cups/tmp/" + name + "\n"));
    EXPECT_FALSE(fs::exists(root() + "/var/spool/cups/tmp/" + name)) << name;
  }
  for (const char* name : {"origin_a.png", "other.bmp"}) {
    EXPECT_TRUE(fs::exists(root() + "/var/spool/cups/tmp/" + name)) << name;
  }
  EXPECT_THAT(scheduler_.queueNames(), ElementsAre("other"));
  EXPECT_FALSE(fs::exists(root() + "/usr/bin/wren"));
  EXPECT_FALSE(fs::exists(root() + kManifest));
  // The folder of the PPDs has others still, of the next version perhaps.
  EXPECT_TRUE(fs::exists(installedPpd(80)));
  EXPECT_TRUE(fs::exists(root() + "/usr/bin"));
}

TEST_F(WrenProgramRemoval, ChangesNothingInADryRun) {
  installFiles();
  becomeOrdinary();
  const auto result = done({"uninstall", "--dry-run", "--root", root()});
  EXPECT_THAT(result.out,
              testing::StartsWith("would remove the queue till\nwould remove the queue bar\nwould "
                                  "remove " +
                                  root() + "/usr/bin/wren\n"));
  EXPECT_THAT(result.out, HasSubstr("would remove " + root() + kManifest + "\n"));
  EXPECT_THAT(result.out, HasSubstr("/origin_a_1.bmp\n"));
  EXPECT_EQ(scheduler_.queueNames().size(), 3U);
  EXPECT_TRUE(fs::exists(root() + "/usr/bin/wren"));
  EXPECT_TRUE(fs::exists(root() + "/var/spool/cups/tmp/origin_a_1.bmp"));
}

TEST_F(WrenProgramRemoval, LeavesTheQueuesIfItIsTold) {
  installFiles();
  const auto result = done({"uninstall", "--dry-run", "--keep-queues", "--root", root()});
  EXPECT_THAT(result.out, Not(HasSubstr("queue")));
  EXPECT_THAT(result.out, HasSubstr("would remove " + root() + "/usr/bin/wren\n"));
}

TEST_F(WrenProgramRemoval, IsForRootAlone) {
  installFiles();
  becomeOrdinary();
  EXPECT_EQ(refusal(1, {"uninstall", "--root", root()}),
            "only root may remove it: sudo wren uninstall");
  EXPECT_EQ(scheduler_.queueNames().size(), 3U);
}

TEST_F(WrenProgramRemoval, GoesOnWithoutAScheduler) {
  installFiles();
  environment_ = {"CUPS_SERVER=" + pathOf("nobody-listens")};
  const auto result = done({"uninstall", "--dry-run", "--root", root()});
  EXPECT_EQ(result.err, "wren: the scheduler does not run; its queues are left as they are\n");
  EXPECT_THAT(result.out, testing::StartsWith("would remove " + root() + "/usr/bin/wren\n"));
}

TEST_F(WrenProgramRemoval, EndsAtAQueueThatCannotBeRemoved) {
  if (!canBeRoot()) GTEST_SKIP() << "not root, and no user namespace";
  installFiles();
  scheduler_.refuse(Refusal::kForbidden);
  auto result = asRoot({"uninstall", "--root", root()});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err,
            "wren: the queue 'till' cannot be removed: only root or a member of the group lpadmin "
            "may do that: sudo wren uninstall\n");
  EXPECT_TRUE(fs::exists(root() + "/usr/bin/wren"));
}

TEST_F(WrenProgramRemoval, SaysWhyAFileCannotBeRemoved) {
  if (!canBeRoot()) GTEST_SKIP() << "not root, and no user namespace";
  installFiles();
  fs::remove(root() + "/usr/bin/wren");
  fs::create_directories(root() + "/usr/bin/wren/x");
  const auto result = asRoot({"uninstall", "--root", root()});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "wren: '" + root() + "/usr/bin/wren' cannot be removed: Is a directory\n");
}

TEST_F(WrenProgramRemoval, FollowsNoLineThatSomebodyHasChanged) {
  installFiles();
  folder_.write(std::string("root") + kManifest,
                "usr/bin/wren\n/usr/bin/../bin/wren\n/usr/bin/other\n/wren/passwd\n\n"
                "/usr/share/ppd/wren/wren58.ppd\n");
  fs::remove_all(root() + "/var/spool/cups/tmp");
  EXPECT_EQ(done({"uninstall", "--dry-run", "--keep-queues", "--root", root()}).out,
            "would remove " + root() + "/usr/share/ppd/wren/wren58.ppd\nwould remove " + root() +
                kManifest + "\n");
}

TEST_F(WrenProgramRemoval, IsRefusedWhereNothingIsInstalled) {
  const std::string words = "nothing is installed: neither the package nor ";
  installPackage("installed");
  EXPECT_EQ(refusal(1, {"uninstall", "--root", root()}), words + root() + kManifest + " is there");
  if (fs::exists(kManifest)) GTEST_SKIP() << "there is an installation without a package";
  installPackage("config-files");
  EXPECT_EQ(refusal(1, {"uninstall"}), words + kManifest + " is there");
  EXPECT_EQ(bytesOf("query"), "-W -f=${db:Status-Status} printer-driver-wren\n");
  EXPECT_EQ(scheduler_.queueNames().size(), 3U);
}

TEST_F(WrenProgramRemoval, CallsThePackageManagerForAPackage) {
  if (fs::exists(kManifest)) GTEST_SKIP() << "there is an installation without a package";
  installPackage("installed");
  EXPECT_EQ(done({"uninstall", "--dry-run"}).out,
            "would remove the queue till\nwould remove the queue bar\nwould call apt-get purge "
            "printer-driver-wren\n");
  EXPECT_FALSE(fs::exists(pathOf("apt")));
  if (!canBeRoot()) GTEST_SKIP() << "not root, and no user namespace";
  const auto result = asRoot({"uninstall"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(result.out,
            "removed the queue till\nremoved the queue bar\ncalling apt-get purge "
            "printer-driver-wren\nof apt\n");
  EXPECT_EQ(result.err, "error of apt\n");
  EXPECT_EQ(bytesOf("apt"), "purge -y -q printer-driver-wren\n");
  installPackage("installed", 100);
  const auto failed = asRoot({"uninstall", "--keep-queues"});
  EXPECT_EQ(failed.exitStatus, 1);
  EXPECT_EQ(failed.err, "error of apt\nwren: apt-get ended with status 100\n");
}

}  // namespace
}  // namespace wren::cli
