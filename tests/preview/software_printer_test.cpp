// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/software_printer.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/escpos/printer_streams.h"

namespace wren::preview {
namespace {

using namespace std::chrono_literals;
using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::repeat;
using streams::operator+;

// At 254 dpi a feed of 200 units is 10 mm.
constexpr unsigned kDpi = 254;

// A line of one dot, fed by 10 mm: 9 bytes.
Bytes line(std::uint8_t column = 0x80) {
  return bitImage(1, {column}) + feed(200);
}

// A printer with a clock that the test moves, and what it did to the world.
class Bench : public PrinterOutput {
 public:
  Bench() : printer_(*this, kDpi, now_) {}

  void print(JobId job, escpos::CommandKind, std::span<const std::uint8_t> bytes) override {
    auto& printed = printed_[job];
    printed.insert(printed.end(), bytes.begin(), bytes.end());
  }
  void answer(JobId, std::uint8_t byte) override { answers_.push_back(byte); }
  void endJob(JobId job, const std::string& ending) override {
    ended_ += std::to_string(job) + (ending.empty() ? "" : ": " + ending) + "; ";
  }
  void resetConnection(JobId job) override { ended_ += "reset " + std::to_string(job) + "; "; }

  void tell(const std::string& text) {
    const ParsedControl parsed = parseControl(text);
    ASSERT_TRUE(parsed.control.has_value()) << parsed.error;
    EXPECT_EQ(printer_.control(*parsed.control, now_), "");
  }

  // Sends what the printer takes; the rest waits at the host.
  void send(const Bytes& bytes) {
    waiting_ = waiting_ + bytes;
    push();
  }

  void push() {
    for (;;) {
      const std::size_t count = std::min(printer_.room(now_), waiting_.size());
      if (count == 0) return;
      printer_.take(std::span(waiting_).first(count), now_);
      waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(count));
    }
  }

  void pass(std::chrono::milliseconds time) {
    now_ += time;
    printer_.advance(now_);
    push();
  }

  // A job that is sent whole.
  void sendJob(JobId job, const Bytes& bytes) {
    printer_.beginJob(job);
    send(bytes);
    printer_.endInput("", now_);
  }

  SoftwarePrinter& printer() { return printer_; }
  SoftwarePrinter::Time now() const { return now_; }
  const Bytes& printed(JobId job) { return printed_[job]; }
  std::size_t waiting() const { return waiting_.size(); }
  Bytes takeAnswers() { return std::exchange(answers_, {}); }
  std::string takeEnded() { return std::exchange(ended_, {}); }

 private:
  SoftwarePrinter::Time now_{1h};
  std::map<JobId, Bytes> printed_;
  Bytes answers_;
  std::string ended_;
  Bytes waiting_;
  SoftwarePrinter printer_;
};

class SoftwarePrinterTest : public testing::Test, protected Bench {};

TEST_F(SoftwarePrinterTest, PrintsWhatItReceives) {
  const Bytes job = streams::job(hex("1B3C") + line() + hex("41 42") + line() + hex("1D5600"));
  sendJob(1, job);
  EXPECT_EQ(printed(1), job);
  EXPECT_EQ(takeEnded(), "1; ");
  EXPECT_EQ(printer().bufferedBytes(), 0u);
}

TEST_F(SoftwarePrinterTest, KeepsATruncatedCommandAndALineWithoutItsFeed) {
  const Bytes job = bitImage(1, hex("80")) + hex("1B2A 01");
  sendJob(1, job);
  EXPECT_EQ(printed(1), job);
}

TEST_F(SoftwarePrinterTest, AnswersARequestOfStatusWhenItIsReceived) {
  printer().beginJob(1);
  send(line() + hex("100401 1B"));
  EXPECT_EQ(takeAnswers(), hex("12"));
  tell("paper out");
  send(hex("4A00") + hex("100401 100402 100403 100404"));
  EXPECT_EQ(takeAnswers(), hex("1A 32 12 7E"));
}

TEST_F(SoftwarePrinterTest, DoesNotPrintARequestOfStatus) {
  sendJob(1, line() + hex("100401") + line());
  EXPECT_EQ(printed(1), line() + line());
}

TEST_F(SoftwarePrinterTest, TakesARequestInsideDataForData) {
  const Bytes image = bitImage(1, hex("100401 10140100 01 100502")) + feed(16);
  printer().beginJob(1);
  tell("cover open");
  send(image);
  EXPECT_EQ(takeAnswers(), Bytes());
  tell("cover closed");
  EXPECT_EQ(printed(1), image);
}

TEST_F(SoftwarePrinterTest, AnswersInTurnWhenAllBeforeIsPrinted) {
  printer().beginJob(1);
  tell("cover open");
  send(line() + hex("1D7201") + line() + hex("1D7202"));
  EXPECT_EQ(takeAnswers(), Bytes());
  tell("drawer high");
  tell("paper near-end");
  tell("cover closed");
  EXPECT_EQ(takeAnswers(), hex("03 01"));
  EXPECT_EQ(printed(1), line() + hex("1D7201") + line() + hex("1D7202"));
}

TEST_F(SoftwarePrinterTest, NeverAnswersIfItIsTold) {
  printer().beginJob(1);
  tell("answers off");
  send(hex("100401 1D7201"));
  EXPECT_EQ(takeAnswers(), Bytes());
  tell("answers on");
  send(hex("100401 1D7201"));
  EXPECT_EQ(takeAnswers(), hex("12 00"));
}

TEST_F(SoftwarePrinterTest, GivesARealTimePulseOffLine) {
  printer().beginJob(1);
  tell("paper out");
  send(line() + hex("1014010102"));
  EXPECT_EQ(printed(1), hex("1014010102"));
}

// Every state that stops a printer, and what ends it.
class OffLine : public testing::TestWithParam<std::pair<const char*, const char*>>,
                protected Bench {};

TEST_P(OffLine, KeepsTheBufferAndGoesOnWithoutALossOrADouble) {
  printer().beginJob(1);
  send(line(0x01));
  tell(GetParam().first);
  EXPECT_FALSE(printer().isReady());
  send(line(0x02) + line(0x03) + hex("1D5600"));
  EXPECT_EQ(printed(1), line(0x01));
  printer().endInput("", now());
  EXPECT_EQ(takeEnded(), "");
  tell(GetParam().second);
  EXPECT_TRUE(printer().isReady());
  EXPECT_EQ(printed(1), line(0x01) + line(0x02) + line(0x03) + hex("1D5600"));
  EXPECT_EQ(takeEnded(), "1; ");
}

INSTANTIATE_TEST_SUITE_P(Faults, OffLine,
                         testing::Values(std::pair{"paper out", "paper ok"},
                                         std::pair{"paper out", "paper near-end"},
                                         std::pair{"cover open", "cover closed"},
                                         std::pair{"error recoverable", "error none"},
                                         std::pair{"error cutter", "error none"},
                                         std::pair{"error unrecoverable", "error none"},
                                         std::pair{"error temperature", "error none"},
                                         std::pair{"button held", "button released"}));

TEST_F(SoftwarePrinterTest, PrintsNearTheEndOfItsPaper) {
  tell("paper near-end");
  sendJob(1, line());
  EXPECT_EQ(printed(1), line());
}

TEST_F(SoftwarePrinterTest, ReadsUntilItsBufferIsFull) {
  printer().beginJob(1);
  tell("buffer 4");
  tell("paper out");
  send(repeat(5000, 0));
  EXPECT_EQ(printer().bufferedBytes(), 4096u);
  EXPECT_EQ(waiting(), 904u);
  EXPECT_EQ(printer().room(now()), 0u);
  tell("paper ok");
  push();
  EXPECT_EQ(waiting(), 0u);
  EXPECT_EQ(printed(1), repeat(5000, 0));
}

TEST_F(SoftwarePrinterTest, HasABufferOf64KiB) {
  printer().beginJob(1);
  tell("paper out");
  send(repeat(70000, 0));
  EXPECT_EQ(printer().bufferedBytes(), 65536u);
}

TEST_F(SoftwarePrinterTest, TakesACommandThatIsLongerThanItsBuffer) {
  tell("buffer 4");
  const Bytes job = bitImage(1, repeat(20'000, 0x55)) + feed(16);
  sendJob(1, job);
  EXPECT_EQ(printed(1), job);
}

TEST_F(SoftwarePrinterTest, StopsInsideALongCommandWhileItIsOffLine) {
  printer().beginJob(1);
  tell("buffer 4");
  tell("cover open");
  const Bytes job = bitImage(1, repeat(20'000, 0x55)) + feed(16);
  send(job);
  EXPECT_EQ(printer().bufferedBytes(), 4096u);
  tell("cover closed");
  push();
  EXPECT_EQ(printed(1), job);
}

TEST_F(SoftwarePrinterTest, TakesTheNextJobWhileTheFirstWaitsInTheBuffer) {
  tell("paper out");
  sendJob(1, line(0x01));
  sendJob(2, line(0x02));
  sendJob(3, hex("100404"));
  EXPECT_EQ(takeAnswers(), hex("7E"));
  // A connection that leaves nothing in the buffer ends at once.
  EXPECT_EQ(takeEnded(), "3; ");
  tell("paper ok");
  EXPECT_EQ(printed(1), line(0x01));
  EXPECT_EQ(printed(2), line(0x02));
  EXPECT_EQ(takeEnded(), "1; 2; ");
}

// The third line would pass 25 mm.
TEST_F(SoftwarePrinterTest, RunsOutOfPaperAtALength) {
  printer().beginJob(1);
  tell("paper out after 25 mm");
  send(line() + line() + line());
  EXPECT_EQ(printer().printedUnits(), 400u);
  EXPECT_EQ(printer().state().paper, PaperSupply::kOut);
  EXPECT_EQ(printer().bufferedBytes(), 3u) << "the feed; its image is in the line buffer";
  tell("paper ok");
  EXPECT_EQ(printed(1), line() + line() + line());
}

TEST_F(SoftwarePrinterTest, CountsTheLengthFromTheCommand) {
  sendJob(1, line() + line());
  tell("paper out after 20 mm");
  sendJob(2, line() + line());
  EXPECT_EQ(printer().state().paper, PaperSupply::kOk) << "exactly 20 mm";
  sendJob(3, line());
  EXPECT_EQ(printer().state().paper, PaperSupply::kOut);
  EXPECT_EQ(printed(3), Bytes());
}

TEST_F(SoftwarePrinterTest, ObeysAfterBytes) {
  printer().beginJob(1);
  tell("reset after 12 bytes");
  send(line() + line());
  EXPECT_EQ(takeEnded(), "reset 1; 1: cut short: the printer reset the connection; ");
  EXPECT_EQ(printer().receivedBytes(), 12u);
  EXPECT_EQ(printed(1), line() + hex("1B2A01"));
  EXPECT_TRUE(printer().isReachable());
}

TEST_F(SoftwarePrinterTest, CountsTheBytesFromTheCommand) {
  sendJob(1, repeat(100, 0));
  printer().beginJob(2);
  tell("stall after 12 bytes");
  send(line() + line());
  EXPECT_EQ(printer().receivedBytes(), 112u);
  EXPECT_TRUE(printer().isStalled());
  tell("go");
  tell("cover open after 0 bytes");
  EXPECT_TRUE(printer().state().isCoverOpen);
}

TEST_F(SoftwarePrinterTest, ObeysTheFirstOfSeveralTriggers) {
  printer().beginJob(1);
  tell("cover open after 30 bytes");
  tell("stall after 20 bytes");
  EXPECT_EQ(printer().room(now()), 20u);
  send(repeat(40, 0));
  EXPECT_TRUE(printer().isStalled());
  EXPECT_FALSE(printer().state().isCoverOpen);
  tell("go");
  push();
  EXPECT_TRUE(printer().state().isCoverOpen);
  EXPECT_EQ(printer().receivedBytes(), 40u);
}

TEST_F(SoftwarePrinterTest, ObeysAfterTime) {
  tell("cover open after 100 ms");
  EXPECT_EQ(printer().nextEvent(), now() + 100ms);
  pass(99ms);
  EXPECT_FALSE(printer().state().isCoverOpen);
  pass(1ms);
  EXPECT_TRUE(printer().state().isCoverOpen);
  EXPECT_FALSE(printer().nextEvent().has_value());
}

TEST_F(SoftwarePrinterTest, RefusesTooManyWaitingCommands) {
  const Control control = *parseControl("stall after 1 ms").control;
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(printer().control(control, now()), "");
  }
  EXPECT_EQ(printer().control(control, now()), "too many commands wait already");
}

// It need not be woken up while time alone changes nothing.
TEST_F(SoftwarePrinterTest, SleepsUntilSomethingCanHappen) {
  EXPECT_FALSE(printer().nextEvent().has_value());
  tell("baud 1000");
  EXPECT_FALSE(printer().nextEvent().has_value()) << "nobody sends";
  printer().beginJob(1);
  EXPECT_TRUE(printer().nextEvent().has_value());
  tell("stall");
  EXPECT_FALSE(printer().nextEvent().has_value()) << "it does not read";
  tell("go");
  tell("baud 0");
  tell("cover open");
  send(line());
  EXPECT_FALSE(printer().nextEvent().has_value()) << "off-line";
  tell("speed 1");
  tell("cover closed");
  send(line());
  ASSERT_TRUE(printer().nextEvent().has_value());
  EXPECT_GT(*printer().nextEvent(), now());
  tell("go after 70 ms");
  tell("go after 30 ms");
  EXPECT_EQ(*printer().nextEvent(), now() + 30ms);
}

TEST_F(SoftwarePrinterTest, SeesTheDrawerCloseAgain) {
  printer().beginJob(1);
  tell("drawer high");
  send(hex("1D7202 100401"));
  EXPECT_EQ(takeAnswers(), hex("16 01"));
  tell("drawer low");
  send(hex("1D7202 100401"));
  EXPECT_EQ(takeAnswers(), hex("12 00"));
}

// The line is printed by then, although both came in one packet.
TEST_F(SoftwarePrinterTest, AnswersAfterWhatItPrintedMeanwhile) {
  printer().beginJob(1);
  tell("paper out after 5 mm");
  send(line() + repeat(1000, 0) + hex("100404"));
  EXPECT_EQ(takeAnswers(), hex("7E"));
}

// The dots are not fed: the command clears the line, and what follows waits for nothing.
TEST_F(SoftwarePrinterTest, EndsALineWhenItIsInitialised) {
  printer().beginJob(1);
  send(bitImage(1, hex("FF")));
  EXPECT_EQ(printed(1), Bytes());
  send(hex("1B40 1D5600"));
  EXPECT_EQ(printed(1), bitImage(1, hex("FF")) + hex("1B40 1D5600"));
}

// Nobody is connected: nothing happens.
TEST_F(SoftwarePrinterTest, ResetsNothingWithoutAConnection) {
  tell("reset");
  tell("vanish");
  tell("return");
  tell("power off");
  EXPECT_EQ(takeEnded(), "");
  tell("power on");
  sendJob(1, line());
  EXPECT_EQ(printed(1), line());
}

// Power does not bring a pulled cable back, nor the cable the power.
TEST_F(SoftwarePrinterTest, IsReachableWithPowerAndCable) {
  tell("vanish");
  tell("power off");
  tell("power on");
  EXPECT_FALSE(printer().isReachable());
  EXPECT_TRUE(printer().isPowered());
  tell("power off");
  tell("return");
  EXPECT_FALSE(printer().isReachable());
  EXPECT_FALSE(printer().isPowered());
  tell("power on");
  EXPECT_TRUE(printer().isReachable());
}

// A second job is printed after the first, whose line has no feed.
TEST_F(SoftwarePrinterTest, GivesALineWithoutAFeedToItsOwnJob) {
  sendJob(1, bitImage(1, hex("01")));
  sendJob(2, line(0x02));
  EXPECT_EQ(printed(1), bitImage(1, hex("01")));
  EXPECT_EQ(printed(2), line(0x02));
  EXPECT_EQ(takeEnded(), "1; 2; ");
}

TEST_F(SoftwarePrinterTest, LosesItsBufferWithItsPower) {
  tell("cover open");
  sendJob(1, line(0x01));
  printer().beginJob(2);
  send(line(0x02) + hex("1B4A"));
  tell("power off");
  EXPECT_EQ(takeEnded(),
            "reset 1; 1: cut short by a loss of power; "
            "reset 2; 2: cut short by a loss of power; ");
  EXPECT_FALSE(printer().isReachable());
  EXPECT_EQ(printer().bufferedBytes(), 0u);
  tell("cover closed");
  tell("power on");
  EXPECT_TRUE(printer().isReachable());
  sendJob(3, line(0x03));
  EXPECT_EQ(printed(1), Bytes());
  EXPECT_EQ(printed(2), Bytes());
  EXPECT_EQ(printed(3), line(0x03));
}

// Nothing of the job waits: all of it is printed, or nothing was sent.
TEST_F(SoftwarePrinterTest, CutsTheJobShortThatItReceivesWhenItLosesItsPower) {
  for (const Bytes& sent : {Bytes(), line()}) {
    Bench bench;
    bench.printer().beginJob(1);
    bench.send(sent);
    bench.tell("power off");
    EXPECT_EQ(bench.takeEnded(), "reset 1; 1: cut short by a loss of power; ") << sent.size();
    EXPECT_FALSE(bench.printer().receiving().has_value());
  }
}

// The beep has sounded; the dots before it had not been fed.
TEST_F(SoftwarePrinterTest, LeavesNoDotsOfTheLineThatALossOfPowerInterrupts) {
  printer().beginJob(1);
  send(line() + bitImage(1, hex("FF")) + hex("1B420101"));
  tell("power off");
  EXPECT_EQ(printed(1), line() + hex("1B420101"));
}

TEST_F(SoftwarePrinterTest, LosesItsPowerAtALength) {
  printer().beginJob(1);
  tell("power off after 15 mm");
  send(line(0x01) + line(0x02) + line(0x03));
  EXPECT_EQ(printed(1), line(0x01));
  EXPECT_EQ(takeEnded(), "reset 1; 1: cut short by a loss of power; ");
}

TEST_F(SoftwarePrinterTest, KeepsItsBufferWhenItVanishes) {
  tell("paper out");
  printer().beginJob(1);
  send(line());
  tell("vanish");
  EXPECT_FALSE(printer().isReachable());
  EXPECT_EQ(takeEnded(), "reset 1; ");
  tell("paper ok");
  EXPECT_EQ(printed(1), line());
  EXPECT_EQ(takeEnded(), "1: cut short: the printer vanished; ");
  tell("return");
  EXPECT_TRUE(printer().isReachable());
}

TEST_F(SoftwarePrinterTest, StallsAndGoesOn) {
  printer().beginJob(1);
  tell("stall");
  EXPECT_FALSE(printer().isReady());
  send(line());
  EXPECT_EQ(waiting(), 9u);
  tell("go");
  push();
  EXPECT_EQ(printed(1), line());
}

// 9600 baud are 960 bytes a second.
TEST_F(SoftwarePrinterTest, DripsAtTheSpeedOfASerialLine) {
  printer().beginJob(1);
  tell("baud 9600");
  send(repeat(2000, 0));
  std::uint64_t before = printer().receivedBytes();
  EXPECT_LE(before, 20u);
  for (int i = 0; i < 100; ++i) pass(10ms);
  EXPECT_NEAR(static_cast<double>(printer().receivedBytes() - before), 960.0, 10.0);
  tell("baud 0");
  push();
  EXPECT_EQ(waiting(), 0u);
}

TEST_F(SoftwarePrinterTest, SaysWhenTheSerialLineHasBroughtMore) {
  printer().beginJob(1);
  tell("baud 1000");
  send(repeat(10, 0));
  ASSERT_EQ(printer().room(now()), 0u);
  const auto next = printer().nextEvent();
  ASSERT_TRUE(next.has_value());
  EXPECT_EQ(printer().room(*next - 1ms), 0u);
  EXPECT_GT(printer().room(*next + 1us), 0u);
}

// The allowance of a pause is not spent at once.
TEST_F(SoftwarePrinterTest, DripsAfterAPauseToo) {
  printer().beginJob(1);
  tell("baud 9600");
  pass(60s);
  send(repeat(2000, 0));
  EXPECT_LE(printer().receivedBytes(), 20u);
}

// 100 mm a second: 100 ms for a line of 10 mm.
TEST_F(SoftwarePrinterTest, PrintsAtItsSpeed) {
  tell("speed 100");
  sendJob(1, line() + line() + line() + hex("1D7201"));
  // A late start of up to 50 ms is made up for, so that the first line takes at least 50 ms.
  EXPECT_EQ(printed(1), line());
  EXPECT_EQ(takeAnswers(), Bytes());
  for (int i = 0; i < 10; ++i) {
    const auto next = printer().nextEvent();
    if (!next) break;
    pass(std::chrono::ceil<std::chrono::milliseconds>(*next - now()));
  }
  EXPECT_EQ(printed(1), line() + line() + line() + hex("1D7201"));
  EXPECT_EQ(takeAnswers(), hex("00"));
  EXPECT_NEAR(std::chrono::duration<double>(now().time_since_epoch() - 1h).count(), 0.275, 0.026);
}

TEST_F(SoftwarePrinterTest, TakesANewSpeedAtOnce) {
  printer().beginJob(1);
  tell("speed 1");
  send(line(0x01) + line(0x02));
  EXPECT_EQ(printed(1), line(0x01));
  tell("speed 0");
  EXPECT_EQ(printed(1), line(0x01) + line(0x02));
}

// More dots than any line has would fill the memory while they wait for their feed.
TEST_F(SoftwarePrinterTest, PrintsDotsThatNeverGetAFeed) {
  constexpr std::size_t kMostWaiting = std::size_t{256} << 10;
  printer().beginJob(1);
  const Bytes dots = bitImage(1, repeat(1000, 0xFF));
  std::size_t sent = 0;
  for (; sent <= kMostWaiting; sent += dots.size()) {
    EXPECT_EQ(printed(1).size(), 0u) << sent;
    send(dots);
  }
  EXPECT_EQ(printed(1).size(), sent);
}

TEST_F(SoftwarePrinterTest, FillsItsBufferWhileItPrintsSlowly) {
  printer().beginJob(1);
  tell("buffer 4");
  tell("speed 10");
  send(line() + repeat(10'000, 0));
  EXPECT_EQ(printed(1), line());
  EXPECT_EQ(printer().bufferedBytes(), 4096u);
}

TEST_F(SoftwarePrinterTest, RecoversFromAnErrorByARealTimeRequest) {
  for (const char* error : {"error recoverable", "error cutter"}) {
    Bench bench;
    bench.printer().beginJob(1);
    bench.tell(error);
    bench.send(line() + hex("100501"));
    EXPECT_EQ(bench.printed(1), hex("100501") + line()) << error;
  }
}

TEST_F(SoftwarePrinterTest, ClearsItsBufferByARecovery) {
  tell("error cutter");
  sendJob(1, line(0x01));
  printer().beginJob(2);
  send(line(0x02) + hex("100502") + line(0x03));
  printer().endInput("", now());
  EXPECT_EQ(printed(1), Bytes());
  EXPECT_EQ(printed(2), hex("100502") + line(0x03));
  EXPECT_EQ(printer().bufferedBytes(), 0u);
  EXPECT_EQ(takeEnded(), "1; 2; ");
}

TEST_F(SoftwarePrinterTest, IgnoresARecoveryWithoutAnErrorThatItCouldEnd) {
  for (const char* state :
       {"paper out", "error unrecoverable", "error temperature", "error none"}) {
    Bench bench;
    bench.printer().beginJob(1);
    bench.tell(state);
    bench.send(line() + hex("100502"));
    bench.tell("paper ok");
    bench.tell("error none");
    EXPECT_EQ(bench.printed(1), line()) << state;
  }
}

TEST_F(SoftwarePrinterTest, IsAbandonedWithWhatItReceived) {
  printer().beginJob(1);
  send(line() + bitImage(1, hex("80")) + hex("1B4A"));
  printer().abandon("the end");
  EXPECT_EQ(printed(1), line() + bitImage(1, hex("80")) + hex("1B4A"));
  EXPECT_EQ(takeEnded(), "1: the end; ");
}

TEST_F(SoftwarePrinterTest, LosesItsBufferWhenItIsAbandonedOffLine) {
  tell("cover open");
  sendJob(1, line());
  printer().beginJob(2);
  send(line() + hex("1B4A"));
  printer().abandon("the end");
  EXPECT_EQ(printed(1), Bytes());
  EXPECT_EQ(printed(2), Bytes());
  EXPECT_EQ(takeEnded(), "1: the end; 2: the end; ");
}

}  // namespace
}  // namespace wren::preview
