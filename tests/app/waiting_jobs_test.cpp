// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of the application whose printer is away, not ready or stops: they wait and say why, can
// be cancelled, and are printed once.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>

#include "escpos/reader.h"
#include "tests/app/printed_commands.h"
#include "tests/app/printing_client.h"
#include "tests/app/running_app.h"
#include "tests/app/scripted_printer.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

using std::chrono::milliseconds;
using wren::app::Bytes;
using wren::app::ScriptedPrinter;
using Clock = std::chrono::steady_clock;

constexpr const char* kPwg = "image/pwg-raster";
constexpr int kSmallBuffer = 4096;
constexpr const char* kAway = "Waiting: the printer cannot be reached.";
constexpr const char* kNoPaper = "Waiting: out of paper.";
constexpr const char* kTakesNothing = "Waiting: the printer takes no data.";

std::string smallPage() {
  return rasterStream(RasterKind::kPwg, {noisePage(576, 100, 1)});
}

// More than the buffers on the way to a printer hold, where its own is kSmallBuffer.
std::string longPage() {
  return rasterStream(RasterKind::kPwg, {noisePage(576, 4000, 1)});
}

void readAll(ScriptedPrinter& printer) {
  printer.readAll();
}

/// What a printer that takes everything gets of the document.
Bytes bytesOf(const std::string& document) {
  ScriptedPrinter printer(readAll);
  RunningApp app({.device = printer.uri() + "/?status=off"});
  EXPECT_EQ(app.print(document, kPwg).state, IPP_JSTATE_COMPLETED);
  return printer.received();
}

TEST(WaitingJobs, PrintOnceWhenThePrinterThatWasAwayIsBack) {
  std::string port;
  {
    ScriptedPrinter gone(readAll);
    port = gone.port();
  }
  RunningApp app({.device = "socket://127.0.0.1:" + port + "/?status=off"});
  PrintingClient client(app, smallPage());
  const JobOutcome waiting = app.waitForMessage(1, kAway);
  EXPECT_EQ(waiting.message, kAway);
  EXPECT_EQ(app.waitForReasons("offline"), "offline");
  EXPECT_EQ(waiting.state, IPP_JSTATE_PROCESSING);
  EXPECT_THAT(waiting.reasons, testing::HasSubstr("printer-stopped"));
  ScriptedPrinter back(readAll, 0, false, static_cast<std::uint16_t>(std::stoul(port)));
  const JobOutcome printed = client.outcome();
  EXPECT_EQ(printed.state, IPP_JSTATE_COMPLETED) << printed.message;
  EXPECT_EQ(printed.reasons, "job-completed-successfully");
  EXPECT_EQ(app.waitForReasons("none"), "none");
  EXPECT_EQ(back.connections(), 1);
  EXPECT_THAT(back.received(), testing::ContainerEq(bytesOf(smallPage())));
}

TEST(WaitingJobs, EndSoonWhenTheyAreCancelled) {
  std::string port;
  {
    ScriptedPrinter gone(readAll);
    port = gone.port();
  }
  RunningApp app({.device = "socket://127.0.0.1:" + port});
  PrintingClient client(app, smallPage());
  ASSERT_EQ(app.waitForMessage(1, kAway).message, kAway);
  const auto start = Clock::now();
  app.cancel(1);
  EXPECT_EQ(client.outcome().state, IPP_JSTATE_CANCELED);
  EXPECT_LT(Clock::now() - start, milliseconds(500));
}

TEST(WaitingJobs, ShowThatThePaperIsOutAndGoOnWhenItIsThere) {
  std::atomic<bool> paper{false};
  ScriptedPrinter printer([&paper](ScriptedPrinter& self) {
    for (bool hadPaper = false; !hadPaper;) {
      hadPaper = paper;
      for (int request = 0; request < 4 && self.read(3); ++request) {
        const Bytes all = self.received();
        const std::uint8_t n = all.at(all.size() - 1);
        const std::uint8_t without = n == 1 ? 0x1A : n == 4 ? 0x72 : 0x12;
        self.send({hadPaper ? std::uint8_t{0x12} : without});
      }
    }
    self.readAll();
  });
  RunningApp app({.device = printer.uri()});
  PrintingClient client(app, smallPage());
  EXPECT_EQ(app.waitForMessage(1, kNoPaper).message, kNoPaper);
  EXPECT_EQ(app.waitForReasons("media-empty"), "media-empty");
  paper = true;
  const JobOutcome printed = client.outcome();
  EXPECT_EQ(printed.state, IPP_JSTATE_COMPLETED) << printed.message;
  EXPECT_EQ(app.waitForReasons("none"), "none");
  // Once it has paper it is asked whether it confirms the end, then stops to answer; it is still
  // asked for the cause between bands, after the page and at the end, and for nothing else.
  const Bytes received = printer.received();
  const Bytes beforeJob = {0x1D, 0x72, 0x01};
  const auto start =
      std::search(received.begin(), received.end(), beforeJob.begin(), beforeJob.end());
  ASSERT_NE(start, received.end());
  const std::string rest(start + 3, received.end());
  for (const auto& command : wren::escpos::readAll(Bytes(rest.begin(), rest.end())).commands) {
    if (!isQuestion(command.kind)) continue;
    EXPECT_THAT(command.bytes, testing::ElementsAre(0x10, 0x04, 0x02));
  }
  const Bytes job = bytesOf(smallPage());
  EXPECT_THAT(withoutQuestions(rest), SameBytes(std::string(job.begin(), job.end())));
}

TEST(WaitingJobs, ThatAPrinterStoppedTakingCanBeCancelled) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.pause(milliseconds(60'000)); },
                          kSmallBuffer);
  RunningApp app({.device = printer.uri() + "/?status=off"});
  PrintingClient client(app, longPage());
  ASSERT_EQ(app.waitForMessage(1, kTakesNothing).message, kTakesNothing);
  EXPECT_EQ(app.waitForReasons("offline"), "offline");
  const auto start = Clock::now();
  app.cancel(1);
  EXPECT_EQ(client.outcome().state, IPP_JSTATE_CANCELED);
  EXPECT_LT(Clock::now() - start, milliseconds(2000));
  EXPECT_EQ(app.waitForReasons("none"), "none");
}

TEST(WaitingJobs, AreNotPrintedAgainAfterAReset) {
  ScriptedPrinter printer(
      [](ScriptedPrinter& self) {
        if (self.connections() > 1) return self.readAll();
        self.read(10'000);
        self.reset();
      },
      kSmallBuffer);
  RunningApp app({.device = printer.uri() + "/?status=off"});
  const JobOutcome cut = app.print(longPage(), kPwg);
  EXPECT_EQ(cut.state, IPP_JSTATE_ABORTED);
  EXPECT_THAT(cut.message, testing::StartsWith("printer: "));
  EXPECT_EQ(printer.connections(), 1);
  const std::size_t before = printer.received().size();
  EXPECT_EQ(app.print(smallPage(), kPwg).state, IPP_JSTATE_COMPLETED);
  const Bytes all = printer.received();
  EXPECT_THAT(Bytes(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
              testing::ContainerEq(bytesOf(smallPage())));
}

}  // namespace
}  // namespace wren_test
