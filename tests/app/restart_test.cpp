// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a server keeps when it ends, whether it is asked to or killed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "tests/app/running_server.h"
#include "tests/app/slow_printer.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

using testing::HasSubstr;

const std::string kReceipt = std::string(WREN_EXAMPLES) + "/receipt.pdf";
// More printer bytes than the buffers between two sockets hold.
const std::vector<std::string> kManyCopies = {"-n", "600"};

void addPrinter(const RunningServer& server, const std::string& name, const std::string& uri,
                const std::string& driver = "wren80") {
  server.ask({"add", "-d", name, "-m", driver, "-v", uri});
}

int submitBrokenPicture(const RunningServer& server) {
  const auto file = server.folder() / "broken.png";
  std::ofstream(file, std::ios::binary) << "\x89PNG\r\n";
  return server.submit("till", file.string(), {"-o", "document-format=image/png"});
}

// How many jobs the printer has got, whole or not. PAPPL keeps a connection for the next job.
std::size_t jobsAt(const SlowPrinter& printer) {
  static const std::string kBegin =
      "\x1B@\x1F\x1B\x1F"
      "Beep";
  std::size_t jobs = 0;
  for (const auto& bytes : printer.received()) {
    for (auto at = bytes.find(kBegin); at != std::string::npos; at = bytes.find(kBegin, at + 1)) {
      ++jobs;
    }
  }
  return jobs;
}

// A job at a printer that takes 5000 bytes and then waits.
int beginAtStalledPrinter(SlowPrinter& printer, const RunningServer& server) {
  printer.comeBack(5000);
  addPrinter(server, "till", printer.uri());
  const int job = server.submit("till", kReceipt, kManyCopies);
  EXPECT_TRUE(printer.waitForBytes(5000)) << server.log();
  return job;
}

// Everything that clients see of printers, defaults and jobs.
std::string overview(const RunningServer& server) {
  std::string all = server.ask({"printers"}) + server.ask({"default"});
  for (const char* printer : {"till", "bar"}) {
    all += server.attributeOf(printer, "halftone-type-default") + "\n";
    all += server.ask({"options", "-d", printer}) + server.ask({"jobs", "-d", printer});
  }
  return all;
}

class Restart : public testing::TestWithParam<int> {};

TEST_P(Restart, KeepsPrintersDefaultsAndTheHistory) {
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  addPrinter(server, "bar", printer.uri(), "wren58");
  server.ask({"modify", "-d", "till", "-o", "halftone-type=stencil"});
  server.ask({"default", "-d", "bar"});
  server.submit("bar", kReceipt);
  const int job = server.submit("bar", kReceipt);
  ASSERT_EQ(job, 2);
  ASSERT_TRUE(server.waitForState("bar", job, "completed")) << server.log();
  const std::string before = overview(server);
  EXPECT_THAT(before, HasSubstr("till\nbar\nstencil\n"));
  EXPECT_THAT(before, HasSubstr("completed"));
  ASSERT_TRUE(server.waitUntilSaved("state=\"9\""));
  server.stop(GetParam());
  server.start();
  EXPECT_EQ(overview(server), before);
  const int next = server.submit("bar", kReceipt);
  EXPECT_GT(next, job);
  EXPECT_TRUE(server.waitForState("bar", next, "completed")) << server.log();
}

// After a second restart as well.
TEST_P(Restart, KeepsTheReasonsOfFailedJobs) {
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  const int job = submitBrokenPicture(server);
  ASSERT_TRUE(server.waitForState("till", job, "aborted")) << server.log();
  ASSERT_EQ(server.jobAttribute("till", job, "job-state-message"), "this is not a PNG");
  ASSERT_TRUE(server.waitUntilSaved("state=\"8\""));
  for (int restart = 0; restart < 2; ++restart) {
    server.stop(GetParam());
    server.start();
    EXPECT_EQ(server.jobAttribute("till", job, "job-state-message"), "this is not a PNG");
  }
}

// At once, before anything else can have been saved.
TEST(KilledServer, KnowsEveryJobThatItHasAccepted) {
  SlowPrinter printer;
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  for (int job = 1; job <= 10; ++job) {
    EXPECT_EQ(server.submit("till", kReceipt), job);
    server.stop(SIGKILL);
    server.start();
    EXPECT_THAT(server.stateOf("till", job), testing::AnyOf("pending", "processing"));
  }
}

// Killed between the end of the job and the save that would have kept its reason.
TEST(KilledServer, SaysThatAReasonWasNotKept) {
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  const int job = submitBrokenPicture(server);
  ASSERT_TRUE(server.waitUntilSaved("state=\"8\"")) << server.log();
  server.stop(SIGKILL);
  std::filesystem::remove(server.stateFolder() / "messages");
  server.start();
  EXPECT_EQ(server.jobAttribute("till", job, "job-state-message"),
            "failed before the restart; the reason was not kept");
}

// A save writes all of them, and nobody is served meanwhile: with fifty printers and a hundred
// jobs each it took most of a second, and clients met one save after the other.
TEST(ManyPrinters, RememberFiveHundredEndedJobsTogether) {
  constexpr int kPrinters = 10;
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  for (int i = 0; i < kPrinters; ++i) addPrinter(server, "till" + std::to_string(i), printer.uri());
  ASSERT_TRUE(server.waitUntilSaved("name=\"till9\""));
  server.stop(SIGTERM);
  const auto file = server.stateFolder() / "state";
  std::string jobs;
  for (int id = 1; id <= 100; ++id) {
    const std::string number = std::to_string(id);
    jobs += "Job completed=\"1700000000\" created=\"1700000000\" format=\"text/plain\" id=\"" +
            number + "\" name=\"job-" + number +
            "-\" processing=\"1700000000\" state=\"9\" username=\"guest\"\n";
  }
  std::string state;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (line == "</Printer>") state += jobs;
    state += line.starts_with("NextJobId ") ? "NextJobId 101\n" : line + "\n";
  }
  in.close();
  std::ofstream(file) << state;
  server.start();
  EXPECT_EQ(server.submit("till0", kReceipt), 101);
  ASSERT_TRUE(server.waitUntilSaved("id=\"101\"")) << server.log();
  EXPECT_TRUE(server.waitForState("till0", 101, "completed")) << server.log();
  // The oldest go when the next save begins.
  ASSERT_TRUE(server.waitUntilSaved("NextJobId 102")) << server.log();
  for (const char* name : {"till0", "till9"}) {
    const std::string kept = server.ask({"jobs", "-d", name});
    EXPECT_THAT(kept, HasSubstr("job-100-"));
    EXPECT_LE(std::count(kept.begin(), kept.end(), '\n'), 51) << kept;
    EXPECT_GE(std::count(kept.begin(), kept.end(), '\n'), 50) << kept;
  }
}

INSTANTIATE_TEST_SUITE_P(Signals, Restart, testing::Values(SIGTERM, SIGKILL));

TEST(ShutDownServer, EndsAndKeepsTheJobsThatWait) {
  SlowPrinter printer;
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  const int first = server.submit("till", kReceipt);
  const int second = server.submit("till", kReceipt);
  ASSERT_TRUE(server.waitForState("till", first, "processing"));
  const auto start = std::chrono::steady_clock::now();
  server.ask({"shutdown"});
  EXPECT_EQ(server.waitForEnd().exitStatus, 0);
  // PAPPL alone waits a minute for the jobs that wait for the printer.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  printer.comeBack();
  server.start();
  EXPECT_TRUE(server.waitForState("till", second, "completed")) << server.log();
  EXPECT_EQ(jobsAt(printer), 2U);
}

TEST(ShutDownServer, EndsAfterTheJobThatPrints) {
  SlowPrinter printer;
  RunningServer server;
  const int job = beginAtStalledPrinter(printer, server);
  server.ask({"shutdown"});
  printer.readOn();
  EXPECT_EQ(server.waitForEnd().exitStatus, 0);
  EXPECT_EQ(jobsAt(printer), 1U);
  server.start();
  EXPECT_EQ(server.stateOf("till", job), "completed");
}

// What a client is told when the end has begun is true: what was accepted prints, what was refused
// does not.
TEST(EndingServer, RefusesWhatItWouldLose) {
  SlowPrinter printer;
  RunningServer server;
  beginAtStalledPrinter(printer, server);
  std::thread ending([&] { server.stop(SIGTERM); });
  std::vector<int> accepted;
  std::string refusal;
  for (int i = 0; i < 300 && refusal.empty(); ++i) {
    const ProcessResult answer = server.run({"submit", "-d", "till", kReceipt});
    if (answer.exited(0)) {
      accepted.push_back(std::atoi(answer.out.c_str() + answer.out.rfind('-') + 1));
    } else {
      refusal = answer.err;
    }
  }
  printer.readOn();
  ending.join();
  EXPECT_THAT(refusal, HasSubstr("The server is being shut down; nothing was printed."));
  server.start();
  for (const int job : accepted) {
    EXPECT_TRUE(server.waitForState("till", job, "completed")) << server.log();
  }
  EXPECT_EQ(jobsAt(printer), accepted.size() + 1);
}

TEST(KilledServer, PrintsAJobThatHadNotBegunOnce) {
  SlowPrinter printer;
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  const int first = server.submit("till", kReceipt);
  const int second = server.submit("till", kReceipt);
  ASSERT_TRUE(server.waitForState("till", first, "processing"));
  ASSERT_TRUE(server.waitUntilSaved("j000000002-"));
  server.stop(SIGKILL);
  printer.comeBack();
  server.start();
  EXPECT_TRUE(server.waitForState("till", second, "completed")) << server.log();
  EXPECT_TRUE(server.waitForState("till", first, "completed")) << server.log();
  EXPECT_EQ(jobsAt(printer), 2U);
}

TEST(KilledServer, CancelsAJobThatHadBegun) {
  SlowPrinter printer;
  RunningServer server;
  const int job = beginAtStalledPrinter(printer, server);
  server.stop(SIGKILL);
  server.start();
  EXPECT_EQ(server.stateOf("till", job), "canceled");
  EXPECT_EQ(server.jobAttribute("till", job, "job-state-message"),
            "interrupted, not printed again");
  printer.readOn();
  // Whoever comes next prints, and finds the printer alone.
  const int next = server.submit("till", kReceipt);
  EXPECT_TRUE(server.waitForState("till", next, "completed")) << server.log();
  EXPECT_EQ(jobsAt(printer), 2U);
  EXPECT_TRUE(server.waitForEmptySpool());
}

TEST(KilledServer, CancelsARasterJobThatHadBegun) {
  SlowPrinter printer;
  printer.comeBack(5000);
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  const std::vector<RasterPage> pages(60, flatPage(576, 1600, 255));
  const auto file = server.folder() / "long.pwg";
  std::ofstream(file, std::ios::binary) << rasterStream(RasterKind::kPwg, pages);
  // Raster is printed as it comes in: the client is not answered before the end.
  std::thread client([&] {
    server.run({"submit", "-d", "till", "-o", "document-format=image/pwg-raster", file.string()});
  });
  EXPECT_TRUE(printer.waitForBytes(5000)) << server.log();
  server.stop(SIGKILL);
  client.join();
  server.start();
  EXPECT_EQ(server.stateOf("till", 1), "canceled");
  EXPECT_EQ(server.jobAttribute("till", 1, "job-state-message"), "interrupted, not printed again");
}

// Between the last byte and the saved state as well.
TEST(KilledServer, PrintsNoJobTwice) {
  for (const int milliseconds : {0, 1, 2, 5, 10, 20, 50, 100, 300}) {
    SCOPED_TRACE(milliseconds);
    SlowPrinter printer;
    printer.comeBack();
    RunningServer server;
    addPrinter(server, "till", printer.uri());
    const int job = server.submit("till", kReceipt);
    ASSERT_TRUE(printer.waitForBytes(1)) << server.log();
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    server.stop(SIGKILL);
    server.start();
    EXPECT_THAT(server.stateOf("till", job), testing::AnyOf("canceled", "completed"));
    const int next = server.submit("till", kReceipt);
    EXPECT_TRUE(server.waitForState("till", next, "completed")) << server.log();
    EXPECT_EQ(jobsAt(printer), 2U);
  }
}

TEST(KilledServer, LeavesNoNumberOfAJobBehindThatStopsALaterOne) {
  SlowPrinter printer;
  printer.comeBack();
  RunningServer server;
  addPrinter(server, "till", printer.uri());
  ASSERT_TRUE(server.waitUntilSaved("till"));
  server.stop(SIGKILL);
  // The process was killed between this note and the saved state.
  std::ofstream(server.stateFolder() / "begun" / "printer-1-job-1");
  server.start();
  const int job = server.submit("till", kReceipt);
  EXPECT_EQ(job, 1);
  EXPECT_TRUE(server.waitForState("till", job, "completed")) << server.log();
}

}  // namespace
}  // namespace wren_test
