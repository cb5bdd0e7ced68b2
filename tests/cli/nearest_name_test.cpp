// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/nearest_name.h"

#include <gtest/gtest.h>

namespace wren::cli {
namespace {

const std::vector<std::string> kNames = {"HalftoneType", "Brightness", "PageType", "cpi", "lpi"};

TEST(EditDistance, CountsLettersToChangeWithoutRegardToCase) {
  EXPECT_EQ(editDistance("Stucki", "stucki"), 0U);
  EXPECT_EQ(editDistance("Stuki", "Stucki"), 1U);
  EXPECT_EQ(editDistance("Stuckki", "Stucki"), 1U);
  EXPECT_EQ(editDistance("Stocki", "Stucki"), 1U);
  EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
  EXPECT_EQ(editDistance("", "abc"), 3U);
  EXPECT_EQ(editDistance("abc", ""), 3U);
}

TEST(NearestName, FindsWhatWasMeant) {
  EXPECT_EQ(nearestName("HalftonType", kNames), "HalftoneType");
  EXPECT_EQ(nearestName("brightnes", kNames), "Brightness");
  EXPECT_EQ(nearestName("pgetype", kNames), "PageType");
  EXPECT_EQ(nearestName("Halftone", kNames), "HalftoneType") << "a beginning";
  EXPECT_EQ(nearestName("Half", kNames), "HalftoneType") << "the shortest beginning";
  EXPECT_EQ(nearestName("bri", {"brixx", "bright"}), "") << "shorter than a beginning";
  EXPECT_EQ(nearestName("abcx", {"abcde", "abcy", "abcd"}), "abcy") << "the first of the nearest";
  EXPECT_EQ(nearestName("abcd", {"abxx", "abcdefgh"}), "abcdefgh");
}

TEST(NearestName, FindsNothingForWhatIsFar) {
  for (const char* wanted : {"banana", "xyz", "Half!!!Type", "Halftone!!!!!", "xpi!", "ab", ""}) {
    EXPECT_EQ(nearestName(wanted, kNames), "") << wanted;
  }
  EXPECT_EQ(nearestName("anything", {}), "");
}

TEST(Suggestion, IsAPartOfASentenceOrNothing) {
  EXPECT_EQ(suggestion("brightnes", kNames), ", did you mean 'Brightness'?");
  EXPECT_EQ(suggestion("banana", kNames), "");
}

}  // namespace
}  // namespace wren::cli
