// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/docs/shell_words.h"

#include <gtest/gtest.h>

namespace wren_test {
namespace {

struct LineCase {
  const char* line;
  std::vector<SimpleCommand> commands;
};

class ShellLine : public testing::TestWithParam<LineCase> {};

TEST_P(ShellLine, IsSplitIntoItsCommands) {
  EXPECT_EQ(simpleCommands(GetParam().line), GetParam().commands) << GetParam().line;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ShellLine,
    testing::Values(LineCase{"", {}}, LineCase{"# a comment", {}},
                    LineCase{"lp -d till a.pdf   # prints", {{"lp", "-d", "till", "a.pdf"}}},
                    LineCase{"mkdir -p a && b --c", {{"mkdir", "-p", "a"}, {"b", "--c"}}},
                    LineCase{"a | b; c || d", {{"a"}, {"b"}, {"c"}, {"d"}}},
                    LineCase{"a 'x | y' \"# z\"", {{"a", "x | y", "# z"}}},
                    LineCase{"sudo LANG=C a -o B=c", {{"a", "-o", "B=c"}}},
                    LineCase{"a > out.txt b < in.txt", {{"a", "b"}}},
                    LineCase{"echo 'x' | sudo tee -a /y", {{"echo", "x"}, {"tee", "-a", "/y"}}}));

}  // namespace
}  // namespace wren_test
