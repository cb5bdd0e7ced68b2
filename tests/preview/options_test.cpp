// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace wren::preview {
namespace {

struct Said {
  ParsedOptions parsed;
  std::string out;
  std::string err;
};

Said sayingParse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "wren-preview");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Said said{parseOptions(static_cast<int>(arguments.size()), arguments.data()), {}, {}};
  said.out = testing::internal::GetCapturedStdout();
  said.err = testing::internal::GetCapturedStderr();
  return said;
}

ParsedOptions parse(const std::vector<const char*>& arguments) {
  return sayingParse(arguments).parsed;
}

// With one space between the words: the library breaks the lines.
std::string help() {
  std::istringstream words(sayingParse({"--help"}).out);
  std::string text;
  for (std::string word; words >> word;) text += word + ' ';
  return text;
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

// The numbers of the manual page.
TEST(Options, DefaultToWhatTheManualSays) {
  const Options options = parse({}).options.value();
  EXPECT_EQ(options.output, "");
  EXPECT_EQ(options.maxLengthMm, 80'000u);
  EXPECT_EQ(options.directory, ".");
  EXPECT_EQ(options.maxBytes, 64'000'000u);
  EXPECT_EQ(options.maxSeconds, 300u);
  EXPECT_EQ(options.controlAddress, "");
  EXPECT_EQ(options.tellAddress, "");
  EXPECT_FALSE(options.list || options.json || options.split);
}

TEST(Options, ListenToJobsThatAreSplitOrMarked) {
  const auto parsed = parse({"--listen", "0", "--marks", "--split", "--scale", "2"});
  ASSERT_TRUE(parsed.options);
  EXPECT_TRUE(parsed.options->style.marks);
  EXPECT_TRUE(parsed.options->split);
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
                                             {"--listen", "0", "--directory", "/dev/null"},
                                             {"--listen", "0", "--max-bytes", "1000000000001"},
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
  const struct {
    std::vector<const char*> arguments;
    const char* message;
  } cases[] = {
      {{"--listen", "abc"}, "--listen: 'abc' is not [HOST:]PORT"},
      {{"--listen", "0", "--control", "1:2:3"}, "--control: '1:2:3' is not [HOST:]PORT"},
      {{"--listen", "0", "--fault", "paper"}, "--fault: 'paper' is no command"},
      {{"--tell", "abc", "go"}, "--tell: 'abc' is not [HOST:]PORT"},
  };
  for (const auto& one : cases) {
    const Said said = sayingParse(one.arguments);
    EXPECT_EQ(said.err,
              std::string("wren-preview: ") + one.message + "; see wren-preview --help\n");
    EXPECT_EQ(said.out, "");
  }
}

TEST(Options, NameTheVersion) {
  const Said said = sayingParse({"--version"});
  EXPECT_EQ(said.out, "wren-preview " WREN_VERSION "\n");
  EXPECT_EQ(said.err, "");
}

// What the manual page says, in the words of the help.
TEST(Options, AreExplainedByTheHelp) {
  const std::string text = help();
  for (const char* part : {
           "Shows the paper that an ESC/POS byte stream prints, as a PNG picture.",
           "Printer bytes; - is standard input",
           "Picture to write (default: FILE.png beside FILE)",
           "Show a scale in mm, cuts, drawer pulses and beeps in the margin",
           "Print every command with its offset and meaning",
           "Report as a JSON document; with --list, with every command",
           "Write one picture per page or cut piece",
           "Dots per inch of the printer",
           "in [50 - 2400]",
           "Draw a dot as N x N pixels",
           "in [1 - 16]",
           "Length of the paper in mm",
           "in [1 - 1000000]",
           "80000",
           "--listen [HOST:]PORT",
           "Act as a printer on this loopback port; 0 selects any free one",
           "Existing directory for received jobs",
           "Maximum size of a job",
           "64000000",
           "Maximum time for a job",
           "in [1 - 86400]",
           "300",
           "--control [HOST:]PORT",
           "Obey commands on this loopback port, one a line",
           "--fault COMMAND",
           "Give the printer this command at its start, such as 'paper out after 30 mm'",
           "--tell [HOST:]PORT COMMAND",
           "Send a command to the control port of a listening wren-preview",
           "Example: wren-preview receipt.prn --marks",
       }) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
}

}  // namespace
}  // namespace wren::preview
