// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone_curve.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "tests/reference/stencil.h"

namespace wren::stencil {
namespace {

ToneCurve referenceCurve(int knee, float gammaLow, float gammaHigh) {
  ToneCurve levels{};
  for (std::size_t i = 0; i < levels.size(); ++i) levels[i] = static_cast<std::uint8_t>(i);
  reference::QVImage ramp(256, 1, reference::QV_IMG_GRAY, levels.data());
  reference::enh_piecewise_gamma(ramp, knee, gammaLow, gammaHigh);
  for (std::size_t i = 0; i < levels.size(); ++i) levels[i] = ramp.data[i];
  return levels;
}

void expectEqual(const ToneCurve& curve, const ToneCurve& expected) {
  for (std::size_t i = 0; i < curve.size(); ++i) {
    EXPECT_EQ(curve[i], expected[i]) << "level " << i;
  }
}

TEST(ToneCurve, OfTheStencilLiftsTheMidTones) {
  struct Row {
    std::size_t from;
    int to;
  };
  for (const Row row : {Row{0, 0}, Row{1, 1}, Row{2, 3}, Row{63, 63}, Row{64, 64}, Row{65, 68},
                        Row{128, 152}, Row{255, 255}}) {
    EXPECT_EQ(stencilToneCurve()[row.from], row.to) << "level " << row.from;
  }
}

TEST(ToneCurve, OfTheStencilEqualsTheReference) {
  expectEqual(stencilToneCurve(), referenceCurve(64, 0.85F, 0.7F));
}

TEST(ToneCurve, EqualsTheReferenceForEveryKnee) {
  for (int knee = 0; knee <= 255; ++knee) {
    SCOPED_TRACE(testing::Message() << "knee " << knee);
    expectEqual(piecewiseGamma(knee, 0.85F, 1.5F), referenceCurve(knee, 0.85F, 1.5F));
  }
}

}  // namespace
}  // namespace wren::stencil
