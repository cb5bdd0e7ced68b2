// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/job_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string_view>

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

// lp(1), cups-filters and the attributes of PWG 5100.
TEST(ProblemOfOption, IsNoneForEachOptionOfCups) {
  std::istringstream names(
      "blackplot brightness collate columns copies cpi crop-to-fit document-format "
      "document-password fidelity fill finishings fit-to-page fitplot gamma hue "
      "ipp-attribute-fidelity job-account-id job-accounting-user-id job-billing "
      "job-cancel-after job-hold-until job-name job-originating-user-name job-priority "
      "job-sheets job-uuid landscape lpi media media-bottom-margin media-col "
      "media-left-margin media-right-margin media-source media-top-margin media-type mirror "
      "multiple-document-handling natural-scaling notify-recipient-uri number-up "
      "number-up-layout orientation-requested output-bin output-order outputorder page-border "
      "page-bottom page-delivery page-label page-left page-logging page-ranges page-right "
      "page-set page-top pdfAutoRotate pdftops-renderer position ppi prettyprint "
      "print-color-mode print-content-optimize print-quality print-rendering-intent "
      "print-scaling printer-resolution raw saturation scaling sides wrap");
  for (std::string name; names >> name;) {
    EXPECT_TRUE(isCupsOption(name)) << name;
    // The printer has choices of its own for the name of a brightness.
    if (name == "brightness") continue;
    EXPECT_EQ(problem(name.c_str(), "x"), "") << name;
  }
  EXPECT_TRUE(isCupsOption("Fit-To-Page"));
  for (const char* name : {"", "fit", "fit-to-pages", "HalftoneType"}) {
    EXPECT_FALSE(isCupsOption(name)) << name;
  }
}

TEST(ProblemOfOption, TakesEachUnitForItsLength) {
  // The shortest page is 10 mm long, the longest 3000.
  const struct {
    const char* unit;
    const char* tooShort;
    const char* shortest;
    const char* longest;
    const char* tooLong;
  } kUnits[] = {{"", "27", "28", "8504", "8505"},        {"pt", "27", "28", "8504", "8505"},
                {"in", "0.38", "0.4", "118.1", "118.2"}, {"ft", "0.032", "0.033", "9.84", "9.85"},
                {"cm", "0.97", "1", "300", "300.1"},     {"mm", "9.7", "10", "3000", "3001"}};
  const std::map<std::string, std::string> kWidths = {{"", "204"},   {"pt", "204"}, {"in", "2.8"},
                                                      {"ft", "0.2"}, {"cm", "7.2"}, {"mm", "72"}};
  for (const auto& unit : kUnits) {
    const auto problemOf = [&](const char* length) {
      return problem("PageSize",
                     ("Custom." + kWidths.at(unit.unit) + "x" + length + unit.unit).c_str());
    };
    for (const char* length : {unit.shortest, unit.longest}) {
      EXPECT_EQ(problemOf(length), "") << length << unit.unit;
    }
    for (const char* length : {unit.tooShort, unit.tooLong}) {
      EXPECT_THAT(problemOf(length), HasSubstr("cannot be printed")) << length << unit.unit;
    }
  }
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
  // Less than half a point beyond a limit is rounding.
  for (const char* value : {"Custom.70.36614227294922x200", "Custom.204x8504.4375"}) {
    EXPECT_THAT(problem("PageSize", value), HasSubstr("cannot be printed")) << value;
  }
  for (const char* value : {"Custom.70.3662x27.8465", "Custom.204x8504.437"}) {
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
  try {
    describePrinter("/nowhere.ppd");
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), kSetup);
    EXPECT_STREQ(failure.what(), "the PPD /nowhere.ppd is damaged");
  }
}

TEST(JoinJobOptions, WritesWhatAFilterReads) {
  EXPECT_EQ(joinJobOptions({{"a", "1"}, {"b", "two words"}, {"c", "it's {\"\\\t\n"}, {"d", ""}}),
            "a=1 b=two\\ words c=it\\'s\\ \\{\\\"\\\\\\\t\\\n d=");
  EXPECT_EQ(joinJobOptions({}), "");
}

TEST(HasOption, ComparesWholeNamesWithoutRegardToCase) {
  const JobOptions options = {{"Position", "top"}};
  EXPECT_TRUE(hasOption(options, "position"));
  EXPECT_FALSE(hasOption(options, "pos"));
  EXPECT_FALSE(hasOption(options, "top"));
  EXPECT_FALSE(hasOption({}, "position"));
}

}  // namespace
}  // namespace wren::cli
