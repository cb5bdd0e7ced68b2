// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/options.h"

#include <gtest/gtest.h>

#include <vector>

namespace wren::preview {
namespace {

ParsedOptions parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "wren-preview");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  auto parsed = parseOptions(static_cast<int>(arguments.size()), arguments.data());
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  return parsed;
}

TEST(Options, DefaultToStandardInputAt203Dpi) {
  const auto parsed = parse({});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->input, "-");
  EXPECT_EQ(parsed.options->style.dpi, 203u);
  EXPECT_EQ(parsed.options->style.scale, 1u);
  EXPECT_FALSE(parsed.options->style.marks);
  EXPECT_FALSE(parsed.options->listen);
}

TEST(Options, AreTakenFromTheCommandLine) {
  const auto parsed = parse({"a.prn", "--marks", "--list", "--split", "--dpi", "180", "--scale",
                             "3", "-o", "b.png", "--max-length", "500", "--json"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->input, "a.prn");
  EXPECT_EQ(parsed.options->output, "b.png");
  EXPECT_TRUE(parsed.options->style.marks);
  EXPECT_TRUE(parsed.options->list);
  EXPECT_TRUE(parsed.options->json);
  EXPECT_TRUE(parsed.options->split);
  EXPECT_EQ(parsed.options->style.dpi, 180u);
  EXPECT_EQ(parsed.options->style.scale, 3u);
  EXPECT_EQ(parsed.options->maxLengthMm, 500u);
}

TEST(Options, ListenOnAPort) {
  const auto parsed = parse({"--listen", "localhost:9100", "--directory", ".", "--max-bytes",
                             "1000000", "--max-seconds", "7"});
  ASSERT_TRUE(parsed.options);
  EXPECT_TRUE(parsed.options->listen);
  EXPECT_EQ(parsed.options->address, "localhost:9100");
  EXPECT_EQ(parsed.options->maxBytes, 1'000'000u);
  EXPECT_EQ(parsed.options->maxSeconds, 7u);
}

TEST(Options, GiveAPrinterItsFaults) {
  const auto parsed = parse({"--listen", "0", "--control", "[::1]:9101", "--fault", "paper out",
                             "--fault", "cover open after 5 mm"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->controlAddress, "[::1]:9101");
  EXPECT_EQ(parsed.options->faults,
            (std::vector<std::string>{"paper out", "cover open after 5 mm"}));
}

TEST(Options, TellACommand) {
  const auto parsed = parse({"--tell", "9101", "paper ok"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->tellAddress, "9101");
  EXPECT_EQ(parsed.options->tellCommand, "paper ok");
}

TEST(Options, EndTheProgramAfterHelpAndAfterUsageErrors) {
  EXPECT_EQ(parse({"--help"}).exitStatus, 0);
  EXPECT_FALSE(parse({"--help"}).options);
  EXPECT_EQ(parse({"--version"}).exitStatus, 0);
  for (const auto& wrong :
       std::vector<std::vector<const char*>>{{"--dpi", "0"},
                                             {"--dpi", "x"},
                                             {"--scale", "17"},
                                             {"a", "b"},
                                             {"--nonsense"},
                                             {"--listen", "abc"},
                                             {"--listen", "99999"},
                                             {"--listen", "9100", "a.prn"},
                                             {"--listen", "9100", "--json"},
                                             {"--max-seconds", "5"},
                                             {"--control", "9101"},
                                             {"--fault", "paper out"},
                                             {"--listen", "0", "--control", "x"},
                                             {"--listen", "0", "--fault", "x"},
                                             {"--tell", "9101"},
                                             {"--tell", "x", "paper out"},
                                             {"--tell", "1", "go", "--listen", "2"},
                                             {"--tell", "1", "go", "a.prn"},
                                             {"--max-length", "-1"},
                                             {"--dpi", "49"},
                                             {"--dpi", "2401"},
                                             {"--scale", "0"},
                                             {"--max-length", "0"},
                                             {"--max-length", "1000001"},
                                             {"--listen", "0", "--max-bytes", "0"},
                                             {"--listen", "0", "--max-seconds", "0"},
                                             {"--listen", "0", "--max-seconds", "86401"},
                                             {"--listen", "0", "--list"},
                                             {"--listen", "0", "-o", "a.png"},
                                             {"--listen", "0", "--directory", "absent"},
                                             {"--listen", "0", "--fault", "stall", "go"},
                                             {"--directory", "."},
                                             {"--max-bytes", "5"}}) {
    const auto parsed = parse(wrong);
    EXPECT_FALSE(parsed.options) << testing::PrintToString(wrong);
    EXPECT_EQ(parsed.exitStatus, 2) << testing::PrintToString(wrong);
  }
}

TEST(Options, AreTakenUpToTheirLimits) {
  for (const auto& right :
       std::vector<std::vector<const char*>>{{"--dpi", "50"},
                                             {"--dpi", "2400"},
                                             {"--scale", "16"},
                                             {"--max-length", "1"},
                                             {"--max-length", "1000000"},
                                             {"--listen", "0", "--max-bytes", "1"},
                                             {"--listen", "0", "--max-bytes", "1000000000000"},
                                             {"--listen", "0", "--max-seconds", "1"},
                                             {"--listen", "0", "--max-seconds", "86400"},
                                             {"--listen", "0", "--directory", "."}}) {
    EXPECT_TRUE(parse(right).options) << testing::PrintToString(right);
  }
}

TEST(Options, AreRefusedInOneLine) {
  testing::internal::CaptureStderr();
  const char* const arguments[] = {"wren-preview", "--listen", "abc"};
  parseOptions(3, arguments);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "wren-preview: --listen: 'abc' is not [HOST:]PORT; see wren-preview --help\n");
}

}  // namespace
}  // namespace wren::preview
