// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/command_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "job/control_commands.h"

namespace wren::job {

// For messages of failed comparisons.
void PrintTo(const PrinterCommand& command, std::ostream* out) {
  *out << kCommandNames.at(static_cast<std::size_t>(command.kind));
  if (command.value.has_value()) *out << " " << *command.value;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kHead = "#CUPS-COMMAND\n";

CommandFile parsed(const std::string& lines) {
  return parseCommandFile(kHead + lines);
}

constexpr PrinterCommand kDrawer = {CommandKind::kOpenDrawer, {}};
constexpr PrinterCommand kBeep = {CommandKind::kBeep, {}};
constexpr PrinterCommand kCut = {CommandKind::kCut, {}};
constexpr PrinterCommand kPage = {CommandKind::kPrintSelfTestPage, {}};

constexpr PrinterCommand feed(std::int32_t mm) {
  return {CommandKind::kFeed, mm};
}

TEST(CommandFile, IsReadInOrder) {
  const auto file =
      parsed("OpenDrawer\nBeep\nCut\nCut full\nCut partial\nFeed 20\nPrintSelfTestPage\n");
  EXPECT_THAT(file.commands,
              ElementsAre(kDrawer, kBeep, kCut, PrinterCommand{CommandKind::kCut, kFullCutType},
                          PrinterCommand{CommandKind::kCut, kPartialCutType}, feed(20), kPage));
  EXPECT_THAT(file.errors, IsEmpty());
}

TEST(CommandFile, HasWordsInAnyCaseBetweenAnyBlanks) {
  const std::pair<const char*, PrinterCommand> kLines[] = {
      {"opendrawer", kDrawer},
      {"OPENDRAWER", kDrawer},
      {"  \t BEEP \t ", kBeep},
      {"feed\t7", feed(7)},
      {"FEED   007", feed(7)},
      {"cut FULL", {CommandKind::kCut, kFullCutType}},
      {"cUt   pArTiAl  ", {CommandKind::kCut, kPartialCutType}},
      {"Beep#twice", kBeep},
      {"Feed 12 # millimetres", feed(12)},
  };
  for (const auto& [line, command] : kLines) {
    const auto file = parsed(line);
    EXPECT_THAT(file.commands, ElementsAre(command)) << line;
    EXPECT_THAT(file.errors, IsEmpty()) << line;
  }
}

TEST(CommandFile, HasLinesThatEndWithEitherOrBothCharacters) {
  for (const char* text : {"Beep\nFeed 1", "Beep\rFeed 1\r", "Beep\r\nFeed 1\r\n",
                           "\n\nBeep\n\r\nFeed 1", "# x\nBeep\n#y\n  # z\nFeed 1\n"}) {
    const auto file = parsed(text);
    EXPECT_THAT(file.commands, ElementsAre(kBeep, feed(1))) << text;
    EXPECT_THAT(file.errors, IsEmpty()) << text;
  }
}

// The lines count from the head, as an editor does, whatever ends them.
TEST(CommandFile, NamesEachLineThatIsNotUnderstoodAndKeepsTheOthers) {
  const auto file = parsed("Beep\r\nClean all\r\n\r\nOpenDrawer\nopen\rFeed 3\n");
  EXPECT_THAT(file.commands, ElementsAre(kBeep, kDrawer, feed(3)));
  EXPECT_THAT(file.errors,
              ElementsAre("Line 3: unknown command 'Clean'", "Line 6: unknown command 'open'"));
}

TEST(CommandFile, RefusesWrongArguments) {
  const std::pair<const char*, const char*> kLines[] = {
      {"Feed", "Line 2: Feed takes 1 to 1000 (mm)"},
      {"Feed 0", "Line 2: Feed takes 1 to 1000 (mm), not '0'"},
      {"Feed -1", "Line 2: Feed takes 1 to 1000 (mm), not '-1'"},
      {"Feed +1", "Line 2: Feed takes 1 to 1000 (mm), not '+1'"},
      {"Feed 1001", "Line 2: Feed takes 1 to 1000 (mm), not '1001'"},
      {"Feed 4294967297", "Line 2: Feed takes 1 to 1000 (mm), not '4294967297'"},
      {"Feed 2.5", "Line 2: Feed takes 1 to 1000 (mm), not '2.5'"},
      {"Feed 10mm", "Line 2: Feed takes 1 to 1000 (mm), not '10mm'"},
      {"Feed 1 2", "Line 2: Feed takes 1 to 1000 (mm), not '1 2'"},
      {"Feed 0x10", "Line 2: Feed takes 1 to 1000 (mm), not '0x10'"},
      {"Cut half", "Line 2: Cut takes full, partial or nothing, not 'half'"},
      {"Cut full partial", "Line 2: Cut takes full, partial or nothing, not 'full partial'"},
      {"Cut 1", "Line 2: Cut takes full, partial or nothing, not '1'"},
      {"OpenDrawer 2", "Line 2: OpenDrawer takes nothing, not '2'"},
      {"Beep Beep", "Line 2: Beep takes nothing, not 'Beep'"},
      {"PrintSelfTestPage x", "Line 2: PrintSelfTestPage takes nothing, not 'x'"},
      {"Feed20", "Line 2: unknown command 'Feed20'"},
      {"Bee", "Line 2: unknown command 'Bee'"},
      {"Beeps", "Line 2: unknown command 'Beeps'"},
  };
  for (const auto& [line, error] : kLines) {
    const auto file = parsed(line);
    EXPECT_THAT(file.commands, IsEmpty()) << line;
    EXPECT_THAT(file.errors, ElementsAre(error));
  }
  EXPECT_THAT(parsed("Feed 1\nFeed 1000").commands, ElementsAre(feed(1), feed(1000)));
}

TEST(CommandFile, WithoutItsHeadIsRefused) {
  for (const char* text : {"", "Beep\n", "#cups-command\nBeep\n", " #CUPS-COMMAND\nBeep\n",
                           "\n#CUPS-COMMAND\nBeep\n", "#CUPS-COMMAN"}) {
    const auto file = parseCommandFile(text);
    EXPECT_THAT(file.commands, IsEmpty()) << text;
    EXPECT_THAT(file.errors, ElementsAre("The command file does not begin with #CUPS-COMMAND"));
  }
  EXPECT_THAT(parseCommandFile("#CUPS-COMMAND").errors, IsEmpty());
  EXPECT_THAT(parseCommandFile("#CUPS-COMMAND 2\rBeep").commands, ElementsAre(kBeep));
}

// Messages reach a log and a terminal.
TEST(CommandFile, IsQuotedInPrintableLettersOnly) {
  EXPECT_THAT(parsed(std::string("\x1B[2J\0\xC3\xA9 x", 8)).errors,
              ElementsAre("Line 2: unknown command '?[2J??"
                          "?'"));
  EXPECT_THAT(parsed(std::string(200, 'a')).errors,
              ElementsAre("Line 2: unknown command '" + std::string(40, 'a') + "...'"));
  EXPECT_THAT(parsed("Cut \x07%s%n").errors,
              ElementsAre("Line 2: Cut takes full, partial or nothing, not '?%s%n'"));
}

TEST(CommandFile, HasLinesOfLimitedLength) {
  const std::string blanks(1023 - 4, ' ');
  EXPECT_THAT(parsed(blanks + "Beep\nCut").commands, ElementsAre(kBeep, kCut));
  const auto file = parsed(blanks + " Beep\nCut");
  EXPECT_THAT(file.commands, ElementsAre(kCut));
  EXPECT_THAT(file.errors, ElementsAre("Line 2: longer than 1023 bytes"));
}

TEST(CommandFile, HasALimitedNumberOfCommands) {
  std::string hundred;
  for (int i = 0; i < 100; ++i) hundred += "Beep\n";
  EXPECT_EQ(parsed(hundred).commands.size(), 100U);
  EXPECT_THAT(parsed(hundred).errors, IsEmpty());
  const auto file = parsed(hundred + "Beep\nBeep\nBoop\n");
  EXPECT_EQ(file.commands.size(), 100U);
  EXPECT_THAT(file.errors, ElementsAre("Line 102: more than 100 commands; the rest is left out"));
}

TEST(CommandFile, ThatIsTooLongIsNotDoneInPart) {
  std::string text = kHead + "Beep\n";
  text.resize(65536, '\n');
  EXPECT_THAT(parseCommandFile(text).commands, ElementsAre(kBeep));
  text += '\n';
  EXPECT_THAT(parseCommandFile(text).commands, IsEmpty());
  EXPECT_THAT(parseCommandFile(text).errors,
              ElementsAre("The command file is longer than 65536 bytes"));
}

// One error for each line that is no command; nothing is read twice or not at all.
TEST(CommandFile, OfArbitraryBytesIsErrorsAlone) {
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    std::string line(1 + random() % 300, '\0');
    for (char& c : line) c = static_cast<char>(random());
    for (const char separator : {'\n', '\r', '#'}) std::erase(line, separator);
    line += '!';
    const auto file = parsed(line + "\nBeep\n" + line);
    EXPECT_THAT(file.commands, ElementsAre(kBeep));
    EXPECT_EQ(file.errors.size(), 2U);
  }
}

}  // namespace
}  // namespace wren::job
