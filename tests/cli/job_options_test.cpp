// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/job_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/failure.h"

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::UnorderedElementsAre;

const filter::PrinterDescription& printer() {
  static const filter::PrinterDescription kPrinter = describePrinter(WREN_PPD_DIR "/wren80.ppd");
  return kPrinter;
}

std::string problem(const char* name, const char* value) {
  return problemOfOption(printer(), name, value);
}

TEST(ParseJobOptions, ReadsOptionsAsLpDoes) {
  EXPECT_THAT(parseJobOptions({"PageType=1", "HalftoneType=Burkes"}),
              UnorderedElementsAre(Pair("PageType", "1"), Pair("HalftoneType", "Burkes")));
  EXPECT_THAT(parseJobOptions({"fit-to-page", "landscape"}),
              UnorderedElementsAre(Pair("fit-to-page", "true"), Pair("landscape", "true")));
  EXPECT_THAT(parseJobOptions({"nocollate"}), UnorderedElementsAre(Pair("collate", "false")));
  EXPECT_THAT(parseJobOptions({"cpi=14 lpi=8"}),
              UnorderedElementsAre(Pair("cpi", "14"), Pair("lpi", "8")));
  EXPECT_THAT(parseJobOptions({"cpi=14", "cpi=12"}), UnorderedElementsAre(Pair("cpi", "12")));
  EXPECT_THAT(parseJobOptions({}), ElementsAre());
}

TEST(ParseJobOptions, RefusesAValueWithoutAnOption) {
  for (const char* text : {"", " ", "=", "=x"}) {
    try {
      parseJobOptions({"cpi=14", text});
      ADD_FAILURE() << "taken: '" << text << "'";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status(), kUsage);
      EXPECT_EQ(failure.what(), "-o wants NAME=VALUE, not '" + std::string(text) + "'");
    }
  }
}

TEST(ReadJobOptions, SkipsWhatIsNoOption) {
  EXPECT_THAT(readJobOptions(""), ElementsAre());
  EXPECT_THAT(readJobOptions("cpi=14"), ElementsAre(Pair("cpi", "14")));
}

TEST(JoinJobOptions, GivesATextThatReadsBackTheSame) {
  const JobOptions options = {
      {"a", "plain"}, {"b", "two words"}, {"c", "it's \"quoted\" \\ {here}"}, {"d", "page=1"}};
  JobOptions back = parseJobOptions({joinJobOptions(options)});
  EXPECT_THAT(back, testing::UnorderedElementsAreArray(options));
}

TEST(ProblemOfOption, IsNoneForWhatThePrinterOrCupsKnows) {
  const std::pair<const char*, const char*> kKnown[] = {
      {"HalftoneType", "Stucki"},
      {"halftonetype", "stucki"},
      {"Brightness", "-10"},
      {"PageSize", "X80MMY600MM"},
      {"cpi", "14"},
      {"page-ranges", "1-2"},
      {"number-up", "2"},
      {"fit-to-page", "true"},
      {"landscape", "true"},
      {"media", "X80MMY50MM"},
      {"position", "center"},
      {"job-sheets", "none"},
      {"PageSize", "Custom.72x350mm"},
      {"PageSize", "Custom.7.2x35cm"},
      {"PageSize", "Custom.204x992"},
      {"PageSize", "Custom.2.5x10in"},
      {"pagesize", "custom.72x350MM"},
  };
  for (const auto& [name, value] : kKnown)
    EXPECT_EQ(problem(name, value), "") << name << "=" << value;
}

TEST(ProblemOfOption, NamesTheNearestOption) {
  EXPECT_EQ(problem("Brightnes", "5"),
            "'Brightnes' is no option of this printer or of CUPS, did you mean 'Brightness'?");
  EXPECT_EQ(problem("number-upp", "2"),
            "'number-upp' is no option of this printer or of CUPS, did you mean 'number-up'?");
  EXPECT_EQ(problem("zork", "1"), "'zork' is no option of this printer or of CUPS");
}

TEST(ProblemOfOption, NamesTheChoices) {
  EXPECT_EQ(problem("PageCutType", "7"), "PageCutType has no choice '7'; it has 0 1 2");
  EXPECT_THAT(problem("HalftoneType", "Stuki"), HasSubstr("did you mean 'Stucki'? It has None "));
  EXPECT_THAT(problem("Brightness", "Custom.3"), HasSubstr("Brightness has no choice 'Custom.3'"));
}

TEST(ProblemOfOption, TakesNoPartOfAName) {
  const std::pair<const char*, const char*> kParts[] = {
      {"HalftoneType", "Stuck"},
      {"HalftoneType", "Stuckis"},
      {"HalftoneType", ""},
      {"HalftoneType", "one"},
      {"PageSize", "X80MMY600"},
      {"PageSize", "X80MMY200MMM"},
      {"Brightness", "1"},
      {"PageCutType", "11"},
      {"HalftoneTyp", "None"},
      {"HalftoneTypes", "None"},
      {"alftoneType", "None"},
      {"cp", "14"},
      {"ages", "1"},
      {"cpis", "14"},
  };
  for (const auto& [name, value] : kParts) {
    EXPECT_NE(problem(name, value), "") << name << "=" << value;
  }
}

TEST(ProblemOfOption, TellsHowACustomSizeIsWritten) {
  for (const char* value : {"Custom.banana", "Custom.", "Custom.72", "Custom.72x", "Custom.x350mm",
                            "Custom.72x350miles", "Custom.-72x350mm", "Custom.72x350mm2"}) {
    EXPECT_EQ(problem("PageSize", value),
              std::string("'") + value +
                  "' is no size; a custom size is Custom.WIDTHxLENGTHmm, such as Custom.72x350mm");
  }
}

TEST(ProblemOfOption, KeepsACustomSizeWithinTheLimitsOfThePrinter) {
  for (const char* value : {"Custom.24x100mm", "Custom.72x9mm", "Custom.72x3001mm",
                            "Custom.72x1e9mm", "Custom.3001x72mm", "Custom.11x11ft"}) {
    EXPECT_EQ(problem("PageSize", value),
              std::string("the size '") + value +
                  "' cannot be printed: the smallest is 25 x 10 mm, the longest 3000 mm");
  }
  for (const char* value : {"Custom.25x10mm", "Custom.72x3000mm"}) {
    EXPECT_EQ(problem("PageSize", value), "") << value;
  }
  EXPECT_EQ(problem("PageSize", "Custom.100x150mm"), "") << "cut at both sides";
  for (const char* value : {"Custom.72x9999mm", "custom.72x9999MM", "auto,Custom.72x9999mm"}) {
    EXPECT_THAT(problem("media", value), HasSubstr("cannot be printed: the smallest is ")) << value;
  }
  for (const char* value : {"Custom.72x350mm", "auto,Custom.72x350mm", "iso_a4_210x297mm"}) {
    EXPECT_EQ(problem("media", value), "") << value;
  }
}

TEST(CheckJobOptions, FailsAsWrongUsage) {
  try {
    checkJobOptions(printer(), {{"cpi", "14"}, {"zork", "1"}});
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), kUsage);
    EXPECT_THAT(failure.what(), HasSubstr("zork"));
  }
}

TEST(DescribePrinter, FailsForAPpdThatCannotBeRead) {
  EXPECT_THROW(describePrinter("/nowhere.ppd"), Failure);
}

}  // namespace
}  // namespace wren::cli
