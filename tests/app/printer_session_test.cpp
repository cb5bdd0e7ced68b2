// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/printed_commands.h"
#include "tests/app/scripted_printer.h"
#include "tests/support/same_bytes.h"

namespace wren::app {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// More than the buffers of both sides hold, where the printer's is kSmallBuffer.
constexpr std::size_t kManyBytes = 300'000;
constexpr int kSmallBuffer = 4096;

const Bytes kJob = sampleBytes(5000);

// As in the product, but a test does not wait for seconds.
SessionTimes shortTimes() {
  SessionTimes times;
  times.connect = milliseconds(500);
  times.retry = milliseconds(50);
  times.stalled = milliseconds(100);
  times.cancelGrace = milliseconds(100);
  times.close = milliseconds(300);
  times.unprinted = milliseconds(600);
  times.unattended = milliseconds(200);
  return times;
}

Bytes concatenated(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// All is well: the requests in the order in which they are sent.
const Bytes kFourRequests = {0x10, 4, 1, 0x10, 4, 4, 0x10, 4, 2, 0x10, 4, 3};
const Bytes kPrinted = {0x1D, 0x72, 0x01};

/// What a printer that answers says; may be changed while it runs.
struct Answering {
  std::atomic<std::uint8_t> printer{0x12};  ///< n = 1
  std::atomic<std::uint8_t> paper{0x12};    ///< n = 4
  std::atomic<bool> answersStatus{true};
  std::atomic<bool> answersPrinted{true};

  /// Reads `count` bytes of a job.
  bool takeJob(ScriptedPrinter& self, std::size_t count) { return self.read(count); }

  /// Reads one request of three bytes and answers it.
  bool serve(ScriptedPrinter& self) {
    if (!self.read(3)) return false;
    const Bytes all = self.received();
    const std::uint8_t command = all[all.size() - 3];
    const std::uint8_t n = all.back();
    if (command == 0x10 && answersStatus) {
      self.send({n == 1 ? printer.load() : n == 4 ? paper.load() : std::uint8_t{0x12}});
    }
    if (command == 0x1D && answersPrinted) self.send({0x00});
    return true;
  }
  void serve(ScriptedPrinter& self, int requests) {
    for (int i = 0; i < requests; ++i) serve(self);
  }
  void serveRest(ScriptedPrinter& self) {
    while (serve(self)) {
    }
  }
};

/// A job's view: its cancel, and the conditions it was told of, in words.
class Attached {
 public:
  void to(PrinterSession& session) {
    session.attach({isSet, &cancelled_}, [this](const PrinterCondition& condition) {
      told_.push_back(condition.away      ? "away"
                      : condition.stalled ? "stalled"
                      : condition.status  ? "[" + describe(*condition.status) + "]"
                                          : "unknown");
    });
  }
  void cancel() { cancelled_ = true; }
  /// Only between the calls of the session.
  const std::vector<std::string>& told() const { return told_; }

 private:
  static bool isSet(const void* flag) { return *static_cast<const std::atomic<bool>*>(flag); }
  std::atomic<bool> cancelled_{false};
  std::vector<std::string> told_;
};

class PrinterSessionTest : public testing::Test {
 protected:
  std::unique_ptr<PrinterSession> open(const std::string& uri, bool asksStatus = true) {
    const NetworkAddress address = *parseNetworkUri(uri);
    return std::make_unique<PrinterSession>(address, known_, asksStatus, shortTimes());
  }

  /// Prints kJob in one session.
  void print(const std::string& uri, bool asksStatus = true) {
    const auto session = open(uri, asksStatus);
    Attached job;
    job.to(*session);
    EXPECT_TRUE(session->write(kJob)) << session->fault();
    EXPECT_TRUE(session->end()) << session->fault();
  }

  std::shared_ptr<KnownPrinter> known_ = std::make_shared<KnownPrinter>();
};

TEST_F(PrinterSessionTest, SendsNothingButTheJobIfItIsNotToAsk) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.readAll(); });
  print(printer.uri(), false);
  EXPECT_THAT(printer.received(), testing::ContainerEq(kJob));
}

TEST_F(PrinterSessionTest, AsksAPrinterThatNeverAnswersOnce) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.readAll(); });
  print(printer.uri());
  const auto start = Clock::now();
  print(printer.uri());
  EXPECT_LT(Clock::now() - start, PrinterQuestions::kLimit);
  EXPECT_THAT(printer.received(), testing::ContainerEq(concatenated({{0x10, 4, 1}, kJob, kJob})));
}

TEST_F(PrinterSessionTest, AsksBeforeTheJobAndWaitsUntilItIsPrinted) {
  Answering answers;
  ScriptedPrinter printer([&answers](ScriptedPrinter& self) {
    if (self.connections() == 1) answers.serve(self, 5);
    if (self.connections() == 2) answers.serve(self, 4);
    answers.takeJob(self, kJob.size());
    answers.serveRest(self);
  });
  print(printer.uri());
  print(printer.uri());
  // Whether the last question is answered is found out before the first job alone.
  const Bytes first = concatenated({kFourRequests, kPrinted, kJob, kPrinted, kFourRequests});
  const Bytes second = concatenated({kFourRequests, kJob, kPrinted, kFourRequests});
  EXPECT_THAT(printer.received(), testing::ContainerEq(concatenated({first, second})));
}

TEST_F(PrinterSessionTest, DoesNotWaitForAConfirmationThatIsNeverGiven) {
  Answering answers;
  answers.answersPrinted = false;
  ScriptedPrinter printer([&answers](ScriptedPrinter& self) {
    answers.serve(self, 5);
    answers.takeJob(self, kJob.size());
    answers.serveRest(self);
  });
  print(printer.uri());
  EXPECT_THAT(printer.received(),
              testing::ContainerEq(concatenated({kFourRequests, kPrinted, kJob, kFourRequests})));
}

TEST_F(PrinterSessionTest, WaitsForPaperBeforeTheJob) {
  Answering answers;
  answers.printer = 0x1A;
  answers.paper = 0x72;
  std::atomic<int> questions{0};
  ScriptedPrinter printer([&](ScriptedPrinter& self) {
    while (answers.printer != 0x12) {
      answers.serve(self, 4);
      if (++questions == 3) {
        answers.printer = 0x12;
        answers.paper = 0x1E;
      }
    }
    answers.serve(self, 5);
    answers.takeJob(self, kJob.size());
    answers.serveRest(self);
  });
  const auto session = open(printer.uri());
  Attached job;
  job.to(*session);
  EXPECT_TRUE(session->begin());
  EXPECT_THAT(job.told(),
              testing::ElementsAre("unknown", "[out of paper]", "[paper near its end]"));
  EXPECT_TRUE(session->write(kJob));
  EXPECT_TRUE(session->end()) << session->fault();
  EXPECT_EQ(questions, 3);
}

TEST_F(PrinterSessionTest, WaitsForPaperAtTheEndOfTheJob) {
  Answering answers;
  ScriptedPrinter printer([&](ScriptedPrinter& self) {
    answers.serve(self, 5);
    answers.takeJob(self, kJob.size());
    answers.paper = 0x72;
    answers.answersPrinted = false;
    answers.serve(self, 1 + 4 + 4);
    answers.paper = 0x12;
    self.send({0x00});
    answers.serveRest(self);
  });
  const auto session = open(printer.uri());
  Attached job;
  job.to(*session);
  EXPECT_TRUE(session->write(kJob));
  EXPECT_TRUE(session->end()) << session->fault();
  EXPECT_THAT(job.told(), testing::ElementsAre("unknown", "[]", "[out of paper]", "[]"));
}

TEST_F(PrinterSessionTest, GivesUpAConfirmationThatAReadyPrinterOwes) {
  Answering answers;
  ScriptedPrinter printer([&](ScriptedPrinter& self) {
    answers.serve(self, 5);
    answers.answersPrinted = false;
    answers.takeJob(self, kJob.size());
    answers.serveRest(self);
  });
  const auto start = Clock::now();
  print(printer.uri());
  EXPECT_GE(Clock::now() - start, shortTimes().unprinted);
}

TEST_F(PrinterSessionTest, FailsIfThePrinterGoesAwayBeforeItHasPrinted) {
  Answering answers;
  ScriptedPrinter printer([&](ScriptedPrinter& self) {
    answers.serve(self, 5);
    answers.takeJob(self, kJob.size());
    self.read(3);
  });
  const auto session = open(printer.uri());
  Attached job;
  job.to(*session);
  EXPECT_TRUE(session->write(kJob));
  EXPECT_FALSE(session->end());
  EXPECT_EQ(session->fault(), "the printer went away before it had printed everything");
}

TEST_F(PrinterSessionTest, WaitsForAPrinterThatIsAwayAndPrintsOnce) {
  std::string port;
  {
    ScriptedPrinter gone([](ScriptedPrinter&) {});
    port = gone.port();
  }
  const auto session = open("socket://127.0.0.1:" + port, false);
  Attached job;
  job.to(*session);
  std::thread printing([&] {
    EXPECT_TRUE(session->write(kJob));
    EXPECT_TRUE(session->end());
  });
  std::this_thread::sleep_for(milliseconds(200));
  EXPECT_TRUE(known_->condition().away);
  ScriptedPrinter back([](ScriptedPrinter& self) { self.readAll(); }, 0, false,
                       static_cast<std::uint16_t>(std::stoul(port)));
  printing.join();
  EXPECT_THAT(back.received(), testing::ContainerEq(kJob));
  EXPECT_EQ(back.connections(), 1);
  EXPECT_FALSE(known_->condition().away);
  EXPECT_THAT(job.told(), testing::ElementsAre("unknown", "away", "unknown"));
}

TEST_F(PrinterSessionTest, ACancelEndsTheWaitForAPrinterThatIsAway) {
  std::string port;
  {
    ScriptedPrinter gone([](ScriptedPrinter&) {});
    port = gone.port();
  }
  const auto session = open("socket://127.0.0.1:" + port);
  Attached job;
  job.to(*session);
  std::thread cancelling([&job] {
    std::this_thread::sleep_for(milliseconds(200));
    job.cancel();
  });
  const auto start = Clock::now();
  EXPECT_FALSE(session->write(kJob));
  EXPECT_LT(Clock::now() - start, milliseconds(300));
  EXPECT_EQ(session->fault(), "cancelled");
  cancelling.join();
}

TEST_F(PrinterSessionTest, TellsOfAPrinterThatStopsAndGoesOn) {
  std::atomic<bool> paper{false};
  ScriptedPrinter printer(
      [&paper](ScriptedPrinter& self) {
        self.pauseUntil([&paper] { return paper.load(); });
        self.readAll();
      },
      kSmallBuffer);
  const Bytes bytes = sampleBytes(kManyBytes);
  const auto session = open(printer.uri(), false);
  Attached job;
  job.to(*session);
  std::thread watching([&] {
    while (!known_->condition().stalled) std::this_thread::sleep_for(milliseconds(1));
    paper = true;
  });
  EXPECT_TRUE(session->write(bytes));
  EXPECT_TRUE(session->end()) << session->fault();
  watching.join();
  EXPECT_THAT(job.told(), testing::ElementsAre("unknown", "stalled", "unknown"));
  EXPECT_THAT(printer.received(), testing::ContainerEq(bytes));
}

// 200 bands of 584 bytes.
Bytes bandsOfAJob() {
  Bytes bands;
  for (int i = 0; i < 200; ++i) {
    Bytes band(584, 0x55);
    const Bytes image = {0x1B, 0x2A, 0x01, 0x40, 0x02};
    const Bytes feed = {0x1B, 0x4A, 0x10};
    std::copy(image.begin(), image.end(), band.begin());
    std::copy(feed.begin(), feed.end(), band.end() - 3);
    bands.insert(bands.end(), band.begin(), band.end());
  }
  return bands;
}

TEST_F(PrinterSessionTest, TellsWhyAPrinterStopsInMidJob) {
  Answering answers;
  std::atomic<bool> paper{false};
  std::size_t questions = 0;
  ScriptedPrinter printer(
      [&](ScriptedPrinter& self) {
        answers.serve(self, 4);
        answers.answersPrinted = false;
        answers.serve(self, 1);
        questions = self.received().size();
        // Two bands and the request behind them: no paper, and a full buffer.
        self.read(2 * 584 + 3);
        self.send({0x32});
        self.pauseUntil([&paper] { return paper.load(); });
        self.read(2 * 584 + 3);
        self.send({0x12});
        self.readAll();
      },
      kSmallBuffer);
  const Bytes bytes = bandsOfAJob();
  const auto session = open(printer.uri());
  Attached job;
  job.to(*session);
  std::thread watching([&] {
    EXPECT_TRUE(eventually([&] { return known_->condition().stalled; }));
    EXPECT_TRUE(eventually([&] {
      const auto status = known_->condition().status;
      return status.has_value() && status->paperOut;
    }));
    paper = true;
  });
  EXPECT_TRUE(session->write(bytes)) << session->fault();
  EXPECT_TRUE(session->end()) << session->fault();
  watching.join();
  EXPECT_TRUE(known_->condition().status->isReady());
  EXPECT_FALSE(known_->condition().stalled);
  const Bytes all = printer.received();
  const std::string rest(all.begin() + static_cast<std::ptrdiff_t>(questions), all.end());
  EXPECT_THAT(wren_test::withoutQuestions(rest),
              wren_test::SameBytes(std::string(bytes.begin(), bytes.end())));
}

TEST_F(PrinterSessionTest, ACancelledJobStillSendsItsEndToAPrinterThatTakesIt) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.readAll(); });
  const auto session = open(printer.uri(), false);
  Attached job;
  job.to(*session);
  EXPECT_TRUE(session->write(kJob));
  job.cancel();
  const Bytes ending = {0x1D, 0x56, 0x00};
  EXPECT_TRUE(session->write(ending));
  EXPECT_TRUE(session->end());
  EXPECT_THAT(printer.received(), testing::ContainerEq(concatenated({kJob, ending})));
}

TEST_F(PrinterSessionTest, ACancelledJobDoesNotWaitForAPrinterThatTakesNothing) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.pause(milliseconds(10'000)); },
                          kSmallBuffer);
  const auto session = open(printer.uri(), false);
  Attached job;
  job.to(*session);
  std::thread cancelling([&] {
    while (!known_->condition().stalled) std::this_thread::sleep_for(milliseconds(1));
    job.cancel();
  });
  EXPECT_FALSE(session->write(sampleBytes(kManyBytes)));
  cancelling.join();
  const auto start = Clock::now();
  EXPECT_FALSE(session->write(kJob));
  EXPECT_FALSE(session->end());
  EXPECT_LT(Clock::now() - start, milliseconds(50));
  EXPECT_EQ(session->fault(), "cancelled");
  EXPECT_FALSE(known_->condition().stalled);
}

TEST_F(PrinterSessionTest, NeverSendsAJobAgainAfterAReset) {
  ScriptedPrinter printer(
      [](ScriptedPrinter& self) {
        self.read(1000);
        self.reset();
      },
      kSmallBuffer);
  const auto session = open(printer.uri(), false);
  Attached job;
  job.to(*session);
  EXPECT_FALSE(session->write(sampleBytes(kManyBytes)));
  EXPECT_FALSE(session->write(kJob));
  EXPECT_FALSE(session->end());
  EXPECT_EQ(printer.connections(), 1);
  EXPECT_NE(session->fault(), "");
}

TEST_F(PrinterSessionTest, WithoutAJobAPrinterThatIsAwayIsAnError) {
  std::string port;
  {
    ScriptedPrinter gone([](ScriptedPrinter&) {});
    port = gone.port();
  }
  const auto session = open("socket://127.0.0.1:" + port);
  EXPECT_FALSE(session->write(kJob));
  EXPECT_EQ(session->fault(), "Connection refused");
}

TEST_F(PrinterSessionTest, AJobWaitsUntilTheOneBeforeHasLeftThePrinter) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.readAll(); });
  auto first = open(printer.uri(), false);
  const auto second = open(printer.uri(), false);
  Attached one;
  Attached two;
  one.to(*first);
  two.to(*second);
  EXPECT_TRUE(first->write(kJob));
  std::thread waiting([&] {
    EXPECT_TRUE(second->write(kJob));
    EXPECT_TRUE(second->end());
  });
  std::this_thread::sleep_for(milliseconds(100));
  EXPECT_EQ(printer.connections(), 1);
  EXPECT_TRUE(first->write(kJob));
  EXPECT_TRUE(first->end());
  waiting.join();
  EXPECT_EQ(printer.connections(), 2);
  EXPECT_THAT(printer.received(), testing::ContainerEq(concatenated({kJob, kJob, kJob})));
}

TEST_F(PrinterSessionTest, AnIdlePrinterIsAskedWithoutAJob) {
  Answering answers;
  answers.paper = 0x7E;
  ScriptedPrinter printer([&answers](ScriptedPrinter& self) { answers.serveRest(self); });
  askIdlePrinter(*parseNetworkUri(printer.uri()), known_, milliseconds(500));
  ASSERT_TRUE(known_->condition().status.has_value());
  EXPECT_EQ(describe(*known_->condition().status), "out of paper");
  EXPECT_THAT(printer.received(), testing::ContainerEq(kFourRequests));
}

TEST_F(PrinterSessionTest, AnIdlePrinterThatIsAwayIsNoted) {
  NetworkAddress address;
  {
    ScriptedPrinter gone([](ScriptedPrinter&) {});
    address = *parseNetworkUri(gone.uri());
  }
  askIdlePrinter(address, known_, milliseconds(500));
  EXPECT_TRUE(known_->condition().away);
}

TEST_F(PrinterSessionTest, APrinterWithAJobIsNotAskedBesideIt) {
  ScriptedPrinter printer([](ScriptedPrinter& self) { self.readAll(); });
  const auto session = open(printer.uri(), false);
  Attached job;
  job.to(*session);
  EXPECT_TRUE(session->write(kJob));
  askIdlePrinter(*parseNetworkUri(printer.uri()), known_, milliseconds(500));
  EXPECT_TRUE(session->end());
  EXPECT_THAT(printer.received(), testing::ContainerEq(kJob));
}

}  // namespace
}  // namespace wren::app
