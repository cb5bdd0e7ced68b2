// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/saved_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "cli/output_file.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(SavedOptions, AreThoseOfTheQueueWithAllItsInstances) {
  const char* text =
      "Default till HalftoneType=Stuki cpi=14\nDest till/draft Brightness=5\n"
      "Dest tiller PageType=1\nnonsense\n\nDest\n";
  EXPECT_THAT(parseSavedOptions(text, "till"),
              testing::UnorderedElementsAre(Pair("HalftoneType", "Stuki"), Pair("cpi", "14"),
                                            Pair("Brightness", "5")));
  EXPECT_THAT(parseSavedOptions(text, "bar"), ElementsAre());
}

TEST(SavedOptions, AreThoseOfTheMachineAndOfTheUser) {
  const wren_test::TemporaryFolder folder;
  const std::string machine = folder.path() / "lpoptions";
  const std::string user = folder.path() / ".cups" / "lpoptions";
  std::ofstream(machine) << "Dest till cpi=14\n";
  const char* home = std::getenv("HOME");
  const std::string oldHome = home == nullptr ? "" : home;
  ::setenv("HOME", folder.path().c_str(), 1);
  const auto withoutOwn = readSavedOptions(folder.path().string(), "till");
  std::filesystem::create_directory(folder.path() / ".cups");
  std::ofstream(user) << "Dest till lpi=8\n";
  const auto both = readSavedOptions(folder.path().string(), "till");
  ::setenv("HOME", "", 1);
  EXPECT_EQ(readSavedOptions(folder.path().string(), "till").size(), 1U);
  ::setenv("HOME", oldHome.c_str(), 1);
  ASSERT_EQ(withoutOwn.size(), 1U);
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(both[0].file, machine);
  EXPECT_TRUE(both[0].isOfMachine);
  EXPECT_THAT(both[0].options, ElementsAre(Pair("cpi", "14")));
  EXPECT_EQ(both[1].file, user);
  EXPECT_FALSE(both[1].isOfMachine);
  EXPECT_THAT(both[1].options, ElementsAre(Pair("lpi", "8")));
}

TEST(SavedOptions, AreRemovedByLpoptionsFromTheFileThatItWrites) {
  const SavedOptions own = {"/home/user/.cups/lpoptions", false, {}};
  EXPECT_EQ(removalCommand(own, "till", "HalftoneType", false),
            "lpoptions -p till -r HalftoneType");
}

TEST(SavedOptions, OfTheMachineAreRemovedByRoot) {
  const SavedOptions machine = {"/etc/cups/lpoptions", true, {}};
  for (const bool isRoot : {true, false}) {
    EXPECT_THAT(removalCommand(machine, "till", "cpi", isRoot),
                testing::MatchesRegex("sudo sed -i -E '.*' /etc/cups/lpoptions"));
  }
  const SavedOptions own = {"/home/a user/.cups/lpoptions", false, {}};
  EXPECT_THAT(removalCommand(own, "till", "cpi", true),
              testing::EndsWith(" '/home/a user/.cups/lpoptions'"));
  EXPECT_EQ(removalCommand(own, "till", "a b", false), "lpoptions -p till -r 'a b'");
}

TEST(SavedOptions, AreRemovedFromTheOtherFilesByAnEdit) {
  struct Row {
    const char* before;
    const char* after;
  };
  const Row kRows[] = {
      {"Dest till.1 a+b=Stuki\n", "Dest till.1\n"},
      {"Default till.1/draft cpi=14 a+b=\"two words\" lpi=8\n",
       "Default till.1/draft cpi=14 lpi=8\n"},
      {"Dest till.1 a+b\nDest till.1 a+bc=1 xa+b=2\n", "Dest till.1\nDest till.1 a+bc=1 xa+b=2\n"},
      {"Dest till21 a+b=1\nDest till.11 a+b=1\n", "Dest till21 a+b=1\nDest till.11 a+b=1\n"},
  };
  const wren_test::TemporaryFolder folder;
  const std::string file = folder.path() / "lpoptions";
  for (const Row& row : kRows) {
    for (const bool isOfMachine : {true, false}) {
      std::ofstream(file) << row.before;
      const std::string command = removalCommand({file, isOfMachine, {}}, "till.1", "a+b", true);
      ASSERT_TRUE(command.starts_with("sudo ")) << command;
      ASSERT_EQ(std::system(command.substr(5).c_str()), 0) << command;
      EXPECT_EQ(readWholeFile(file), row.after) << command;
    }
  }
}

}  // namespace
}  // namespace wren::cli
