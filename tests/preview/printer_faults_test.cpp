// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs into the software printer over its socket, with each fault: what comes out on
// paper is what was sent, nothing lost and nothing doubled but where a loss is the fault.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "preview/loopback_socket.h"
#include "preview/tell_run.h"
#include "tests/escpos/printer_streams.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/recorded_calls.h"
#include "tests/preview/running_printer.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::repeat;
using streams::operator+;

// Lines that differ, so that a lost or doubled one shows. At 203 dpi a line is 1 mm and a little.
Bytes linesOf(unsigned first, unsigned count) {
  Bytes bytes;
  for (unsigned i = first; i < first + count; ++i) {
    const Bytes columns = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8), 0xA5};
    bytes = bytes + bitImage(1, columns) + feed(16);
  }
  return bytes;
}

// Hides what the printer says, unless the test fails.
class QuietTest : public testing::Test {
 protected:
  QuietTest() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
  }
  ~QuietTest() override {
    const std::string text =
        testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
    if (HasFailure()) std::fputs(text.c_str(), stdout);
  }

  // The messages since the start of the test or the last call.
  static std::string saidSoFar() {
    std::string text = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    return text;
  }
};

using PrinterFaults = QuietTest;

TEST_F(PrinterFaults, StatusIsAnsweredOverTheConnection) {
  RunningPrinter printer;
  LoopbackClient client(printer.address());
  client.send(hex("100401 100402 100403 100404 1D7201 1D7202"));
  EXPECT_EQ(client.read(6), hex("12 12 12 12 00 00"));
  EXPECT_EQ(printer.tell("paper out"), "ok");
  client.send(linesOf(0, 2) + hex("100401 100402 100404"));
  EXPECT_EQ(client.read(3), hex("1A 32 7E"));
}

TEST_F(PrinterFaults, AConnectionThatOnlyAsksLeavesNoFiles) {
  RunningPrinter printer;
  LoopbackClient asking(printer.address());
  asking.send(hex("1D7201 100401"));
  EXPECT_EQ(asking.read(2), hex("12 00")) << "real-time requests overtake";
  asking.endAndWait();
  EXPECT_EQ(saidSoFar(), "");
  LoopbackClient printing(printer.address());
  printing.send(hex("1D7201") + linesOf(0, 1));
  printing.endAndWait();
  EXPECT_EQ(printer.printed(1), hex("1D7201") + linesOf(0, 1));
  EXPECT_FALSE(std::filesystem::exists(printer.fileOf(2, ".prn")));
}

TEST_F(PrinterFaults, StatusIsAnsweredToTheNextConnectionWhileAJobWaits) {
  RunningPrinter printer({"paper out"});
  LoopbackClient job(printer.address());
  job.send(linesOf(0, 3));
  job.endInput();
  LoopbackClient asking(printer.address());
  asking.send(hex("100404"));
  EXPECT_EQ(asking.read(1), hex("7E"));
  EXPECT_EQ(printer.tell("paper ok"), "ok");
  ASSERT_TRUE(printer.waitForJobs(1));
  EXPECT_EQ(printer.printed(1), linesOf(0, 3));
}

TEST_F(PrinterFaults, NotMoreJobsWaitThanAreAllowed) {
  constexpr unsigned kMost = 64;
  constexpr unsigned kJobs = kMost + 6;
  RunningPrinter printer({"cover open"});
  std::vector<std::unique_ptr<LoopbackClient>> clients;
  for (unsigned i = 0; i < kJobs; ++i) {
    clients.push_back(std::make_unique<LoopbackClient>(printer.address()));
    clients.back()->send(linesOf(i, 1));
    clients.back()->endInput();
  }
  const auto waiting = [](unsigned jobs) { return "\"unfinishedJobs\":" + std::to_string(jobs); };
  EXPECT_TRUE(printer.waitFor(waiting(kMost)));
  EXPECT_FALSE(printer.waitFor(waiting(kMost + 1), 0.5));
  EXPECT_EQ(printer.tell("cover closed"), "ok");
  ASSERT_TRUE(printer.waitForJobs(kJobs));
  for (unsigned i = 0; i < kJobs; ++i) EXPECT_EQ(printer.printed(i + 1), linesOf(i, 1));
}

struct WaitingFault {
  const char* fault;
  const char* cure;
  const char* sign;  // in the answer to "status"
};

class PrinterGoesOn : public QuietTest, public testing::WithParamInterface<WaitingFault> {};

// 3000 lines are 33 kB. The buffer of 4 KiB fills, the sender waits, and all comes out once.
TEST_P(PrinterGoesOn, WithoutALossOrADouble) {
  RunningPrinter printer({"buffer 4", std::string(GetParam().fault) + " after 100 mm"});
  const Bytes job = linesOf(0, 3000);
  std::thread sender([&] {
    LoopbackClient client(printer.address());
    client.limitSendBuffer(4096);
    client.send(job);
    client.endAndWait();
  });
  EXPECT_TRUE(printer.waitFor(GetParam().sign));
  EXPECT_EQ(printer.tell(GetParam().cure), "ok");
  EXPECT_TRUE(printer.waitForJobs(1));
  sender.join();
  EXPECT_EQ(printer.printed(1), job);
  EXPECT_EQ(readPng(printer.fileOf(1, ".png")).height, 24'000u);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, PrinterGoesOn,
    testing::Values(WaitingFault{"paper out", "paper ok", "\"paper\":\"out\""},
                    WaitingFault{"cover open", "cover closed", "\"cover\":\"open\""},
                    WaitingFault{"error cutter", "error none", "\"error\":\"cutter\""},
                    WaitingFault{"button held", "button released", "\"button\":\"held\""},
                    WaitingFault{"stall", "go", "\"stalled\":true"}));

TEST_F(PrinterFaults, WhatIsPrintedCanBeReadWhileTheJobWaits) {
  RunningPrinter printer({"paper out after 5 mm"});
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 10));
  EXPECT_TRUE(printer.waitFor("\"paper\":\"out\""));
  EXPECT_TRUE(printer.waitFor("\"printedMm\":4.0"));
  EXPECT_EQ(printer.printed(1), linesOf(0, 4));
}

TEST_F(PrinterFaults, AFullBufferBlocksTheSender) {
  RunningPrinter printer({"buffer 4", "cover open"});
  LoopbackClient client(printer.address());
  client.limitSendBuffer(4096);
  const Bytes job = repeat(1'000'000, 0);
  const std::size_t sent = client.sendFor(job, 0.5);
  EXPECT_GE(sent, 4096u);
  EXPECT_LT(sent, 100'000u) << "the buffer, and what the network holds";
  EXPECT_TRUE(printer.waitFor("\"bufferedBytes\":4096"));
  EXPECT_EQ(printer.tell("cover closed"), "ok");
  EXPECT_TRUE(client.send({job.begin() + static_cast<std::ptrdiff_t>(sent), job.end()}));
  client.endAndWait();
  EXPECT_EQ(printer.printed(1).size(), job.size());
}

TEST_F(PrinterFaults, ALossOfPowerLeavesThePrintedPart) {
  RunningPrinter printer({"power off after 50 mm"});
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 200));
  EXPECT_TRUE(client.isReset());
  ASSERT_TRUE(printer.waitForJobs(1));
  // 49 lines of 16 units are 49.0 mm, 50 are 50.05 mm.
  EXPECT_EQ(printer.printed(1), linesOf(0, 49));
  EXPECT_EQ(readPng(printer.fileOf(1, ".png")).height, 49u * 8);
  EXPECT_FALSE(LoopbackClient(printer.address()).connected());
  EXPECT_EQ(printer.tell("power on"), "ok");
  LoopbackClient again(printer.address());
  EXPECT_TRUE(again.connected());
  again.send(linesOf(500, 3));
  again.endAndWait();
  EXPECT_EQ(printer.printed(2), linesOf(500, 3)) << "nothing of the lost buffer";
}

TEST_F(PrinterFaults, APrinterVanishesAndReturnsOnItsPort) {
  RunningPrinter printer;
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 3));
  EXPECT_TRUE(printer.waitFor("\"receivedBytes\":33"));
  EXPECT_EQ(printer.tell("vanish"), "ok");
  EXPECT_TRUE(client.isReset());
  EXPECT_FALSE(LoopbackClient(printer.address()).connected());
  EXPECT_EQ(printer.tell("return"), "ok");
  LoopbackClient again(printer.address());
  EXPECT_TRUE(again.connected());
  EXPECT_THAT(saidSoFar(), testing::Not(testing::HasSubstr(printer.address())));
  again.send(linesOf(3, 3));
  again.endAndWait();
  ASSERT_TRUE(printer.waitForJobs(2));
  EXPECT_EQ(printer.printed(1), linesOf(0, 3));
  EXPECT_EQ(printer.printed(2), linesOf(3, 3));
}

TEST_F(PrinterFaults, AResetEndsTheConnectionAlone) {
  RunningPrinter printer({"reset after 22 bytes"});
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 100));
  EXPECT_TRUE(client.isReset());
  ASSERT_TRUE(printer.waitForJobs(1));
  EXPECT_EQ(printer.printed(1), linesOf(0, 2));
  EXPECT_TRUE(LoopbackClient(printer.address()).connected());
}

// 500 bytes at 9600 baud take 0.52 s.
TEST_F(PrinterFaults, ASerialLineIsSlow) {
  RunningPrinter printer({"baud 9600"});
  const auto start = std::chrono::steady_clock::now();
  LoopbackClient client(printer.address());
  client.send(repeat(500, 0));
  client.endAndWait();
  EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(450));
  EXPECT_EQ(printer.printed(1), repeat(500, 0));
}

TEST_F(PrinterFaults, AConnectionIsAcceptedLate) {
  RunningPrinter printer({"accept-delay 300"});
  const auto start = std::chrono::steady_clock::now();
  LoopbackClient client(printer.address());
  client.send(hex("100401"));
  // A command wakes the printer up, but does not end the delay.
  for (int i = 0; i < 5; ++i) EXPECT_EQ(printer.tell("cover closed"), "ok");
  EXPECT_EQ(client.read(1), hex("12"));
  EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(290));
}

TEST_F(PrinterFaults, APrinterNeverAnswers) {
  RunningPrinter printer({"answers off"});
  LoopbackClient client(printer.address());
  client.send(hex("100401 1D7201") + linesOf(0, 2));
  EXPECT_EQ(client.read(1, 0.3), Bytes());
  client.endAndWait();
  EXPECT_EQ(printer.printed(1), hex("1D7201") + linesOf(0, 2));
}

// The time that the printer makes a job wait is not the job's.
TEST_F(PrinterFaults, AnOffLinePrinterSuspendsTheLimitOfTime) {
  Options options;
  options.maxSeconds = 1;
  RunningPrinter printer({"paper out"}, options);
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 2));
  std::this_thread::sleep_for(std::chrono::milliseconds(1400));
  EXPECT_EQ(printer.tell("paper ok"), "ok");
  EXPECT_TRUE(client.send(linesOf(2, 2)));
  client.endAndWait();
  EXPECT_EQ(printer.printed(1), linesOf(0, 4));
}

TEST_F(PrinterFaults, AHostMayGoWhileItsJobWaits) {
  RunningPrinter printer({"cover open"});
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 4));
  EXPECT_TRUE(printer.waitFor("\"bufferedBytes\":44"));
  client.abort();
  EXPECT_EQ(printer.tell("cover closed"), "ok");
  ASSERT_TRUE(printer.waitForJobs(1));
  EXPECT_EQ(printer.printed(1), linesOf(0, 4));
}

TEST_F(PrinterFaults, AResetOfTheHostIsNoticedByAStalledPrinter) {
  RunningPrinter printer({"stall"});
  LoopbackClient client(printer.address());
  EXPECT_TRUE(printer.waitFor("\"receiving\":true"));
  client.send(linesOf(0, 1));
  client.abort();
  EXPECT_TRUE(printer.waitFor("\"receiving\":false"));
  EXPECT_EQ(saidSoFar(),
            "wren-preview: a connection without a job: cut short: Connection reset by peer\n");
}

TEST_F(PrinterFaults, TheStatusIsAJsonDocument) {
  RunningPrinter printer({"drawer high", "error temperature"});
  EXPECT_EQ(nlohmann::json::parse(printer.tell("status")), nlohmann::json::parse(R"json({
    "online": false, "paper": "ok", "cover": "closed", "error": "temperature",
    "button": "released", "drawer": "high", "powered": true, "reachable": true,
    "stalled": false, "receiving": false, "receivedBytes": 0, "bufferedBytes": 0,
    "printedMm": 0.0, "unfinishedJobs": 0, "storedJobs": 0
  })json"));
  EXPECT_EQ(printer.tell("status \r"), printer.tell("status"));
}

TEST_F(PrinterFaults, TheLengthOfThePaperIsInTheStatus) {
  RunningPrinter printer;
  LoopbackClient client(printer.address());
  client.send(feed(200) + feed(200));  // 200 rows at 203 dpi are 25.02 mm
  client.endAndWait();
  EXPECT_NE(printer.tell("status").find("\"printedMm\":25.0,"), std::string::npos);
  LoopbackClient next(printer.address());
  next.send(feed(6));  // and 203 rows 25.4 mm
  next.endAndWait();
  EXPECT_NE(printer.tell("status").find("\"printedMm\":25.4,"), std::string::npos);
  LoopbackClient last(printer.address());
  last.send(feed(4));  // and 205 rows 25.65 mm
  last.endAndWait();
  EXPECT_THAT(printer.tell("status"), testing::HasSubstr("\"printedMm\":25.7,"));
}

// The words of docs/PREVIEW.md.
TEST_F(PrinterFaults, TheStatusNamesEveryState) {
  RunningPrinter printer;
  const std::pair<const char*, const char*> cases[] = {
      {"paper near-end", R"("online":true,"paper":"near-end","cover":"closed",)"},
      {"paper out", R"("online":false,"paper":"out","cover":"closed",)"},
      {"paper ok", R"("online":true,"paper":"ok","cover":"closed",)"},
      {"cover open", R"("paper":"ok","cover":"open","error":"none",)"},
      {"cover closed", R"("paper":"ok","cover":"closed","error":"none",)"},
      {"error recoverable", R"("error":"recoverable",)"},
      {"error cutter", R"("error":"cutter",)"},
      {"error unrecoverable", R"("error":"unrecoverable",)"},
      {"error temperature", R"("error":"temperature",)"},
      {"error none", R"("online":true,"paper":"ok","cover":"closed","error":"none",)"},
      {"button held", R"("button":"held","drawer":"low",)"},
      {"button released", R"("button":"released","drawer":"low",)"},
      {"drawer high", R"("button":"released","drawer":"high",)"},
      {"drawer low", R"("button":"released","drawer":"low",)"},
      {"stall", R"("online":true,"paper":"ok",)"},
      {"stall", R"("powered":true,"reachable":true,"stalled":true,)"},
      {"go", R"("powered":true,"reachable":true,"stalled":false,)"},
      {"vanish", R"("powered":true,"reachable":false,"stalled":false,)"},
      {"return", R"("powered":true,"reachable":true,"stalled":false,)"},
      {"power off", R"("powered":false,"reachable":false,"stalled":false,)"},
      {"power on", R"("powered":true,"reachable":true,"stalled":false,)"},
  };
  for (const auto& [command, part] : cases) {
    EXPECT_EQ(printer.tell(command), "ok");
    EXPECT_THAT(printer.tell("status"), testing::HasSubstr(part)) << command;
  }
}

// 30 mm at 100 mm/s; a late start of up to 50 ms is made up for. The host has sent all, so that
// nothing wakes the printer but its own clock.
TEST_F(PrinterFaults, APrinterPrintsAtItsSpeed) {
  RunningPrinter printer({"speed 100"});
  const Bytes job = feed(240) + feed(240) + hex("1D7201");  // 240 rows are 30.03 mm
  const auto start = std::chrono::steady_clock::now();
  LoopbackClient client(printer.address());
  client.send(job);
  client.endInput();
  EXPECT_EQ(client.read(1), hex("00"));
  EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  client.endAndWait();
  EXPECT_EQ(printer.printed(1), job);
}

TEST_F(PrinterFaults, ACommandWaitsForItsTime) {
  const auto start = std::chrono::steady_clock::now();
  RunningPrinter printer({"cover open", "cover closed after 150 ms"});
  LoopbackClient client(printer.address());
  client.send(linesOf(0, 1) + hex("1D7201"));
  client.endInput();
  EXPECT_EQ(client.read(1), hex("00"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(150));
}

// A printer that can do nothing sleeps: its loop comes round a few times at most, not thousands.
TEST_F(PrinterFaults, APrinterThatWaitsLeavesTheProcessorAlone) {
  const auto loopsOf = [](const RunningPrinter&) {
    forgetCalls();
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    return recordedPolls();
  };
  constexpr long kFew = 10;
  {
    RunningPrinter printer;
    EXPECT_EQ(printer.tell("go"), "ok");
    EXPECT_LE(loopsOf(printer), kFew) << "nobody is connected";
    LoopbackClient client(printer.address());
    EXPECT_TRUE(printer.waitFor("\"receiving\":true"));
    EXPECT_LE(loopsOf(printer), kFew) << "nobody sends";
    EXPECT_EQ(printer.tell("stall"), "ok");
    client.send(linesOf(0, 3));
    EXPECT_LE(loopsOf(printer), kFew) << "stalled";
  }
  {
    RunningPrinter printer({"cover open", "buffer 4"});
    LoopbackClient first(printer.address());
    first.send(linesOf(0, 3));
    first.endInput();
    EXPECT_TRUE(printer.waitFor("\"bufferedBytes\":33"));
    EXPECT_LE(loopsOf(printer), kFew) << "a job waits in the buffer";
    LoopbackClient second(printer.address());
    second.send(repeat(10'000, 0));
    EXPECT_TRUE(printer.waitFor("\"bufferedBytes\":4096"));
    EXPECT_LE(loopsOf(printer), kFew) << "the buffer is full";
    EXPECT_EQ(printer.tell("vanish"), "ok");
    EXPECT_LE(loopsOf(printer), kFew) << "not reachable";
  }
  {
    RunningPrinter printer({"accept-delay 10000"});
    const LoopbackClient client(printer.address());
    for (int i = 0; i < 3; ++i) EXPECT_EQ(printer.tell("go"), "ok");
    EXPECT_LE(loopsOf(printer), kFew) << "a connection is accepted later";
  }
  {
    RunningPrinter printer({"speed 1"});
    LoopbackClient client(printer.address());
    client.send(linesOf(0, 10));
    EXPECT_TRUE(printer.waitFor("\"receivedBytes\":110"));
    EXPECT_LE(loopsOf(printer), kFew) << "a line takes a second";
  }
  {
    RunningPrinter printer;
    std::vector<std::unique_ptr<LoopbackClient>> sessions;
    for (int i = 0; i < 12; ++i) {
      sessions.push_back(std::make_unique<LoopbackClient>(printer.controlAddress()));
    }
    for (int i = 0; i < 20; ++i) EXPECT_EQ(printer.tell("go"), "ok");
    EXPECT_LE(loopsOf(printer), kFew) << "sessions wait";
  }
}

// A cable that was pulled during the delay does not use it up.
TEST_F(PrinterFaults, TheDelayBeginsAgainWhenThePrinterReturns) {
  RunningPrinter printer({"accept-delay 150"});
  const LoopbackClient first(printer.address());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(printer.tell("go"), "ok");
  EXPECT_EQ(printer.tell("vanish"), "ok");
  std::this_thread::sleep_for(std::chrono::milliseconds(160));
  EXPECT_EQ(printer.tell("return"), "ok");
  const auto start = std::chrono::steady_clock::now();
  LoopbackClient second(printer.address());
  second.send(hex("100401"));
  EXPECT_EQ(second.read(1), hex("12"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(140));
}

TEST_F(PrinterFaults, AWrongCommandIsRefused) {
  RunningPrinter printer;
  EXPECT_EQ(printer.tell("paper blue"), "error: 'paper blue' is no command");
  EXPECT_EQ(printer.tell("paper ok"), "ok");
}

TEST_F(PrinterFaults, AControlSessionWithoutNewlinesIsEnded) {
  RunningPrinter printer;
  Options options;
  LoopbackClient session(printer.controlAddress());
  session.send(repeat(1000, 'x'));
  session.waitForClose();
  EXPECT_EQ(printer.tell("paper ok"), "ok");
}

// A line has at most 256 bytes before its newline.
TEST_F(PrinterFaults, ALongLineOfASessionIsReadToItsLimit) {
  RunningPrinter printer;
  LoopbackClient session(printer.controlAddress());
  session.send(repeat(200, 'x'));
  EXPECT_EQ(printer.tell("go"), "ok");
  session.send(repeat(56, 'x') + Bytes{'\n'});
  EXPECT_EQ(session.readLine(), "error: '" + std::string(256, 'x') + "' is no command");
  session.send(repeat(257, 'x'));
  EXPECT_EQ(session.read(1), Bytes());
}

// One is the test's own, so that seven are served; the eighth waits until one of them ends.
TEST_F(PrinterFaults, EightControlSessionsAreServedAtATime) {
  RunningPrinter printer;
  EXPECT_EQ(printer.tell("go"), "ok");
  std::vector<std::unique_ptr<LoopbackClient>> sessions;
  for (int i = 0; i < 8; ++i) {
    sessions.push_back(std::make_unique<LoopbackClient>(printer.controlAddress()));
    sessions.back()->send({'g', 'o', '\n'});
    if (i == 7) break;
    EXPECT_EQ(sessions.back()->readLine(), "ok") << i;
  }
  EXPECT_EQ(sessions.back()->read(1, 0.2), Bytes());
  sessions.front().reset();
  EXPECT_EQ(sessions.back()->readLine(), "ok");
}

TEST_F(PrinterFaults, ASessionEndsWhenItsHostResetsIt) {
  RunningPrinter printer;
  for (int i = 0; i < 20; ++i) {
    LoopbackClient session(printer.controlAddress());
    session.send({'g', 'o', '\n'});
    EXPECT_EQ(session.readLine(), "ok") << i;
    session.abort();
  }
}

// About 350 bytes for seven: more than all windows on the way hold.
TEST_F(PrinterFaults, ASessionEndsIfItsAnswersAreNotRead) {
  RunningPrinter printer;
  LoopbackClient session(printer.controlAddress());
  Bytes requests;
  for (int i = 0; i < 1000; ++i)
    requests = std::move(requests) + Bytes{'s', 't', 'a', 't', 'u', 's', '\n'};
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  bool isOpen = true;
  while (isOpen && std::chrono::steady_clock::now() < end) isOpen = session.send(requests);
  EXPECT_FALSE(isOpen);
  EXPECT_EQ(printer.tell("go"), "ok");
}

TEST_F(PrinterFaults, TheLastLineOfASessionNeedsNoNewline) {
  RunningPrinter printer;
  LoopbackClient session(printer.controlAddress());
  session.send({'s', 't', 'a', 'l', 'l'});
  session.endInput();
  EXPECT_EQ(session.readLine(), "ok");
  EXPECT_NE(printer.tell("status").find("\"stalled\":true"), std::string::npos);
}

TEST_F(PrinterFaults, ManyControlSessionsAreServed) {
  RunningPrinter printer;
  std::vector<std::unique_ptr<LoopbackClient>> sessions;
  for (int i = 0; i < 20; ++i) {
    sessions.push_back(std::make_unique<LoopbackClient>(printer.controlAddress()));
    sessions.back()->send({'g', 'o', '\n'});
  }
  for (auto& session : sessions) {
    EXPECT_EQ(session->readLine(), "ok");
    session.reset();
  }
}

struct TellCase {
  const char* command;
  int status;
  const char* out;
  const char* err;
};

class Tell : public testing::TestWithParam<TellCase> {};

TEST_P(Tell, PrintsTheAnswer) {
  RunningPrinter printer;
  Options options;
  options.tellAddress = printer.controlAddress();
  options.tellCommand = GetParam().command;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(runTell(options), GetParam().status);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), GetParam().out);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), GetParam().err);
}

INSTANTIATE_TEST_SUITE_P(Commands, Tell,
                         testing::Values(TellCase{"paper out", 0, "ok\n", ""},
                                         TellCase{"paper", 1, "",
                                                  "wren-preview: 'paper' is no command\n"}));

// A printer that is busy with something else answers a moment later.
TEST(TellWithoutAPrinter, WaitsForTheAnswer) {
  const LoopbackSocket port = openLoopbackSocket({"127.0.0.1", "0"});
  std::string received;
  std::thread printer([&] {
    pollfd waited = {port.socket.get(), POLLIN, 0};
    ::poll(&waited, 1, 20'000);
    const FileDescriptor session(::accept(port.socket.get(), nullptr, nullptr));
    char byte = 0;
    while (::recv(session.get(), &byte, 1, 0) == 1 && byte != '\n') received += byte;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    for (const char* part : {"o", "k\n"}) ::send(session.get(), part, std::strlen(part), 0);
  });
  Options options;
  options.tellAddress = port.name;
  options.tellCommand = "paper out";
  testing::internal::CaptureStdout();
  EXPECT_EQ(runTell(options), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "ok\n");
  printer.join();
  EXPECT_EQ(received, "paper out");
}

TEST(TellWithoutAPrinter, FailsInOneLine) {
  std::string address;
  {
    RunningPrinter printer;
    address = printer.controlAddress();
  }
  Options options;
  options.tellAddress = address;
  options.tellCommand = "status";
  testing::internal::CaptureStderr();
  EXPECT_EQ(runTell(options), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "wren-preview: " + address + ": Connection refused\n");
}

// What the other side says after the command: "PART" and the end of the connection.
class TellAnswer : public testing::TestWithParam<const char*> {};

TEST_P(TellAnswer, IsAWholeLine) {
  const LoopbackSocket port = openLoopbackSocket({"127.0.0.1", "0"});
  std::thread printer([&] {
    pollfd waited = {port.socket.get(), POLLIN, 0};
    ::poll(&waited, 1, 20'000);
    const FileDescriptor session(::accept(port.socket.get(), nullptr, nullptr));
    char byte = 0;
    while (::recv(session.get(), &byte, 1, 0) == 1 && byte != '\n') {
    }
    ::send(session.get(), GetParam(), std::strlen(GetParam()), 0);
  });
  Options options;
  options.tellAddress = port.name;
  options.tellCommand = "paper out";
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(runTell(options), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "wren-preview: " + port.name + ": no answer\n");
  printer.join();
}

INSTANTIATE_TEST_SUITE_P(Parts, TellAnswer, testing::Values("", "ok", "\n"));

// Ten seconds: long for a printer that is busy, short for somebody who waits.
TEST(TellWithAPrinter, HasPatience) {
  const RunningPrinter printer;
  Options options;
  options.tellAddress = printer.controlAddress();
  options.tellCommand = "go";
  testing::internal::CaptureStdout();
  forgetCalls();
  EXPECT_EQ(runTell(options), 0);
  testing::internal::GetCapturedStdout();
  EXPECT_THAT(recordedSocketOptions(SO_RCVTIMEO), testing::Contains(10'000));
}

TEST(TellWithoutAPrinter, IsForThisComputerAlone) {
  Options options;
  options.tellAddress = "192.0.2.1:9";
  options.tellCommand = "go";
  testing::internal::CaptureStderr();
  EXPECT_EQ(runTell(options), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "wren-preview: 192.0.2.1:9: not a loopback address; only this computer may print "
            "here\n");
}

}  // namespace
}  // namespace wren::preview
