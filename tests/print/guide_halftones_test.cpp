// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What docs/PRINTING.md says of halftones and brightness.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <string>

#include "tests/print/guide_document.h"

namespace {

using print_chain::Options;

constexpr const char* kShadingTypes[] = {"FloydSteinberg",    "Ordered", "Burkes",       "Stucki",
                                         "JarvisJudiceNinke", "Sierra",  "StevensonArce"};

class GuideHalftones : public print_chain::Guide {
 protected:
  double share(const std::string& document, const std::string& type, int brightness) {
    Options options = {{"HalftoneType", type}};
    if (brightness != 0) options.emplace_back("Brightness", std::to_string(brightness));
    return shareOfDots(document, options);
  }

  double shareOfStoredReceipt(const std::string& type, int brightness) {
    return shareOfDots(printStored(
        "receipt-80mm", 80, {{"HalftoneType", type}, {"Brightness", std::to_string(brightness)}}));
  }

  // Paper with a grey of 4 % that is not quite even.
  std::string scan() {
    std::mt19937 random(1);
    std::ofstream out(pathOf("scan.pgm"), std::ios::binary);
    out << "P5 576 600 255\n";
    for (int i = 0; i < 576 * 600; ++i) {
      const int noise = static_cast<int>(random() % 9 + random() % 9) - 8;
      out.put(static_cast<char>(245 + noise));
    }
    out.close();
    const std::string command = "convert " + pathOf("scan.pgm") +
                                " -units PixelsPerInch -density 203 " + pathOf("scan.png");
    EXPECT_EQ(std::system(command.c_str()), 0);
    return pathOf("scan.png");
  }
};

TEST_F(GuideHalftones, BlackPrintComesOutTheSameWithAllButTheStencil) {
  for (const char* document : {"receipt.pdf", "order.txt"}) {
    const auto plain = print(document, 80, {{"HalftoneType", "None"}}).bytes;
    for (const char* type : kShadingTypes) {
      EXPECT_TRUE(print(document, 80, {{"HalftoneType", type}}).bytes == plain) << type;
    }
    EXPECT_TRUE(print(document, 80, {{"HalftoneType", "QVDithering"}}).bytes != plain);
  }
}

TEST_F(GuideHalftones, NonePrintsBlackFromHalfGreyOn) {
  EXPECT_EQ(share(pdf(226, 300, "0.55 setgray 20 20 100 100 rectfill"), "None", 0), 0);
  EXPECT_GT(share(pdf(226, 300, "0.45 setgray 20 20 100 100 rectfill"), "None", 0), 0.3);
}

TEST_F(GuideHalftones, TheStencilFindsDotsInPaperThatIsNotWhite) {
  const auto document = scan();
  EXPECT_LT(share(document, "Burkes", 0), 0.025);
  EXPECT_GT(share(document, "QVDithering", 0), 0.08);
  EXPECT_EQ(share(document, "None", 0), 0);
}

TEST_F(GuideHalftones, BrightnessOfNoneMovesOnlyTheGreys) {
  const auto plain = print("receipt.pdf", 80, {}).bytes;
  for (const char* value : {"-25", "25"}) {
    EXPECT_TRUE(print("receipt.pdf", 80, {{"Brightness", value}}).bytes == plain) << value;
  }
  const auto faint = pdf(226, 300, "0.55 setgray 20 20 100 100 rectfill");
  EXPECT_EQ(share(faint, "None", 0), 0);
  EXPECT_GT(share(faint, "None", 10), 0.3) << "faint print";
  const auto light = pdf(226, 300, "0.9 setgray 20 20 100 100 rectfill");
  EXPECT_EQ(share(light, "None", 0), 0);
  EXPECT_GT(share(light, "Burkes", 0), 0.02) << "missing parts";
  EXPECT_GT(share(light, "None", 25), 0.3) << "missing parts";
}

TEST_F(GuideHalftones, BrightnessOfTheOthersGreysThePaperAndHolesTheInk) {
  const double plain = shareOfStoredReceipt("None", 0);
  for (const char* type : kShadingTypes) {
    EXPECT_GT(shareOfStoredReceipt(type, 5), plain + 0.04) << type;
    EXPECT_LT(shareOfStoredReceipt(type, -10), plain * 0.96) << type;
  }
  const double stencil = shareOfStoredReceipt("QVDithering", 0);
  EXPECT_GT(shareOfStoredReceipt("QVDithering", 5), stencil + 0.04);
  EXPECT_GT(shareOfStoredReceipt("QVDithering", -10), stencil * 0.98);
}

TEST_F(GuideHalftones, TheExampleReceiptHasTheStatedShares) {
  EXPECT_NEAR(shareOfStoredReceipt("Burkes", 0), 0.10, 0.005);
  EXPECT_NEAR(shareOfStoredReceipt("Burkes", 5), 0.17, 0.005);
  EXPECT_NEAR(shareOfStoredReceipt("Burkes", 10), 0.26, 0.005);
  EXPECT_NEAR(shareOfStoredReceipt("Burkes", -10), 0.09, 0.005);
}

// A newer renderer moves edges by a pixel; it does not move print, nor lose or double any.
TEST_F(GuideHalftones, TheStoredReceiptIsWhatTheChainStillDraws) {
  const auto live = print("receipt.pdf", 80, {}).raster;
  const auto stored = storedPages("receipt-80mm");
  ASSERT_EQ(live.size(), 1U);
  ASSERT_EQ(stored.size(), 1U);
  EXPECT_EQ(live[0].width, stored[0].width);
  EXPECT_EQ(live[0].height, stored[0].height);
  const auto expected = print_chain::inkOf(stored[0]);
  const auto found = print_chain::inkOf(live[0]);
  EXPECT_NEAR(found.top, expected.top, 2);
  EXPECT_NEAR(found.bottom, expected.bottom, 2);
  EXPECT_NEAR(found.left, expected.left, 2);
  EXPECT_NEAR(found.right, expected.right, 2);
  EXPECT_NEAR(share("receipt.pdf", "Burkes", 0), shareOfStoredReceipt("Burkes", 0), 0.02);
}

TEST_F(GuideHalftones, APictureThatIsTooDarkGetsLighter) {
  EXPECT_LT(share("photo.png", "Burkes", -10), share("photo.png", "Burkes", 0) - 0.05);
}

}  // namespace
