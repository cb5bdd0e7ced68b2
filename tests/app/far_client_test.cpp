// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A server that others can reach, and clients on its own machine and on another one. Runs where
// run_far_client_test.sh has made an address that is not loopback.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/app/running_app.h"
#include "tests/support/raster_stream.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

constexpr const char* kFarAddress = "192.0.2.1";
const std::string kDrawer("\x1B\x70\x00\x32\x32", 5);

struct Document {
  const char* format;
  std::string bytes;
};

// One that PAPPL streams and one that it spools, which is printed by another thread.
std::vector<Document> documents() {
  return {{"image/pwg-raster", rasterStream(RasterKind::kPwg, {flatPage(576, 80, 255)})},
          {"application/pdf", readFile(WREN_EXAMPLES "/receipt.pdf")}};
}

const std::vector<JobAttribute> kOpenDrawer = {
    JobAttribute::keyword("cash-drawer-setting", "after")};

TEST(SharedServer, OpensTheDrawerForClientsOnItsOwnMachineAlone) {
  // A server without a password is not shared.
  RunningApp app({.options = {"--listen", "*"}, .state = "Password 0123~0123\n"});
  std::size_t papers = 0;
  for (const Document& document : documents()) {
    SCOPED_TRACE(document.format);
    app.reachBy("127.0.0.1");
    const JobOutcome near = app.print(document.bytes, document.format, kOpenDrawer);
    ASSERT_EQ(near.state, IPP_JSTATE_COMPLETED) << near.message;
    EXPECT_THAT(app.waitForPapers(++papers).back(), testing::HasSubstr(kDrawer));

    app.reachBy(kFarAddress);
    const JobOutcome far = app.print(document.bytes, document.format, kOpenDrawer);
    EXPECT_EQ(far.state, IPP_JSTATE_ABORTED);
    EXPECT_THAT(far.message, testing::HasSubstr("only clients on the printer's own machine"));

    const JobOutcome plain = app.print(document.bytes, document.format);
    ASSERT_EQ(plain.state, IPP_JSTATE_COMPLETED) << plain.message;
    const auto all = app.waitForPapers(++papers);
    ASSERT_EQ(all.size(), papers);
    EXPECT_THAT(all.back(), testing::Not(testing::HasSubstr(kDrawer)));
  }
}

}  // namespace
}  // namespace wren_test
