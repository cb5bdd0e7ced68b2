// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of one printer print in the order in which they arrived, one at a time, each once.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/running_app.h"
#include "tests/app/running_server.h"
#include "tests/app/sample_documents.h"
#include "tests/app/scripted_printer.h"
#include "tests/app/slow_printer.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using wren::app::eventually;

constexpr const char* kPwg = "image/pwg-raster";
constexpr const char* kWaiting = "Waiting: jobs before this one.";
const std::string kReceipt = std::string(WREN_EXAMPLES) + "/receipt.pdf";
// The order of printing is read off the feed before the cut, which differs from job to job.
constexpr const char* kMark = "feed-cut-after-job-end";
constexpr int kDefaultMark = 12;

std::string smallPage() {
  return rasterStream(RasterKind::kPwg, {noisePage(576, 60, 1)});
}

// More than the buffers on the way to a SlowPrinter hold.
std::string longPage() {
  return rasterStream(RasterKind::kPwg, {noisePage(576, 23976, 1)});
}

std::vector<int> marksIn(const std::string& bytes) {
  constexpr int kStepsPerMm = 16;
  const std::string cut = "\x1D\x56\x01";
  std::vector<int> marks;
  for (auto at = bytes.find(cut); at != std::string::npos; at = bytes.find(cut, at + 1)) {
    if (at < 3 || bytes.substr(at - 3, 2) != "\x1BJ") continue;
    marks.push_back(static_cast<unsigned char>(bytes[at - 1]) / kStepsPerMm);
  }
  return marks;
}

std::vector<int> marksAt(const SlowPrinter& printer) {
  std::string all;
  for (const auto& bytes : printer.received()) all += bytes;
  return marksIn(all);
}

/// Clients that send raster jobs: each is answered when its job has ended.
class Clients {
 public:
  explicit Clients(RunningApp& app) : app_(app) {}
  Clients(const Clients&) = delete;
  Clients& operator=(const Clients&) = delete;
  ~Clients() { join(); }

  void send(const std::string& document, const std::string& format, int mark) {
    threads_.emplace_back([this, document, format, mark] {
      app_.submit(document, format, {JobAttribute::integer(kMark, mark)});
    });
  }
  void join() {
    for (auto& thread : threads_) {
      if (thread.joinable()) thread.join();
    }
  }

 private:
  RunningApp& app_;
  std::vector<std::thread> threads_;
};

TEST(JobOrder, IsThatOfArrivalForEveryFormat) {
  SlowPrinter printer;
  printer.comeBack(20'000);
  RunningApp app({.device = printer.uri()});
  Clients clients(app);
  clients.send(longPage(), kPwg, kDefaultMark);
  ASSERT_TRUE(printer.waitForBytes(20'000));
  auto documents = sampleDocuments();
  documents.push_back({"application/vnd.cups-command", "#CUPS-COMMAND\nCut\n", 0});
  int mark = 0;
  for (const SampleDocument& document : documents) {
    ++mark;
    clients.send(document.bytes, document.format, mark);
    ASSERT_TRUE(eventually([&] { return app.stateOf(mark + 1).id != 0; })) << document.format;
  }
  printer.readOn();
  const JobOutcome last = app.waitFor(mark + 1);
  EXPECT_EQ(last.state, IPP_JSTATE_COMPLETED) << last.message;
  clients.join();
  EXPECT_THAT(marksAt(printer), ElementsAre(kDefaultMark, 1, 2, 3, 4, 5, 6, 7));
}

void addPrinter(const RunningServer& server, const std::string& name, const std::string& uri) {
  server.ask({"add", "-d", name, "-m", "wren80", "-v", uri});
}

int submitMarked(const RunningServer& server, const std::string& printer, int mark) {
  return server.submit(printer, kReceipt, {"-o", kMark + ("=" + std::to_string(mark))});
}

class JobOrderAfterARestart : public testing::TestWithParam<int> {};

TEST_P(JobOrderAfterARestart, IsThatOfArrival) {
  SlowPrinter printer;
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  for (int mark = 1; mark <= 6; ++mark) submitMarked(server, "till", mark);
  ASSERT_TRUE(server.waitForState("till", 1, "processing")) << server.log();
  ASSERT_TRUE(server.waitUntilSaved("j000000006-"));
  const auto start = std::chrono::steady_clock::now();
  server.stop(GetParam());
  // PAPPL alone waits a minute for the jobs that wait for the printer.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  server.start();
  printer.comeBack();
  EXPECT_TRUE(server.waitForState("till", 6, "completed")) << server.log();
  EXPECT_THAT(marksAt(printer), ElementsAre(1, 2, 3, 4, 5, 6));
}

INSTANTIATE_TEST_SUITE_P(Signals, JobOrderAfterARestart, testing::Values(SIGTERM, SIGKILL));

TEST(JobOrder, OfOnePrinterDoesNotDependOnAnother) {
  SlowPrinter away;
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  addPrinter(server, "till", away.uri());
  addPrinter(server, "bar", printer.uri());
  for (int mark = 1; mark <= 3; ++mark) submitMarked(server, "till", mark);
  ASSERT_TRUE(server.waitForState("till", 1, "processing")) << server.log();
  for (int mark = 4; mark <= 6; ++mark) submitMarked(server, "bar", mark);
  EXPECT_TRUE(server.waitForState("bar", 3, "completed")) << server.log();
  EXPECT_THAT(marksAt(printer), ElementsAre(4, 5, 6));
  EXPECT_EQ(server.stateOf("till", 3), "pending");
  away.comeBack();
  EXPECT_TRUE(server.waitForState("till", 3, "completed")) << server.log();
  EXPECT_THAT(marksAt(away), ElementsAre(1, 2, 3));
}

// How many of the jobs the bytes are made of; -1 if they are made of something else.
int countWhole(const std::string& bytes, const std::vector<std::string>& jobs) {
  int count = 0;
  for (std::size_t at = 0; at < bytes.size(); ++count) {
    const auto found = std::find_if(jobs.begin(), jobs.end(), [&](const std::string& job) {
      return bytes.compare(at, job.size(), job) == 0;
    });
    if (found == jobs.end()) return -1;
    at += found->size();
  }
  return count;
}

std::string bytesAlone(const std::string& document, const std::string& format) {
  SlowPrinter printer;
  printer.comeBack();
  RunningApp app({.device = printer.uri()});
  EXPECT_EQ(app.print(document, format).state, IPP_JSTATE_COMPLETED);
  return printer.received().at(0);
}

TEST(JobOrder, LetsNoJobMixWithAnotherOrPrintTwice) {
  constexpr int kClients = 6;
  constexpr int kRounds = 10;
  const std::string text = "One line.\n";
  SlowPrinter printer;
  printer.comeBack();
  RunningApp app({.device = printer.uri()});
  std::vector<std::thread> clients;
  clients.reserve(kClients);
  for (int client = 0; client < kClients; ++client) {
    clients.emplace_back([&, client] {
      for (int round = 0; round < kRounds; ++round) {
        const JobOutcome outcome =
            client % 2 == 0 ? app.submit(smallPage(), kPwg) : app.submit(text, "text/plain");
        EXPECT_EQ(outcome.status, IPP_STATUS_OK);
      }
    });
  }
  for (auto& client : clients) client.join();
  for (int job = 1; job <= kClients * kRounds; ++job) {
    EXPECT_EQ(app.waitFor(job).state, IPP_JSTATE_COMPLETED) << job;
  }
  std::string all;
  for (const auto& bytes : printer.received()) all += bytes;
  EXPECT_EQ(countWhole(all, {bytesAlone(smallPage(), kPwg), bytesAlone(text, "text/plain")}),
            kClients * kRounds);
}

TEST(WaitingRaster, CanBeCancelled) {
  SlowPrinter printer;
  RunningApp app({.device = printer.uri()});
  app.submit("first\n", "text/plain", {JobAttribute::integer(kMark, 1)});
  JobOutcome answer;
  std::thread client([&] { answer = app.submit(smallPage(), kPwg); });
  EXPECT_TRUE(eventually([&] { return app.stateOf(2).message == kWaiting; }));
  app.cancel(2);
  client.join();
  EXPECT_EQ(answer.status, IPP_STATUS_ERROR_JOB_CANCELED);
  EXPECT_EQ(app.stateOf(2).state, IPP_JSTATE_CANCELED);
  printer.comeBack();
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_COMPLETED);
  EXPECT_THAT(marksAt(printer), ElementsAre(1));
}

/// `submit` of a raster file, which ends when the job has ended.
class RasterSubmission {
 public:
  RasterSubmission(const RunningServer& server, const std::string& printer)
      : thread_([this, &server, printer] {
          const auto file = server.folder() / "page.pwg";
          std::ofstream(file, std::ios::binary) << smallPage();
          result_ = server.run(
              {"submit", "-d", printer, "-o", "document-format=image/pwg-raster", file.string()});
        }) {}
  RasterSubmission(const RasterSubmission&) = delete;
  RasterSubmission& operator=(const RasterSubmission&) = delete;
  ~RasterSubmission() { finish(); }

  const ProcessResult& finish() {
    if (thread_.joinable()) thread_.join();
    return result_;
  }

 private:
  ProcessResult result_;
  std::thread thread_;
};

TEST(WaitingRaster, PrintsAtAPausedPrinterOnceItIsResumed) {
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  server.ask({"pause", "-d", "till"});
  RasterSubmission submission(server, "till");
  EXPECT_TRUE(
      eventually([&] { return server.jobAttribute("till", 1, "job-state-message") == kWaiting; }));
  EXPECT_THAT(printer.received(), IsEmpty());
  server.ask({"resume", "-d", "till"});
  EXPECT_TRUE(server.waitForState("till", 1, "completed")) << server.log();
  EXPECT_TRUE(submission.finish().exited(0)) << submission.finish().err;
  EXPECT_THAT(marksAt(printer), ElementsAre(kDefaultMark));
}

class WaitingRasterAtTheEnd : public testing::TestWithParam<int> {};

// It was never read, so nobody can print it later: its client is told.
TEST_P(WaitingRasterAtTheEnd, OfTheServerIsAbortedAndItsClientIsTold) {
  SlowPrinter printer;
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  submitMarked(server, "till", 1);
  RasterSubmission submission(server, "till");
  ASSERT_TRUE(
      eventually([&] { return server.jobAttribute("till", 2, "job-state-message") == kWaiting; }));
  ASSERT_TRUE(server.waitUntilSaved("id=\"2\" name"));
  server.stop(GetParam());
  EXPECT_NE(submission.finish().exitStatus, 0) << submission.finish().out;
  server.start();
  printer.comeBack();
  EXPECT_TRUE(server.waitForState("till", 1, "completed")) << server.log();
  EXPECT_EQ(server.stateOf("till", 2), "aborted");
  EXPECT_EQ(server.jobAttribute("till", 2, "job-state-message"),
            "interrupted before its document was whole");
  EXPECT_THAT(marksAt(printer), ElementsAre(1));
}

INSTANTIATE_TEST_SUITE_P(Signals, WaitingRasterAtTheEnd, testing::Values(SIGTERM, SIGKILL));

}  // namespace
}  // namespace wren_test
