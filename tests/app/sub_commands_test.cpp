// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The sub-commands of PAPPL's main loop with a server of ours.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "tests/app/running_server.h"
#include "tests/app/slow_printer.h"

namespace wren_test {
namespace {

using testing::HasSubstr;

// Where the name server of the local network does not run, PAPPL alone ends with a signal here.
TEST(SubCommands, ListDevicesWithoutANameService) {
  RunningServer server;
  EXPECT_EQ(server.run({"devices"}).exitStatus, 0);
  EXPECT_EQ(server.run({"autoadd"}).exitStatus, 0);
  EXPECT_EQ(server.ask({"printers"}), "");
}

// PAPPL alone tells the number 0 for each.
TEST(SubCommands, NameAPrinterThatWasJustAdded) {
  SlowPrinter printer;
  RunningServer server;
  for (const char* name : {"till", "bar", "door"}) {
    server.ask({"add", "-d", name, "-m", "wren80", "-v", printer.uri()});
  }
  server.ask({"default", "-d", "bar"});
  EXPECT_EQ(server.ask({"default"}), "bar\n");
  server.ask({"delete", "-d", "till"});
  EXPECT_EQ(server.ask({"printers"}), "bar\ndoor\n");
  EXPECT_EQ(server.ask({"default"}), "bar\n");
}

TEST(SubCommands, ControlPrintersAndJobs) {
  SlowPrinter printer;
  RunningServer server;
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", printer.uri()});
  server.ask({"pause", "-d", "till"});
  EXPECT_THAT(server.ask({"status", "-d", "till"}), HasSubstr("paused"));
  const int job = server.submit("till", std::string(WREN_EXAMPLES) + "/receipt.pdf");
  EXPECT_EQ(server.stateOf("till", job), "pending");
  server.ask({"cancel", "-d", "till", "-j", std::to_string(job)});
  EXPECT_EQ(server.stateOf("till", job), "canceled");
  server.ask({"resume", "-d", "till"});
  EXPECT_THAT(server.ask({"status", "-d", "till"}), HasSubstr("idle"));
  EXPECT_THAT(server.ask({"drivers"}), HasSubstr("wren58 "));
  EXPECT_THAT(server.ask({"options", "-d", "till"}), HasSubstr("om_80x200mm"));
  EXPECT_THAT(server.ask({"status"}), HasSubstr("Running"));
}

}  // namespace
}  // namespace wren_test
