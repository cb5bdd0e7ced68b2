// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren devices: the printers that CUPS finds, and those that its backends find without it.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/queue_program.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Refusal = SchedulerStandIn::Refusal;

constexpr char kOnlyRoot[] = "wren: only root sees every USB printer: sudo wren devices\n";

class WrenProgramDevices : public WrenProgramQueues {
 protected:
  void SetUp() override {
    scheduler_.setDevices({{"network", "socket://192.0.2.7", "Maker Model", "Till 1"},
                           {"network", "lpd", "Unknown", "LPD/LPR Host or Printer"},
                           {"direct", "usb://Wren/80?serial=1", "Wren 80", ""},
                           {"network", "lpd://", "Unknown", ""},
                           {"direct", "usb://Wren/58", "", ""}});
  }
};

TEST_F(WrenProgramDevices, ListAddressesAndNames) {
  const auto result = done({"devices"});
  EXPECT_EQ(result.out,
            "usb://Wren/80?serial=1\n      Wren 80\nusb://Wren/58\n      direct\n"
            "socket://192.0.2.7\n      Till 1\n");
  EXPECT_EQ(result.err, "");
  const auto asked = scheduler_.requests("CUPS-Get-Devices");
  ASSERT_EQ(asked.size(), 1U);
  auto attributes = asked[0].attributes;
  EXPECT_EQ(attributes["timeout"], "10") << "seconds";
  EXPECT_FALSE(attributes.contains("include-schemes"));
  EXPECT_NE(attributes["requesting-user-name"], "");
}

TEST_F(WrenProgramDevices, AreReportedAsJson) {
  const json expected = {{"schema", 1},
                         {"partial", false},
                         {"devices",
                          {{{"kind", "direct"},
                            {"uri", "usb://Wren/80?serial=1"},
                            {"makeAndModel", "Wren 80"},
                            {"info", nullptr}},
                           {{"kind", "direct"},
                            {"uri", "usb://Wren/58"},
                            {"makeAndModel", nullptr},
                            {"info", nullptr}},
                           {{"kind", "network"},
                            {"uri", "socket://192.0.2.7"},
                            {"makeAndModel", "Maker Model"},
                            {"info", "Till 1"}}}}};
  EXPECT_EQ(json::parse(done({"devices", "--json", "--timeout", "7"}).out), expected);
  EXPECT_EQ(scheduler_.requests("CUPS-Get-Devices").back().attributes["timeout"], "7");
}

TEST_F(WrenProgramDevices, MayBeNone) {
  scheduler_.setDevices({});
  const auto result = done({"devices"});
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "wren: no printer was found; a network printer can be added by its address all the "
            "same\n");
}

TEST_F(WrenProgramDevices, AreAnnouncedOnATerminal) {
  const FileDescriptor terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(terminal);
  ASSERT_EQ(grantpt(terminal.get()), 0);
  ASSERT_EQ(unlockpt(terminal.get()), 0);
  const std::string name = ptsname(terminal.get());
  const FileDescriptor side(open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  beforeExec_ = [&] { dup2(side.get(), STDERR_FILENO); };
  done({"devices", "--timeout", "7"});
  std::array<char, 1024> text = {};
  ASSERT_GT(read(terminal.get(), text.data(), text.size() - 1), 0);
  EXPECT_STREQ(text.data(), "wren: looking for printers for at most 7 s\r\n");
}

// The backends of CUPS, in a mount of its own: a search without a scheduler that may be asked.
class WrenProgramBackends : public WrenProgramDevices {
 protected:
  void SetUp() override {
    WrenProgramDevices::SetUp();
    const std::string folder = pathOf("backends");
    fs::create_directory(folder);
    write("usb",
          "echo 'direct usb://Wren/80 \"Wren 80\" \"Till\" \"\" \"\"'; echo direct usb://\n");
    write("snmp", "echo 'network socket://192.0.2.7 \"Maker\" \"\" \"\" \"\"'\n");
    write("dnssd", "echo 'network dnssd://x \"M\" \"Bar\" \"\" \"\"'\n");
    write("beh", "echo 'direct beh://never \"M\" \"I\" \"\" \"\"'\n");
    wren_test::ProcessSpec spec;
    spec.program = "/usr/bin/env";
    spec.arguments = {
        "env", "unshare", "-rm", "mount", "--bind", folder, WREN_CUPS_SERVERBIN "/backend"};
    spec.environment = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin"};
    canMount_ = wren_test::runProcess(spec).exitStatus == 0;
  }

  void write(const std::string& name, const std::string& script) {
    fs::permissions(folder_.write("backends/" + name, "#!/bin/sh\n" + script), fs::perms(0755));
  }

  // The command with these backends; `before` runs in the mount.
  wren_test::ProcessResult withBackends(const std::string& command,
                                        const std::string& before = "") {
    wren_test::ProcessSpec spec;
    spec.program = "/usr/bin/env";
    spec.arguments = {"env",
                      "unshare",
                      "-rm",
                      "sh",
                      "-c",
                      "mount --bind " + pathOf("backends") +
                          " " WREN_CUPS_SERVERBIN "/backend && " + before + " exec " + command};
    spec.environment = environment_;
    spec.environment.insert(spec.environment.end(), {"PATH=/usr/sbin:/usr/bin:/sbin:/bin",
                                                     "HOME=" + folder_.path().string()});
    spec.workingFolder = folder_.path();
    return wren_test::runProcess(spec);
  }

  bool canMount_ = false;
};

TEST_F(WrenProgramBackends, SearchWhereTheSchedulerRefuses) {
  if (!canMount_) GTEST_SKIP() << "no mounts for this user";
  const std::string expected =
      "usb://Wren/80\n      Till\nsocket://192.0.2.7\n      Maker\ndnssd://x\n      Bar\n";
  for (const Refusal refusal : {Refusal::kForbidden, Refusal::kNeedsPassword}) {
    scheduler_.refuse(refusal);
    const auto result = withBackends(WREN_PROGRAM " devices");
    EXPECT_EQ(result.out, expected);
    EXPECT_EQ(result.err, "") << "root sees all";
  }
  environment_ = {"CUPS_SERVER=" + pathOf("nobody-listens")};
  EXPECT_EQ(withBackends(WREN_PROGRAM " devices").out, expected);
}

TEST_F(WrenProgramBackends, DoNotSearchWhereTheSchedulerAnswers) {
  if (!canMount_) GTEST_SKIP() << "no mounts for this user";
  EXPECT_EQ(json::parse(withBackends(WREN_PROGRAM " devices --json").out)["devices"].size(), 3U);
  scheduler_.setDevices({});
  EXPECT_EQ(withBackends(WREN_PROGRAM " devices").out, "");
  scheduler_.refuse(Refusal::kFails);
  EXPECT_EQ(withBackends(WREN_PROGRAM " devices").out, "");
}

// This one waits for a writer that never comes.
TEST_F(WrenProgramBackends, AreEndedAfterTheTimeOfTheUser) {
  if (!canMount_) GTEST_SKIP() << "no mounts for this user";
  ASSERT_EQ(mkfifo(pathOf("fifo").c_str(), 0600), 0);
  write("snmp", "echo 'network socket://192.0.2.7 \"Maker\" \"\" \"\" \"\"'\nread x <" +
                    pathOf("fifo") + "\n");
  environment_ = {"CUPS_SERVER=" + pathOf("nobody-listens")};
  const auto result = withBackends(WREN_PROGRAM " devices --timeout 3");
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(result.out,
            "usb://Wren/80\n      Till\nsocket://192.0.2.7\n      Maker\ndnssd://x\n      Bar\n");
}

// doctor wants to know of USB printers alone.
TEST_F(WrenProgramBackends, AreAskedForUsbPrintersByDoctor) {
  if (!canMount_) GTEST_SKIP() << "no mounts for this user";
  write("snmp", "touch " + pathOf("asked") + "\n");
  addQueue("till", "usb://Wren/80");
  addQueue("bar", "usb://Wren/81");
  scheduler_.refuse(Refusal::kForbidden);
  const std::string doctor = WREN_PROGRAM " doctor --root " + root() + " ";
  EXPECT_THAT(withBackends(doctor + "till").out,
              testing::HasSubstr("ok    the printer of 'till' is plugged in\n"));
  EXPECT_THAT(withBackends(doctor + "bar").out,
              testing::HasSubstr("BAD   the printer of 'bar' is not found at usb://Wren/81\n"));
  EXPECT_FALSE(fs::exists(pathOf("asked")));
}

TEST_F(WrenProgramDevices, ArePartialForOrdinaryUsersWhomTheSchedulerRefuses) {
  becomeOrdinary();
  const auto seen = done({"devices", "--json"});
  EXPECT_EQ(json::parse(seen.out)["partial"], false);
  EXPECT_EQ(seen.err, "");
  scheduler_.refuse(Refusal::kNeedsPassword);
  const auto result = done({"devices", "--json", "--timeout", "1"});
  EXPECT_EQ(json::parse(result.out)["partial"], true);
  EXPECT_EQ(result.err, kOnlyRoot);
}

}  // namespace
}  // namespace wren::cli
