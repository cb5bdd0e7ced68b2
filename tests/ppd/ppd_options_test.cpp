// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The compiled PPDs contain what the filter reads: every option, its range of numbers and its
// default, and the sizes by their names.

#include <cups/ppd.h>
#include <cups/raster.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "filter/page_size_name.h"
#include "job/option_table.h"
#include "job/printer_commands.h"

namespace {

using namespace wren::job;

struct Printer {
  int paperMm;
  int headDots;
};

void PrintTo(const Printer& printer, std::ostream* out) {
  *out << printer.paperMm << " mm";
}

class Ppd : public testing::TestWithParam<Printer> {
 protected:
  void SetUp() override {
    const auto path = WREN_PPD_DIR "/wren" + std::to_string(GetParam().paperMm) + ".ppd";
    ppd_ = ppdOpenFile(path.c_str());
    ASSERT_NE(ppd_, nullptr) << path;
    ppdMarkDefaults(ppd_);
  }
  void TearDown() override {
    if (ppd_ != nullptr) ppdClose(ppd_);
  }

  std::vector<std::string> choicesOf(const char* keyword) const {
    std::vector<std::string> names;
    const ppd_option_t* option = ppdFindOption(ppd_, keyword);
    for (int i = 0; option != nullptr && i < option->num_choices; ++i) {
      names.emplace_back(option->choices[i].choice);
    }
    return names;
  }

  std::string textOf(const char* keyword, const char* name) const {
    const ppd_choice_t* choice = ppdFindChoice(ppdFindOption(ppd_, keyword), name);
    return choice == nullptr ? std::string("no such choice") : choice->text;
  }

  // The values of all attributes of this name.
  std::vector<std::string> attributes(const char* name) const {
    std::vector<std::string> values;
    for (const ppd_attr_t* found = ppdFindAttr(ppd_, name, nullptr); found != nullptr;
         found = ppdFindNextAttr(ppd_, name, nullptr)) {
      values.emplace_back(found->value == nullptr ? "" : found->value);
    }
    return values;
  }

  // Of the one attribute of this name; a text that no PPD has otherwise.
  std::string attribute(const char* name) const {
    const auto values = attributes(name);
    return values.size() == 1 ? values[0] : std::to_string(values.size()) + " attributes";
  }

  std::string marked(const char* keyword) const {
    const ppd_choice_t* choice = ppdFindMarkedChoice(ppd_, keyword);
    return choice == nullptr ? std::string("no choice") : std::string(choice->choice);
  }

  ppd_file_t* ppd_ = nullptr;
};

std::vector<std::string> numbers(int first, int last, int step = 1) {
  std::vector<std::string> names;
  for (int i = first; i <= last; i += step) names.push_back(std::to_string(i));
  return names;
}

struct Expected {
  int lastChoice;  // choices run from 0 to this
  const char* shopDefault;
  const char* group;
};

const std::map<std::string, Expected> kExpected = {
    {"PageType", {1, "0", "Page"}},
    {"BidiPrinting", {1, "0", "Quality"}},
    {"PageCutType", {2, "0", "Cutter"}},
    {"DocCutType", {2, "2", "Cutter"}},
    {"CashDrawerSetting", {2, "0", "Drawer"}},
    {"CashDrawerPulseWidth", {8, "0", "Drawer"}},
    {"Buzzer1Setting", {2, "0", "Buzzer"}},
    {"Buzzer1OnTime", {9, "1", "Buzzer"}},
    {"Buzzer1Repeat", {9, "1", "Buzzer"}},
    {"Buzzer2Setting", {2, "0", "Buzzer"}},
    {"Buzzer2OnTime", {9, "1", "Buzzer"}},
    {"Buzzer2Repeat", {9, "1", "Buzzer"}},
    {"FeedCutAfterJobEnd", {15, "12", "Cutter"}},
};

TEST_P(Ppd, OffersEveryNumberThatTheFilterUnderstands) {
  ASSERT_EQ(kExpected.size(), kIndexedOptions.size());
  for (const auto& row : kIndexedOptions) {
    SCOPED_TRACE(row.keyword);
    ASSERT_TRUE(kExpected.contains(row.keyword));
    const auto& expected = kExpected.at(row.keyword);
    EXPECT_EQ(choicesOf(row.keyword), numbers(0, expected.lastChoice));
    EXPECT_EQ(marked(row.keyword), expected.shopDefault);
    EXPECT_EQ(row.lowest, 0);
    EXPECT_EQ(row.highest, expected.lastChoice);
    EXPECT_EQ(std::to_string(row.initial), expected.shopDefault);
  }
}

TEST_P(Ppd, OffersNothingThatTheFilterDoesNotRead) {
  std::set<std::string> keywords = {"PageSize",   "PageRegion",   "ColorModel", "Resolution",
                                    "Brightness", "HalftoneType", "DebugImages"};
  for (const auto& [keyword, expected] : kExpected) keywords.insert(keyword);
  std::set<std::string> offered;
  for (const ppd_option_t* option = ppdFirstOption(ppd_); option != nullptr;
       option = ppdNextOption(ppd_)) {
    offered.insert(option->keyword);
  }
  EXPECT_EQ(offered, keywords);
}

TEST_P(Ppd, SortsTheOptionsIntoGroups) {
  std::map<std::string, std::set<std::string>> groups;
  for (int g = 0; g < ppd_->num_groups; ++g) {
    const ppd_group_t& group = ppd_->groups[g];
    for (int i = 0; i < group.num_options; ++i) {
      groups[group.name].insert(group.options[i].keyword);
    }
  }
  for (const auto& [keyword, expected] : kExpected) {
    EXPECT_TRUE(groups[expected.group].contains(keyword)) << keyword;
  }
  EXPECT_TRUE(groups["Quality"].contains(kHalftoneTypeOption));
  EXPECT_TRUE(groups["Quality"].contains(kBrightnessOption.keyword));
  EXPECT_TRUE(groups["Diagnosis"].contains(kDebugImagesOption));
}

// From 26 on bare paper exceeds the threshold and the whole page is black.
TEST_P(Ppd, KeepsBrightnessWherePaperStaysWhite) {
  EXPECT_EQ(choicesOf("Brightness"), numbers(-25, 25, 5));
  EXPECT_EQ(marked("Brightness"), "0");
  EXPECT_EQ(textOf("Brightness", "20"), "20 darker");
  EXPECT_EQ(textOf("Brightness", "-20"), "20 lighter");
}

// Debug images show private receipts, so they are written only on request.
TEST_P(Ppd, LeavesDebugImagesOff) {
  EXPECT_EQ(choicesOf(kDebugImagesOption), (std::vector<std::string>{kDebugImagesOff, "On"}));
  EXPECT_EQ(marked(kDebugImagesOption), kDebugImagesOff);
}

// From FloydSteinberg to Sierra, each name runs the method of the next name; the texts name the
// method that prints.
TEST_P(Ppd, NamesTheMethodThatPrints) {
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"None", "Threshold"},   {"FloydSteinberg", "Ordered"}, {"Ordered", "Burkes"},
      {"Burkes", "Stucki"},    {"Stucki", "Jarvis"},          {"JarvisJudiceNinke", "Sierra"},
      {"Sierra", "Stevenson"}, {"StevensonArce", "Bayer"},    {"QVDithering", "Stencil"}};
  const auto names = choicesOf(kHalftoneTypeOption);
  ASSERT_EQ(names.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(names[i], expected[i].first);
    EXPECT_THAT(textOf(kHalftoneTypeOption, names[i].c_str()),
                testing::StartsWith(expected[i].second));
  }
}

TEST_P(Ppd, DescribesEachNumberByWhatItDoes) {
  EXPECT_THAT(textOf("BidiPrinting", "0"), testing::HasSubstr("Both directions"));
  EXPECT_THAT(textOf("BidiPrinting", "1"), testing::HasSubstr("One direction"));
  EXPECT_EQ(textOf("DocCutType", "1"), "Full cut");
  EXPECT_EQ(textOf("DocCutType", "2"), "Partial cut");
  EXPECT_EQ(textOf("PageCutType", "1"), "Full cut");
  EXPECT_EQ(textOf("CashDrawerSetting", "1"), "Open before printing");
  EXPECT_EQ(textOf("CashDrawerSetting", "2"), "Open after printing");
  for (int i = 0; i <= 8; ++i) {
    EXPECT_EQ(textOf("CashDrawerPulseWidth", std::to_string(i).c_str()),
              std::to_string(100 + 50 * i) + " ms");
  }
  EXPECT_THAT(textOf("PageType", "1"), testing::StartsWith("Keep"));
  EXPECT_THAT(textOf("Buzzer1Setting", "1"), testing::StartsWith("Sound before"));
  EXPECT_THAT(textOf("Buzzer1Setting", "2"), testing::StartsWith("Sound after"));
  EXPECT_EQ(textOf("Buzzer2Setting", "1"), "Sound before printing");
  EXPECT_EQ(textOf("Buzzer2Setting", "2"), "Sound after printing");
  for (int i = 1; i <= 15; ++i) {
    EXPECT_EQ(textOf("FeedCutAfterJobEnd", std::to_string(i).c_str()), std::to_string(i) + " mm");
  }
  for (const char* option : {"Buzzer1OnTime", "Buzzer1Repeat", "Buzzer2OnTime", "Buzzer2Repeat"}) {
    for (const std::string& number : numbers(0, 9)) {
      EXPECT_THAT(textOf(option, number.c_str()), testing::StartsWith(number)) << option;
    }
  }
  for (const char* option : {"PageCutType", "DocCutType"}) {
    EXPECT_THAT(textOf(option, "0"), testing::HasSubstr("o cut")) << option;
  }
  for (const char* option : {"Buzzer1Setting", "Buzzer2Setting"}) {
    EXPECT_EQ(textOf(option, "0"), "Silent");
  }
  EXPECT_EQ(textOf("CashDrawerSetting", "0"), "Leave closed");
  EXPECT_EQ(textOf("FeedCutAfterJobEnd", "0"), "No feed");
}

TEST_P(Ppd, NamesEachOptionByWhatItConcerns) {
  const std::map<std::string, const char*> kWords = {
      {"PageType", "Blank edges"},
      {"HalftoneType", "Halftone"},
      {"Brightness", "Darkness"},
      {"BidiPrinting", "Print direction"},
      {"PageCutType", "Cut after each page"},
      {"DocCutType", "Cut after the document"},
      {"FeedCutAfterJobEnd", "Feed before the document cut"},
      {"CashDrawerSetting", "Cash drawer"},
      {"CashDrawerPulseWidth", "Drawer pulse"},
      {"Buzzer1Setting", "Buzzer for each page"},
      {"Buzzer1OnTime", "Length of a page beep"},
      {"Buzzer1Repeat", "Beeps for each page"},
      {"Buzzer2Setting", "Buzzer for the document"},
      {"Buzzer2OnTime", "Length of a document beep"},
      {"Buzzer2Repeat", "Beeps for the document"},
      {"DebugImages", "Debug images of each page"}};
  for (const auto& [keyword, words] : kWords) {
    const ppd_option_t* option = ppdFindOption(ppd_, keyword.c_str());
    EXPECT_STREQ(option == nullptr ? "no such option" : option->text, words) << keyword;
  }
}

TEST_P(Ppd, CutsPagesAtTheWidthOfTheHead) {
  const double widthPt = std::atof(attribute(kMaxMediaWidthAttribute).c_str());
  EXPECT_EQ(static_cast<int>(widthPt / 72.0 * 203), GetParam().headDots)
      << attribute(kMaxMediaWidthAttribute);
}

// Of each paper, the lengths in millimetres, and the size that is as wide as the print.
const std::map<int, std::vector<std::string>> kSizes = {
    {58,
     {"X58MMY30MM", "X58MMY40MM", "X58MMY60MM", "X58MMY100MM", "X58MMY200MM", "X58MMY297MM",
      "X58MMY600MM", "X58MMY1200MM", "X48MMY200MM"}},
    {80,
     {"X80MMY30MM", "X80MMY50MM", "X80MMY80MM", "X80MMY120MM", "X80MMY200MM", "X80MMY297MM",
      "X80MMY600MM", "X80MMY1200MM", "X72MMY200MM"}},
    {112,
     {"X112MMY50MM", "X112MMY80MM", "X112MMY150MM", "X112MMY200MM", "X112MMY297MM", "X112MMY600MM",
      "X112MMY1200MM", "X104MMY200MM"}}};

TEST_P(Ppd, OffersLabelsReceiptsAndJournalsOfItsPaper) {
  const auto& expected = kSizes.at(GetParam().paperMm);
  auto withCustom = expected;
  withCustom.emplace_back("Custom");
  EXPECT_THAT(choicesOf("PageSize"), testing::UnorderedElementsAreArray(withCustom));
  EXPECT_THAT(choicesOf("PageRegion"), testing::IsSupersetOf(expected));
  const std::string receipt = "X" + std::to_string(GetParam().paperMm) + "MMY200MM";
  EXPECT_EQ(marked("PageSize"), receipt);
  EXPECT_EQ(attribute("DefaultPageSize"), receipt);
  EXPECT_EQ(attribute("DefaultPageRegion"), receipt);
}

TEST_P(Ppd, NamesEverySizeByItsMillimetres) {
  int sizes = 0;
  for (int i = 0; i < ppd_->num_sizes; ++i) {
    const ppd_size_t& size = ppd_->sizes[i];
    if (std::string(size.name) == "Custom") continue;
    ++sizes;
    const auto millimetres = wren::filter::parsePageSizeName(size.name);
    EXPECT_GT(millimetres.width, 0.0F) << size.name;
    EXPECT_NEAR(size.width, millimetres.width * 72 / 25.4F, 0.05) << size.name;
    EXPECT_NEAR(size.length, millimetres.height * 72 / 25.4F, 0.05) << size.name;
    char numbers[32];
    std::snprintf(numbers, sizeof numbers, "%g x %g mm", double{millimetres.width},
                  double{millimetres.height});
    EXPECT_THAT(textOf("PageSize", size.name), testing::StartsWith(numbers));
  }
  EXPECT_GE(sizes, 8);
  EXPECT_NE(ppd_->variable_sizes, 0);
}

// A size as wide as the paper leaves the print head between its margins; what is made for the
// printed width has none. No size has a margin above or below.
TEST_P(Ppd, LeavesThePrintHeadBetweenTheMargins) {
  const double headPt = GetParam().headDots / 203.0 * 72;
  int paperWide = 0;
  int asPrinted = 0;
  for (int i = 0; i < ppd_->num_sizes; ++i) {
    const ppd_size_t& size = ppd_->sizes[i];
    if (std::string(size.name) == "Custom") continue;
    SCOPED_TRACE(size.name);
    const bool isPaperWide =
        std::string(size.name).rfind("X" + std::to_string(GetParam().paperMm) + "MM", 0) == 0;
    ++(isPaperWide ? paperWide : asPrinted);
    EXPECT_NEAR(size.right - size.left, isPaperWide ? headPt : double{size.width}, 0.6);
    EXPECT_NEAR(size.left, size.width - size.right, 0.1) << "one margin is wider";
    EXPECT_EQ(size.bottom, 0);
    EXPECT_EQ(size.top, size.length);
    if (!isPaperWide) {
      EXPECT_NEAR(size.width, headPt, 1.0);
    }
  }
  EXPECT_GE(paperWide, 7);
  EXPECT_EQ(asPrinted, 1);
  for (const float margin : ppd_->custom_margins) EXPECT_EQ(margin, 0);
}

// The width of a custom page is not limited to the head: a wider one keeps its middle.
TEST_P(Ppd, TakesCustomSizesUpToThreeMetres) {
  const std::map<int, double> kLeastWidthMm = {{58, 20}, {80, 25}, {112, 40}};
  EXPECT_NEAR(ppd_->custom_min[0], kLeastWidthMm.at(GetParam().paperMm) * 72 / 25.4, 0.1);
  EXPECT_NEAR(ppd_->custom_min[1], 10 * 72 / 25.4, 0.1);
  EXPECT_NEAR(ppd_->custom_max[1], 3000 * 72 / 25.4, 0.1);
}

TEST_P(Ppd, NamesItsPrinter) {
  const std::string model = std::to_string(GetParam().paperMm) + " mm receipt printer";
  EXPECT_EQ(attribute("Manufacturer"), "Wren");
  EXPECT_EQ(attribute("ModelName"), "Wren " + model);
  EXPECT_THAT(attribute("NickName"), testing::StartsWith("Wren " + model));
  EXPECT_EQ(attribute("Product"), "(" + model + ")");
}

// One grey page at the resolution of the head, 8 bits a pixel.
TEST_P(Ppd, AsksForGreyPagesAtTheResolutionOfTheHead) {
  EXPECT_EQ(choicesOf("ColorModel"), std::vector<std::string>{"Gray"});
  EXPECT_EQ(choicesOf("Resolution"), std::vector<std::string>{"203dpi"});
  cups_page_header2_t header = {};
  ASSERT_EQ(cupsRasterInterpretPPD(&header, ppd_, 0, nullptr, nullptr), 0);
  EXPECT_EQ(header.cupsColorSpace, CUPS_CSPACE_K);
  EXPECT_EQ(header.cupsBitsPerColor, 8U);
  EXPECT_EQ(header.cupsBitsPerPixel, 8U);
  EXPECT_EQ(header.cupsColorOrder, CUPS_ORDER_CHUNKED);
  EXPECT_EQ(header.cupsCompression, 0U);
  EXPECT_THAT(header.HWResolution, testing::ElementsAre(203U, 203U));
}

TEST_P(Ppd, TellsCupsWhatTheFilterNeeds) {
  EXPECT_EQ(ppd_->manual_copies, 1);
  EXPECT_EQ(ppd_->model_number, GetParam().paperMm);
  EXPECT_THAT(attributes("cupsFilter2"),
              testing::ElementsAre(
                  "application/vnd.cups-raster application/vnd.wren-escpos 0 rastertowren",
                  "application/vnd.cups-command application/vnd.wren-escpos 0 commandtowren"));
  EXPECT_EQ(ppdFindAttr(ppd_, "cupsFilter", nullptr), nullptr);
  EXPECT_EQ(attribute("cupsSNMPSupplies"), "False");
  EXPECT_EQ(attribute("1284DeviceID"), "MFG:Wren;MDL:" + std::to_string(GetParam().paperMm) +
                                           " mm receipt printer;CMD:ESC/POS;CLS:PRINTER;");
  EXPECT_EQ(attribute("cupsLanguages"), "en de es fr ja zh_CN");
}

// CUPS shows the buttons of its web page by this list.
TEST_P(Ppd, ListsTheCommandsThatTheFilterKnows) {
  std::string names;
  for (const char* name : kCommandNames) names += (names.empty() ? "" : " ") + std::string(name);
  EXPECT_EQ(attribute("cupsCommands"), names);
}

constexpr const char* kLanguages[] = {"de", "es", "fr", "ja", "zh_CN"};

// The texts of a PPD by their keywords, such as "de.DocCutType 1". CUPS keeps the texts of one
// language only, so they are read from the file.
std::map<std::string, std::string> textsOf(const std::string& path) {
  std::map<std::string, std::string> texts;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const auto slash = line.find('/');
    const auto end = line.rfind(": \"");
    if (line[0] != '*' || end == std::string::npos || slash > end) continue;
    texts[line.substr(1, slash - 1)] = line.substr(slash + 1, end - slash - 1);
  }
  return texts;
}

class PpdTexts : public Ppd {
 protected:
  void SetUp() override {
    Ppd::SetUp();
    texts_ = textsOf(WREN_PPD_DIR "/wren" + std::to_string(GetParam().paperMm) + ".ppd");
  }

  // Empty when there is none.
  std::string translation(const std::string& name, const std::string& choice) const {
    const auto text = texts_.find(name + " " + choice);
    return text == texts_.end() ? std::string() : text->second;
  }

 private:
  std::map<std::string, std::string> texts_;
};

TEST_P(PpdTexts, HasEveryGroupOptionAndChoiceInEveryLanguage) {
  for (const std::string language : kLanguages) {
    SCOPED_TRACE(language);
    for (const auto& [keyword, expected] : kExpected) {
      EXPECT_NE(translation(language + ".Translation", expected.group), "");
    }
    for (const ppd_option_t* option = ppdFirstOption(ppd_); option != nullptr;
         option = ppdNextOption(ppd_)) {
      if (std::string(option->keyword) == "PageRegion") continue;  // not shown to users
      SCOPED_TRACE(option->keyword);
      EXPECT_NE(translation(language + ".Translation", option->keyword), "");
      for (int i = 0; i < option->num_choices; ++i) {
        const char* choice = option->choices[i].choice;
        if (std::string(choice) == "Custom") continue;  // named by CUPS
        EXPECT_NE(translation(language + "." + option->keyword, choice), "") << choice;
      }
    }
  }
}

// Every language names the same method and number for a choice as English.
TEST_P(PpdTexts, HasTheSameMethodsAndNumbersInEveryLanguage) {
  const std::vector<std::pair<const char*, const char*>> methods = {
      {"FloydSteinberg", "4 x 4"}, {"Ordered", "Burkes"},           {"Burkes", "Stucki"},
      {"Stucki", "Jarvis"},        {"JarvisJudiceNinke", "Sierra"}, {"Sierra", "Stevenson"},
      {"StevensonArce", "Bayer"}};
  for (const std::string language : kLanguages) {
    SCOPED_TRACE(language);
    for (const auto& [name, method] : methods) {
      EXPECT_THAT(translation(language + ".HalftoneType", name), testing::HasSubstr(method));
    }
    for (const int value : {5, 10, 15, 20, 25}) {
      const auto number = std::to_string(value);
      const auto up = translation(language + ".Brightness", number);
      const auto down = translation(language + ".Brightness", "-" + number);
      EXPECT_THAT(up, testing::HasSubstr(number));
      EXPECT_THAT(down, testing::HasSubstr(number));
      EXPECT_NE(up, down);
    }
    for (const char* option :
         {"PageCutType", "DocCutType", "CashDrawerSetting", "Buzzer1Setting"}) {
      std::set<std::string> texts;
      for (const char* choice : {"0", "1", "2"}) {
        texts.insert(translation(language + "." + option, choice));
      }
      EXPECT_EQ(texts.size(), 3U) << option;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Printers, Ppd,
                         testing::Values(Printer{58, 384}, Printer{80, 576}, Printer{112, 832}));
INSTANTIATE_TEST_SUITE_P(Printers, PpdTexts,
                         testing::Values(Printer{58, 384}, Printer{80, 576}, Printer{112, 832}));

}  // namespace
