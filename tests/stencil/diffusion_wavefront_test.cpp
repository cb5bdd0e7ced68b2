// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/diffusion_wavefront.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/stencil/reference_image.h"
#include "tests/stencil/test_pages.h"
#include "tests/support/vector_levels.h"

namespace wren::stencil {
namespace {

Bytes diffused(const QVImage& page, int threshold) {
  Bytes out(page.byteCount());
  WavefrontDiffuser diffuser(page.width, page.height, threshold, {out.data(), page.width});
  for (int y = 0; y < page.height; y += WavefrontDiffuser::kBlockRows) {
    const int rows = std::min(WavefrontDiffuser::kBlockRows, page.height - y);
    for (int r = 0; r < rows; ++r) {
      std::memcpy(diffuser.row(r), page.data + (y + r) * page.width,
                  static_cast<std::size_t>(page.width));
    }
    diffuser.run();
  }
  return out;
}

testing::AssertionResult equalsReference(const QVImage& page, int threshold) {
  const Bytes expected = bytesOf(reference::edf_cus(toReference(page), threshold));
  return sameBytes(expected, diffused(page, threshold), page.width) << ", threshold " << threshold;
}

class WavefrontDiffuserTest : public wren_test::VectorLevelTest {};
INSTANTIATE_TEST_SUITE_P(Level, WavefrontDiffuserTest,
                         testing::ValuesIn(wren::machineVectorLevels()),
                         wren_test::vectorLevelTestName);

TEST_P(WavefrontDiffuserTest, EqualsTheReferenceOnEverySize) {
  onEveryPage(1, [](const QVImage& page, PageMaker& maker) {
    EXPECT_TRUE(equalsReference(page, maker.below(257) - 1));
  });
}

// Wide enough that most columns are away from the edges.
TEST_P(WavefrontDiffuserTest, EqualsTheReferenceAtEveryThreshold) {
  PageMaker maker(6);
  for (int threshold = -1; threshold <= 255; ++threshold) {
    for (const PageKind kind : kPageKinds) {
      const QVImage page = maker.make(kind, 150 + threshold % 16, 50);
      ASSERT_TRUE(equalsReference(page, threshold)) << kind;
    }
  }
}

// Below the last ink the errors fade for hundreds of rows, down to denormals.
TEST_P(WavefrontDiffuserTest, EqualsTheReferenceWhileErrorsFadeOnABlankPage) {
  PageMaker maker(7);
  QVImage page = uniformPage(80, 1600, 0);
  for (int i = 0; i < 80 * 40; ++i) page.data[i] = static_cast<std::uint8_t>(maker.below(256));
  for (const int threshold : {0, 1, 128}) EXPECT_TRUE(equalsReference(page, threshold));
}

TEST_P(WavefrontDiffuserTest, LeavesBytesBesideTheRowsUnchanged) {
  const QVImage page = noisePage(21, 3, 8);
  const Bytes dots = bytesOf(reference::edf_cus(toReference(page), 128));
  Bytes out(3 * 32, 9);
  Bytes expected = out;
  WavefrontDiffuser diffuser(21, 3, 128, {out.data(), 32});
  for (int r = 0; r < 3; ++r) {
    std::memcpy(diffuser.row(r), page.data + r * 21, 21);
    std::memcpy(expected.data() + r * 32, dots.data() + r * 21, 21);
  }
  diffuser.run();
  EXPECT_TRUE(sameBytes(expected, out, 32));
}

}  // namespace
}  // namespace wren::stencil
