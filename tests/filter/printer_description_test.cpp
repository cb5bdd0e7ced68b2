// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/printer_description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace wren::filter {
namespace {

constexpr char kPpd[] = R"(*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*NickName: "Wren test printer"
*cupsModelNumber: 58
*VariablePaperSize: True
*MinMediaSize: "56 28"
*ParamCustomPageSize Width: 1 points 56 204
*ParamCustomPageSize Height: 2 points 28 8503
*CustomPageSize True: "pop"
*OpenGroup: Quality/Quality
*OpenUI *HalftoneType/Halftone: PickOne
*DefaultHalftoneType: Burkes
*HalftoneType None/Threshold: ""
*HalftoneType Burkes/Stucki error diffusion: ""
*CloseUI: *HalftoneType
*CloseGroup: Quality
*OpenUI *PageType/Blank edges: PickOne
*DefaultPageType: 7
*PageType 0/Cut away: ""
*CloseUI: *PageType
)";

class PrinterDescriptionTest : public testing::Test {
 protected:
  std::optional<PrinterDescription> describe(const std::string& ppd) {
    return readPrinterDescription(folder_.write("test.ppd", ppd));
  }
  wren_test::TemporaryFolder folder_;
};

TEST_F(PrinterDescriptionTest, HasNameOptionsAndLimits) {
  const auto printer = describe(kPpd);
  ASSERT_TRUE(printer.has_value());
  EXPECT_EQ(printer->name, "Wren test printer");
  EXPECT_EQ(printer->modelNumber, 58);
  EXPECT_EQ(printer->customSize.minWidthPt, 56.0F);
  EXPECT_EQ(printer->customSize.minLengthPt, 28.0F);
  EXPECT_EQ(printer->customSize.maxWidthPt, 204.0F);
  EXPECT_EQ(printer->customSize.maxLengthPt, 8503.0F);
  const PrinterOption* halftone = printer->find("HalftoneType");
  ASSERT_NE(halftone, nullptr);
  EXPECT_EQ(halftone->text, "Halftone");
  EXPECT_EQ(halftone->defaultChoice, "Burkes");
  ASSERT_EQ(halftone->choices.size(), 2U);
  EXPECT_EQ(halftone->choices[1].name, "Burkes");
  EXPECT_EQ(halftone->choices[1].text, "Stucki error diffusion");
}

TEST_F(PrinterDescriptionTest, KeepsADefaultThatIsNoChoice) {
  const auto printer = describe(kPpd);
  ASSERT_TRUE(printer.has_value());
  ASSERT_NE(printer->find("PageType"), nullptr);
  EXPECT_EQ(printer->find("PageType")->defaultChoice, "7");
}

TEST_F(PrinterDescriptionTest, FindsNamesWithoutRegardToCase) {
  const auto printer = describe(kPpd);
  ASSERT_TRUE(printer.has_value());
  ASSERT_NE(printer->find("halftonetype"), nullptr);
  EXPECT_EQ(printer->find("halftonetype")->find("BURKES"),
            &printer->find("HalftoneType")->choices[1]);
  EXPECT_EQ(printer->find("Halftone"), nullptr);
  EXPECT_EQ(printer->find("HalftoneType")->find("Burke"), nullptr);
}

TEST_F(PrinterDescriptionTest, HasNoCustomSizesWhereThePpdHasNone) {
  std::string ppd = kPpd;
  ppd.erase(ppd.find("*VariablePaperSize"),
            ppd.find("*OpenGroup") - ppd.find("*VariablePaperSize"));
  const auto printer = describe(ppd);
  ASSERT_TRUE(printer.has_value());
  EXPECT_EQ(printer->customSize.maxWidthPt, 0.0F);
}

TEST_F(PrinterDescriptionTest, IsNothingForAFileThatIsNoPpd) {
  EXPECT_FALSE(describe("no PPD").has_value());
  EXPECT_FALSE(readPrinterDescription((folder_.path() / "gone.ppd").string()).has_value());
}

TEST(SameNames, DifferInCaseOnly) {
  EXPECT_TRUE(isSameName("PageSize", "pagesize"));
  EXPECT_TRUE(isSameName("", ""));
  EXPECT_FALSE(isSameName("PageSize", "PageSiz"));
  EXPECT_FALSE(isSameName("PageSize", "PageSizes"));
}

}  // namespace
}  // namespace wren::filter
