// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/print_server.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include "preview/picture_worker.h"
#include "tests/escpos/printer_streams.h"
#include "tests/preview/failing_accept.h"
#include "tests/preview/loopback_client.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/recorded_calls.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

const Bytes kJob =
    streams::job(hex("1B3C") + bitImage(1, hex("FF FF FF FF FF FF FF FF")) + feed(16) + feed(16));

// A server on a free port in its own thread. Its output is captured from start() to stop().
class PrintServerTest : public testing::Test {
 protected:
  PrintServerTest() {
    options_.address = "127.0.0.1:0";
    options_.directory = folder_.path();
    options_.maxSeconds = 30;
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    stopRead_ = FileDescriptor(ends[0]);
    stopWrite_ = FileDescriptor(ends[1]);
  }
  ~PrintServerTest() override {
    if (thread_.joinable()) stop();
    // The captured output has the failures too.
    if (HasFailure()) std::fputs((out_ + err_).c_str(), stdout);
  }

  void start() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    server_ = std::make_unique<PrintServer>(options_, stopRead_.get());
    ASSERT_EQ(server_->open(), "");
    thread_ = std::thread([this] { endedWell_ = server_->serve(); });
  }

  void stop() {
    EXPECT_EQ(::write(stopWrite_.get(), "x", 1), 1);
    thread_.join();
    out_ = testing::internal::GetCapturedStdout();
    err_ = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(endedWell_);
  }

  void print(const Bytes& bytes) {
    LoopbackClient client(server_->name());
    ASSERT_TRUE(client.connected());
    EXPECT_TRUE(client.send(bytes));
    client.endAndWait();
  }

  std::string file(const std::string& name) const { return folder_.file(name); }

  const ScratchFolder folder_;
  Options options_;
  FileDescriptor stopRead_;
  FileDescriptor stopWrite_;
  std::unique_ptr<PrintServer> server_;
  std::thread thread_;
  bool endedWell_ = false;
  std::string out_;
  std::string err_;
};

TEST_F(PrintServerTest, StoresAJobAndItsPicture) {
  start();
  print(kJob);
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), kJob);
  EXPECT_EQ(readPng(file("job-0001.png")).height, 16u);
  stop();
  EXPECT_EQ(out_, file("job-0001.prn") +
                      ": 1 page, 2.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, 108 bytes, " +
                      file("job-0001.png") + "\n");
  EXPECT_EQ(err_, "");
}

TEST_F(PrintServerTest, ServesWaitingConnectionsOneAfterAnother) {
  start();
  std::vector<std::unique_ptr<LoopbackClient>> clients;
  for (int i = 0; i < 5; ++i) {
    clients.push_back(std::make_unique<LoopbackClient>(server_->name()));
    ASSERT_TRUE(clients.back()->connected());
  }
  for (std::size_t i = 0; i < clients.size(); ++i) {
    EXPECT_TRUE(clients[i]->send(kJob + streams::repeat(i, 0)));
    clients[i]->endAndWait();
  }
  for (std::size_t i = 0; i < clients.size(); ++i) {
    const auto kept = bytesOfFile(file("job-000" + std::to_string(i + 1) + ".prn"));
    EXPECT_EQ(kept.size(), kJob.size() + i);
  }
}

TEST_F(PrintServerTest, ReceivesAJobByteByByte) {
  start();
  LoopbackClient client(server_->name());
  for (const std::uint8_t byte : kJob) EXPECT_TRUE(client.send({byte}));
  client.endAndWait();
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), kJob);
}

TEST_F(PrintServerTest, NeverOverwritesAnEarlierJob) {
  folder_.write("job-0001.prn", hex("01"));
  folder_.write("job-0003.prn", hex("03"));
  start();
  print(kJob);
  print(kJob);
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), hex("01"));
  EXPECT_EQ(bytesOfFile(file("job-0002.prn")), kJob);
  EXPECT_EQ(bytesOfFile(file("job-0003.prn")), hex("03"));
  EXPECT_EQ(bytesOfFile(file("job-0004.prn")), kJob);
}

TEST_F(PrintServerTest, NeverOverwritesAPicture) {
  folder_.write("job-0001.png", hex("01"));
  folder_.write("job-0002-1.png", hex("02"));
  std::filesystem::create_symlink("nowhere", file("job-0003.png"));
  std::filesystem::create_symlink("nowhere", file("job-0004.prn"));
  start();
  print(kJob);
  EXPECT_EQ(bytesOfFile(file("job-0001.png")), hex("01"));
  EXPECT_EQ(bytesOfFile(file("job-0002-1.png")), hex("02"));
  EXPECT_FALSE(std::filesystem::exists(file("nowhere")));
  for (const char* absent : {"job-0001.prn", "job-0002.prn", "job-0003.prn"}) {
    EXPECT_FALSE(std::filesystem::exists(file(absent))) << absent;
  }
  EXPECT_EQ(bytesOfFile(file("job-0005.prn")), kJob);
  EXPECT_EQ(readPng(file("job-0005.png")).height, 16u);
}

// The file appears while the job is received.
TEST_F(PrintServerTest, KeepsAPictureThatAppearsMeanwhile) {
  start();
  LoopbackClient client(server_->name());
  EXPECT_TRUE(client.send({kJob.begin(), kJob.begin() + 98}));
  while (!std::filesystem::exists(file("job-0001.prn"))) std::this_thread::yield();
  folder_.write("job-0001.png", hex("01"));
  client.endAndWait();
  stop();
  EXPECT_EQ(bytesOfFile(file("job-0001.png")), hex("01"));
  EXPECT_NE(out_.find("job-0001.png: File exists"), std::string::npos) << out_;
}

// 19 kB that print 80 m of paper, 4096 dots wide.
Bytes hostileJob() {
  Bytes job = bitImage(1, streams::repeat(4096, 0x80));
  for (int i = 0; i < 5000; ++i) job = job + feed(255);
  return job;
}

TEST_F(PrintServerTest, ServesOtherJobsWhileAHostileOneIsDrawn) {
  options_.style.scale = 16;
  start();
  LoopbackClient hostile(server_->name());
  EXPECT_TRUE(hostile.send(hostileJob()));
  hostile.endInput();
  for (int i = 0; i < 3; ++i) {
    LoopbackClient next(server_->name());
    EXPECT_TRUE(next.send(kJob));
    next.endInput();
    EXPECT_EQ(next.read(1, 0.01), Bytes());
  }
  for (const char* name : {"job-0002.prn", "job-0003.prn", "job-0004.prn"}) {
    for (int i = 0; i < 2000 && bytesOfFile(file(name)).size() != kJob.size(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(bytesOfFile(file(name)), kJob);
  }
  EXPECT_FALSE(std::filesystem::exists(file("job-0002.png"))) << "the hostile job is not drawn yet";
}

// No connection is accepted meanwhile, and nothing wakes the server but its own clock.
TEST_F(PrintServerTest, AcceptsConnectionsAgainWhenFewerJobsWaitToBeDrawn) {
  constexpr std::size_t kJobs = PictureWorker::kMaxWaiting + 5;
  options_.style.scale = 4;
  start();
  LoopbackClient large(server_->name());
  Bytes job = bitImage(1, streams::repeat(4096, 0x80));
  for (int i = 0; i < 40; ++i) job = job + feed(255);
  EXPECT_TRUE(large.send(job));
  large.endInput();
  std::vector<std::unique_ptr<LoopbackClient>> clients;
  for (std::size_t i = 0; i < kJobs; ++i) {
    clients.push_back(std::make_unique<LoopbackClient>(server_->name()));
    EXPECT_TRUE(clients.back()->send(kJob));
    clients.back()->endInput();
  }
  char name[32];
  std::snprintf(name, sizeof name, "job-%04zu.png", kJobs + 1);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (std::chrono::steady_clock::now() < end && !std::filesystem::exists(file(name))) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(std::filesystem::exists(file(name))) << name;
}

TEST_F(PrintServerTest, StopsWhileAHostileJobIsDrawn) {
  options_.style.scale = 16;
  start();
  LoopbackClient hostile(server_->name());
  EXPECT_TRUE(hostile.send(hostileJob()));
  hostile.endInput();
  while (!std::filesystem::exists(file("job-0001.png"))) std::this_thread::yield();
  const auto before = std::chrono::steady_clock::now();
  stop();
  // A tenth of a second is promised; another program may have the processor meanwhile.
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(500));
  EXPECT_NE(out_.find("job-0001.png: cancelled"), std::string::npos) << out_;
  EXPECT_FALSE(std::filesystem::exists(file("job-0001.png")));
}

TEST_F(PrintServerTest, CutsThePictureOfAHostileJob) {
  options_.style.scale = 16;
  folder_.write("hostile.prn", hostileJob());
  start();
  print(hostileJob());
  stop();
  // 800,000,000 pixels are 12,207 rows of 65,536, that is 762.9 rows of dots at 203 dpi.
  EXPECT_NE(out_.find("job-0001.png: ends after 95.5 mm; a job has at most 800000000 pixels in "
                      "10000 pictures"),
            std::string::npos)
      << out_;
}

TEST(AcceptErrors, EndTheServerOnlyIfTheyAreOfItsSocket) {
  for (const int code : {EAGAIN, EINTR, ECONNABORTED, EPROTO}) {
    EXPECT_EQ(acceptErrorOf(code), AcceptError::kOfConnection) << code;
  }
  for (const int code : {EMFILE, ENFILE, ENOBUFS, ENOMEM}) {
    EXPECT_EQ(acceptErrorOf(code), AcceptError::kOfResources) << code;
  }
  for (const int code : {EBADF, EINVAL, ENOTSOCK}) {
    EXPECT_EQ(acceptErrorOf(code), AcceptError::kOfListener) << code;
  }
}

// A connection that went away, or too many files for a while, cost no job.
TEST_F(PrintServerTest, OutlivesErrorsThatAreNotOfItsSocket) {
  failNextAccepts({ECONNABORTED, EINTR, EPROTO, EMFILE});
  start();
  print(kJob);
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), kJob);
  EXPECT_EQ(acceptErrorsLeft(), 0U);
  const std::string name = server_->name();
  stop();
  EXPECT_EQ(err_, "wren-preview: " + name + ": " + std::strerror(EMFILE) + "\n");
}

// The second shortage comes after a connection that was accepted.
TEST_F(PrintServerTest, ReportsEachShortageOnce) {
  failNextAccepts({EMFILE, EMFILE, ENFILE});
  start();
  print(kJob);
  failNextAccepts({ENFILE});
  print(kJob);
  const std::string name = server_->name();
  stop();
  const std::string message = "wren-preview: " + name + ": ";
  EXPECT_EQ(err_, message + std::strerror(EMFILE) + "\n" + message + std::strerror(ENFILE) + "\n" +
                      message + std::strerror(ENFILE) + "\n");
}

// Three errors are two pauses of 50 ms; without them the processor would be busy.
TEST_F(PrintServerTest, PausesAfterAShortage) {
  failNextAccepts(std::vector<int>(1000, EMFILE));
  start();
  const auto before = std::chrono::steady_clock::now();
  const LoopbackClient client(server_->name());
  while (acceptErrorsLeft() > 997) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(95));
  failNextAccepts({});
}

TEST_F(PrintServerTest, EndsWithAnErrorOfItsSocket) {
  failNextAccepts({EINVAL});
  start();
  const LoopbackClient client(server_->name());
  thread_.join();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "wren-preview: " + server_->name() + ": " + std::strerror(EINVAL) + "\n");
  EXPECT_FALSE(endedWell_);
}

TEST_F(PrintServerTest, WritesNoFilesForAConnectionWithoutBytes) {
  start();
  print({});
  stop();
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  EXPECT_EQ(err_, "wren-preview: a connection without a job\n");
}

TEST_F(PrintServerTest, EndsAJobAtTheLimitOfBytes) {
  options_.maxBytes = 100;
  start();
  LoopbackClient client(server_->name());
  client.send(kJob);
  client.waitForClose();
  print({kJob.begin(), kJob.begin() + 100});
  stop();
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")).size(), 100u);
  EXPECT_EQ(readPng(file("job-0001.png")).height, 16u);
  EXPECT_NE(out_.find("cut short after 100 bytes"), std::string::npos) << out_;
  EXPECT_EQ(out_.find("cut short", out_.find('\n')), std::string::npos) << out_;
}

TEST_F(PrintServerTest, EndsAJobAtTheLimitOfTime) {
  options_.maxSeconds = 1;
  start();
  const auto before = std::chrono::steady_clock::now();
  LoopbackClient silent(server_->name());
  EXPECT_TRUE(silent.send({kJob.begin(), kJob.begin() + 90}));
  silent.waitForClose();
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
  print(kJob);
  stop();
  EXPECT_NE(out_.find("cut short after 1 s"), std::string::npos) << out_;
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")).size(), 90u);
  EXPECT_EQ(bytesOfFile(file("job-0002.prn")), kJob);
}

TEST_F(PrintServerTest, ShowsProgressOfALongJob) {
  const auto before = std::chrono::steady_clock::now();
  start();
  LoopbackClient slow(server_->name());
  EXPECT_TRUE(slow.send({kJob.begin(), kJob.begin() + 98}));
  std::this_thread::sleep_for(std::chrono::milliseconds(1300));
  EXPECT_TRUE(slow.send({kJob.begin() + 98, kJob.end()}));
  slow.endAndWait();
  stop();
  const std::string line = "wren-preview: " + file("job-0001.prn") + ": 98 bytes, 2.0 mm so far\n";
  EXPECT_EQ(err_.substr(0, line.size()), line);
  const auto seconds =
      std::chrono::ceil<std::chrono::seconds>(std::chrono::steady_clock::now() - before);
  EXPECT_LE(std::count(err_.begin(), err_.end(), '\n'), seconds.count()) << "one a second";
}

TEST_F(PrintServerTest, ContinuesAfterAConnectionReset) {
  start();
  LoopbackClient client(server_->name());
  EXPECT_TRUE(client.send(hex("1B40")));
  client.abort();
  print(kJob);
  stop();
  EXPECT_EQ(out_, file("job-0001.prn") +
                      ": 0 pages, 0.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, 2 bytes, cut short: "
                      "Connection reset by peer\n" +
                      file("job-0002.prn") +
                      ": 1 page, 2.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, 108 bytes, " +
                      file("job-0002.png") + "\n");
}

TEST_F(PrintServerTest, SaysWhyAConnectionLeftNoJob) {
  start();
  LoopbackClient(server_->name()).abort();
  print({});
  stop();
  EXPECT_EQ(out_, "");
  EXPECT_EQ(err_,
            "wren-preview: a connection without a job: cut short: Connection reset by peer\n"
            "wren-preview: a connection without a job\n");
}

// A host that asks all day fills neither the memory nor the folder.
TEST_F(PrintServerTest, KeepsRequestsOfStatusUpTo64KiB) {
  const auto requests = [](int count) {
    Bytes bytes;
    for (int i = 0; i < count; ++i) bytes = std::move(bytes) + hex("1D7201");
    return bytes;
  };
  start();
  print(requests(21'846));  // the last of them begins below 65,536 bytes
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  print(requests(21'847));
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), requests(21'847));
  stop();
  EXPECT_EQ(err_, "");
}

// The window of a socket follows the buffer. 32 connections wait while a job is received.
TEST_F(PrintServerTest, AsksItsSocketsForItsLimits) {
  forgetCalls();
  options_.controlAddress = "127.0.0.1:0";
  start();
  EXPECT_EQ(recordedBacklogs(), (std::vector<long>{32, 32})) << "jobs and commands";
  EXPECT_EQ(recordedSocketOptions(SO_RCVBUF), std::vector<long>{65536});
  LoopbackClient session(server_->controlName());
  session.send({'b', 'u', 'f', 'f', 'e', 'r', ' ', '5', '\n'});
  EXPECT_EQ(session.readLine(), "ok");
  EXPECT_EQ(recordedSocketOptions(SO_RCVBUF).back(), 5120);
}

TEST_F(PrintServerTest, ReportsAFaultyJobAndContinues) {
  start();
  print(kJob + hex("41"));
  print(kJob);
  stop();
  EXPECT_NE(out_.find(", 109 bytes, 1 problem, "), std::string::npos) << out_;
  EXPECT_EQ(err_, "wren-preview: " + file("job-0001.prn") + ": offset 108: 1 unknown byte\n");
  EXPECT_EQ(readPng(file("job-0001.png")).height, 16u);
  EXPECT_EQ(readPng(file("job-0002.png")).height, 16u);
}

TEST_F(PrintServerTest, KeepsThePartialJobWhenItIsStopped) {
  start();
  LoopbackClient client(server_->name());
  EXPECT_TRUE(client.send({kJob.begin(), kJob.begin() + 98}));
  while (!std::filesystem::exists(file("job-0001.prn"))) std::this_thread::yield();
  stop();
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")).size(), 98u);
  EXPECT_EQ(readPng(file("job-0001.png")).height, 16u);
  EXPECT_NE(out_.find("cut short by the end of the printer"), std::string::npos) << out_;
}

TEST_F(PrintServerTest, ReportsAMissingFolder) {
  options_.directory = file("gone");
  start();
  LoopbackClient client(server_->name());
  client.send(kJob);
  client.waitForClose();
  stop();
  const std::string missing = ": No such file or directory";
  EXPECT_EQ(out_, file("gone/job-0001.prn") +
                      ": 1 page, 2.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, 108 bytes, cut short, " +
                      file("gone/job-0001.png") + missing + ", " + file("gone/job-0001.prn") +
                      missing + "\n");
}

TEST_F(PrintServerTest, DoesNotOpenWithWhatItCannotUse) {
  const auto errorOf = [&](const Options& options) {
    return PrintServer(options, stopRead_.get()).open();
  };
  Options options = options_;
  options.address = "x";
  EXPECT_EQ(errorOf(options), "x: not [HOST:]PORT");
  options.address = "192.0.2.1:0";
  EXPECT_EQ(errorOf(options),
            "192.0.2.1:0: not a loopback address; only this computer may print here");
  const LoopbackSocket taken = openLoopbackSocket({"127.0.0.1", "0"});
  options.address = "127.0.0.1:0";
  options.controlAddress = taken.name;
  EXPECT_EQ(errorOf(options), taken.name + ": Address already in use");
  options.controlAddress = "";
  options.faults = {"paper out", "paper"};
  EXPECT_EQ(errorOf(options), "error: 'paper' is no command");
  options.faults = std::vector<std::string>(101, "stall after 1000 ms");
  EXPECT_EQ(errorOf(options), "error: too many commands wait already");
  options.faults.pop_back();
  EXPECT_EQ(errorOf(options), "");
}

}  // namespace
}  // namespace wren::preview
