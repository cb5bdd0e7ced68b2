// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/own_program.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren {
namespace {

TEST(OwnProgram, IsTheFileOfThisTest) {
  EXPECT_EQ(ownProgram(), std::filesystem::canonical(WREN_THIS_TEST));
}

TEST(OwnProgram, IsFoundThroughALinkAndAnyName) {
  const wren_test::TemporaryFolder folder;
  const auto link = folder.path() / "link";
  std::filesystem::create_symlink(WREN_THIS_TEST, link);
  wren_test::ProcessSpec spec;
  spec.program = link;
  spec.arguments = {"another name", "--gtest_filter=*IsTheFileOfThisTest"};
  const auto result = wren_test::runProcess(spec);
  EXPECT_TRUE(result.exited(0)) << result.out;
  EXPECT_NE(result.out.find("PASSED  ] 1 test."), std::string::npos) << result.out;
}

}  // namespace
}  // namespace wren
