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

TEST(RendererErrors, AreNotTheLinesOfTheChainItself) {
  for (const char* line :
       {"DEBUG: an error", "DEBUG2: Error", "INFO: error", "NOTICE: error", "WARNING: error",
        "WARN: error", "ATTR: error", "STATE: +error", "PAGE: error", "PPD: error",
        "cupsfilter: error", "After an error", "ERROR: gs (PID 7) stopped with status 1",
        "ERROR: gs (PID 7) crashed on signal 6", "ERROR: gs (PID 7) exited with no errors",
        "ERROR: gs (PID 7) did not terminate", "ERROR: page logging turned off", "all is well",
        ""}) {
    EXPECT_EQ(firstRendererError(std::string(line) + "\nERROR: true\n"), "true") << line;
  }
  const std::pair<const char*, const char*> kErrors[] = {{"ERROR: a cause", "a cause"},
                                                         {"CRIT: a cause", "CRIT: a cause"},
                                                         {"EMERG: a cause", "EMERG: a cause"},
                                                         {"ALERT: a cause", "ALERT: a cause"},
                                                         {"Error in a cause", "Error in a cause"},
                                                         {"an error", "an error"},
                                                         {"\t ** Error: x", "Error: x"},
                                                         {"ERROR: *** ", ""}};
  for (const auto& [line, error] : kErrors) {
    EXPECT_EQ(firstRendererError(std::string("INFO: x\n") + line + "\nERROR: later\n"), error)
        << line;
  }
}

}  // namespace
}  // namespace wren::cli
