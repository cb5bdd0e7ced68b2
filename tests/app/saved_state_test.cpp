// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/saved_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace wren::app {
namespace {

using testing::IsEmpty;

constexpr std::time_t kNow = 2000;

std::string stateOf(const std::string& jobs) {
  return "DefaultPrinterID 7\n<Printer did=\"MFG:Wren;\" driver=\"wren80\" id=\"7\" "
         "name=\"till\">\n"
         "NextJobId 9\n" +
         jobs + "</Printer>\n";
}

SettledState settle(const std::string& jobs) {
  return settleJobs(stateOf(jobs), {{{6, 1}, {}}, {{7, 1}, {}}, {{7, 3}, {}}}, kNow);
}

struct Case {
  const char* name;
  std::string before;
  std::string after;
  const char* message;  ///< empty: the job is not ended by it
};

TEST(SavedState, SettlesTheJobsThatHadNotEnded) {
  const Case cases[] = {
      {"printing", R"(Job created="1" filename="/s/p" id="1" processing="5" state="5")",
       R"(Job created="1" id="1" processing="5" state="7" completed="2000")",
       "interrupted, not printed again"},
      {"printing while it came in", R"(Job created="1" id="3" state="5")",
       R"(Job created="1" id="3" state="7" completed="2000")", "interrupted, not printed again"},
      {"before its first byte", R"(Job filename="/s/p" id="2" processing="5" state="5")",
       R"(Job filename="/s/p" id="2" state="3")", ""},
      {"coming in", R"(Job created="1" id="2" state="4")",
       R"(Job created="1" id="2" state="8" completed="2000")",
       "interrupted before its document was whole"},
      {"waiting", R"(Job filename="/s/p" id="2" state="3")",
       R"(Job filename="/s/p" id="2" state="3")", ""},
      {"held", R"(Job filename="/s/p" id="2" state="4")", R"(Job filename="/s/p" id="2" state="4")",
       ""},
      {"completed, its note still there", R"(Job completed="9" id="1" imcompleted="3" state="9")",
       R"(Job completed="9" id="1" imcompleted="3" state="9")", ""},
      {"named like an attribute", R"(Job filename="/s/p" id="1" name="a \" state=\"9\\" state="5")",
       R"(Job id="1" name="a \" state=\"9\\" state="7" completed="2000")",
       "interrupted, not printed again"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const SettledState settled = settle(row.before + "\n");
    EXPECT_EQ(settled.text, stateOf(row.after + "\n"));
    const std::string message = settled.ended.empty() ? "" : settled.ended.at(0).message;
    EXPECT_EQ(message, row.message);
  }
}

// The process was killed between the begin of a job and the save that would have named it.
TEST(SavedState, NamesTheJobsThatBeganAfterIt) {
  const std::string line = R"(created="5" id="12" name="a \" b" state="5")";
  const std::string old = "Job completed=\"9\" id=\"4\" state=\"9\"\n";
  const SettledState settled = settleJobs(
      stateOf(old), {{{6, 30}, line}, {{7, 4}, line}, {{7, 11}, {}}, {{7, 12}, line}}, kNow);
  std::string expected =
      stateOf(old + R"(Job created="5" id="12" name="a \" b" state="7" completed="2000")" + "\n");
  expected.replace(expected.find("NextJobId 9"), 11, "NextJobId 13");
  EXPECT_EQ(settled.text, expected);
  ASSERT_EQ(settled.ended.size(), 1U);
  EXPECT_EQ(settled.ended[0].job, (JobKey{7, 12}));
  EXPECT_EQ(settled.ended[0].message, "interrupted, not printed again");
}

TEST(SavedState, EscapesWhatItsReaderUnderstands) {
  EXPECT_EQ(escapedValue("plain \xC3\xA9"), "plain \xC3\xA9");
  EXPECT_EQ(escapedValue(R"(a "b" \ c)"), R"(a \"b\" \\ c)");
  EXPECT_EQ(escapedValue("two\nlines\t"), "two lines ");
}

TEST(SavedState, TellsTheJobsThatWait) {
  const SettledState settled = settle(
      "Job filename=\"/s/q\" id=\"8\" state=\"3\"\nJob id=\"1\" state=\"5\"\n"
      "Job filename=\"/s/p\" id=\"2\" state=\"5\"\n");
  EXPECT_THAT(settled.waiting, testing::ElementsAre(JobKey{7, 8}, JobKey{7, 2}));
}

TEST(SavedState, OfNothingIsNothing) {
  const SettledState settled = settleJobs("", {}, kNow);
  EXPECT_EQ(settled.text, "");
  EXPECT_THAT(settled.ended, IsEmpty());
}

TEST(SavedState, ThatIsCutOffIsReadToItsEnd) {
  for (const char* cut :
       {"Job", "Job ", "Job id", "Job id=\"", "Job id=\"1", "<Printer id=\"7\\"}) {
    SCOPED_TRACE(cut);
    EXPECT_THAT(settleJobs(cut, {}, kNow).waiting, IsEmpty());
  }
}

}  // namespace
}  // namespace wren::app
