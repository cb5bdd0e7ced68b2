// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What CUPS is asked for, and what its log says when a document is damaged.

#include "cli/rendering.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::Pair;

JobOptions withDefaults(JobOptions options, const char* type) {
  addReceiptDefaults(options, type);
  return options;
}

TEST(ReceiptDefaults, KeepAReceiptUprightAndAtTheTop) {
  EXPECT_THAT(withDefaults({}, "application/pdf"),
              ElementsAre(Pair("position", "top"), Pair("pdfAutoRotate", "no")));
  EXPECT_THAT(withDefaults({}, "image/png"),
              ElementsAre(Pair("position", "top"), Pair("pdfAutoRotate", "no"),
                          Pair("orientation-requested", "3")));
}

TEST(ReceiptDefaults, GiveWayToTheOptionsOfTheJob) {
  EXPECT_THAT(withDefaults({{"Position", "center"}, {"pdfautorotate", "yes"}}, "application/pdf"),
              ElementsAre(Pair("Position", "center"), Pair("pdfautorotate", "yes")));
  for (const char* turned : {"landscape", "orientation-requested"}) {
    EXPECT_THAT(
        withDefaults({{turned, "4"}}, "image/png"),
        ElementsAre(Pair(turned, "4"), Pair("position", "top"), Pair("pdfAutoRotate", "no")));
  }
}

TEST(RendererErrors, AreTheFirstWordsOfTheRendererItself) {
  const std::pair<const char*, const char*> kLogs[] = {
      {"INFO: pdftopdf (PID 7) started.\nWARNING: x.pdf: file is damaged\n"
       "ERROR: loadFilename failed: x.pdf: no trailer\nERROR: second\n"
       "ERROR: pdftopdf (PID 7) stopped with status 1\n",
       "loadFilename failed: x.pdf: no trailer"},
      {"DEBUG: an Error in debug output\nlibpng error: Read Error\n"
       "ERROR: imagetoraster (PID 7) crashed on signal 6\n",
       "libpng error: Read Error"},
      {"INFO: started\n   **** Error: Cannot find a %%EOF marker\n",
       "Error: Cannot find a %%EOF marker"},
      {"cupsfilter: File \"x\" not available: error\nERROR: gs (PID 7) stopped with status 1\n",
       ""},
      {"", ""},
  };
  for (const auto& [log, error] : kLogs) EXPECT_EQ(firstRendererError(log), error);
}

}  // namespace
}  // namespace wren::cli
