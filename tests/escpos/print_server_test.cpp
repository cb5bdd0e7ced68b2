// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/preview/print_server.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/escpos/loopback_client.h"
#include "tests/escpos/png_reading.h"
#include "tests/escpos/scratch_folder.h"
#include "tests/escpos/streams.h"

namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

const Bytes kJob =
    streams::job(hex("1B3C") + bitImage(1, hex("FF FF FF FF FF FF FF FF")) + feed(16) + feed(16));

// A server on a free port, in a thread of its own; its output is captured from start to stop.
class PrintServerTest : public testing::Test {
 protected:
  PrintServerTest() {
    options_.address = "127.0.0.1:0";
    options_.directory = folder_.path();
    options_.maxSeconds = 30;
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    stopRead_ = preview::FileDescriptor(ends[0]);
    stopWrite_ = preview::FileDescriptor(ends[1]);
  }
  ~PrintServerTest() override {
    if (thread_.joinable()) stop();
  }

  void start() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    server_ = std::make_unique<preview::PrintServer>(options_, stopRead_.get());
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
  preview::Options options_;
  preview::FileDescriptor stopRead_;
  preview::FileDescriptor stopWrite_;
  std::unique_ptr<preview::PrintServer> server_;
  std::thread thread_;
  bool endedWell_ = false;
  std::string out_;
  std::string err_;
};

TEST_F(PrintServerTest, KeepsAJobAndDrawsIt) {
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

TEST_F(PrintServerTest, TakesConnectionsThatWaitOneAfterAnother) {
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

TEST_F(PrintServerTest, TakesAJobByteByByte) {
  start();
  LoopbackClient client(server_->name());
  for (const std::uint8_t byte : kJob) EXPECT_TRUE(client.send({byte}));
  client.endAndWait();
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")), kJob);
}

TEST_F(PrintServerTest, NeverWritesOverAnEarlierJob) {
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

TEST_F(PrintServerTest, LeavesNoFilesOfAConnectionWithoutBytes) {
  start();
  print({});
  stop();
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  EXPECT_EQ(err_, "wren-preview: a connection without a job\n");
}

TEST_F(PrintServerTest, TakesNoMoreBytesThanTheLimit) {
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

TEST_F(PrintServerTest, EndsAJobThatTakesTooLong) {
  options_.maxSeconds = 1;
  start();
  LoopbackClient silent(server_->name());
  EXPECT_TRUE(silent.send({kJob.begin(), kJob.begin() + 90}));
  silent.waitForClose();
  print(kJob);
  stop();
  EXPECT_NE(out_.find("cut short after 1 s"), std::string::npos) << out_;
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")).size(), 90u);
  EXPECT_EQ(bytesOfFile(file("job-0002.prn")), kJob);
}

TEST_F(PrintServerTest, ShowsProgressOfALongJob) {
  start();
  LoopbackClient slow(server_->name());
  EXPECT_TRUE(slow.send({kJob.begin(), kJob.begin() + 98}));
  std::this_thread::sleep_for(std::chrono::milliseconds(1300));
  EXPECT_TRUE(slow.send({kJob.begin() + 98, kJob.end()}));
  slow.endAndWait();
  stop();
  EXPECT_NE(err_.find("job-0001.prn: 98 bytes, 2.0 mm so far\n"), std::string::npos) << err_;
}

TEST_F(PrintServerTest, OutlivesASenderThatBreaksOff) {
  start();
  LoopbackClient rude(server_->name());
  EXPECT_TRUE(rude.send(hex("1B40")));
  rude.abort();
  print(kJob);
  stop();
  EXPECT_NE(out_.find("1 page, 2.0 mm"), std::string::npos) << out_;
}

TEST_F(PrintServerTest, ReportsABadJobAndGoesOn) {
  start();
  print(kJob + hex("41"));
  print(kJob);
  stop();
  EXPECT_NE(out_.find(", 109 bytes, 1 problem, "), std::string::npos) << out_;
  EXPECT_EQ(err_, "wren-preview: " + file("job-0001.prn") + ": offset 108: 1 unknown byte\n");
  EXPECT_EQ(readPng(file("job-0001.png")).height, 16u);
  EXPECT_EQ(readPng(file("job-0002.png")).height, 16u);
}

TEST_F(PrintServerTest, KeepsWhatCameWhenItIsStopped) {
  start();
  LoopbackClient client(server_->name());
  EXPECT_TRUE(client.send({kJob.begin(), kJob.begin() + 98}));
  while (!std::filesystem::exists(file("job-0001.prn"))) std::this_thread::yield();
  stop();
  EXPECT_EQ(bytesOfFile(file("job-0001.prn")).size(), 98u);
  EXPECT_EQ(readPng(file("job-0001.png")).height, 16u);
  EXPECT_NE(out_.find("cut short by the end of the printer"), std::string::npos) << out_;
}

TEST_F(PrintServerTest, ReportsAFolderThatIsGone) {
  options_.directory = file("gone");
  start();
  LoopbackClient client(server_->name());
  client.send(kJob);
  client.waitForClose();
  stop();
  EXPECT_NE(out_.find("job-0001.prn: No such file or directory"), std::string::npos) << out_;
}

TEST(ListenAddress, IsAPortWithOrWithoutAHost) {
  const auto shown = [](const std::string& text) {
    const auto address = preview::parseListenAddress(text);
    return address ? address->host + " " + address->port : "none";
  };
  EXPECT_EQ(shown("9100"), "127.0.0.1 9100");
  EXPECT_EQ(shown("0"), "127.0.0.1 0");
  EXPECT_EQ(shown("localhost:65535"), "localhost 65535");
  EXPECT_EQ(shown("[::1]:9100"), "::1 9100");
  for (const char* wrong :
       {"", ":", ":9100", "9100:", "65536", "-1", "http", "::1:9100", "[]:1", "host:99999999999"}) {
    EXPECT_EQ(shown(wrong), "none") << wrong;
  }
}

TEST(LoopbackSocket, RefusesAddressesThatOthersCanReach) {
  for (const char* host : {"0.0.0.0", "192.0.2.1", "::"}) {
    const auto opened = preview::openLoopbackSocket({host, "0"});
    EXPECT_FALSE(opened.socket) << host;
    EXPECT_EQ(opened.error, "not a loopback address; only this computer may print here") << host;
  }
}

TEST(LoopbackSocket, SaysWhichPortItGot) {
  const auto opened = preview::openLoopbackSocket({"127.0.0.1", "0"});
  ASSERT_TRUE(opened.socket) << opened.error;
  EXPECT_EQ(opened.name.substr(0, 10), "127.0.0.1:");
  EXPECT_NE(opened.name, "127.0.0.1:0");
  const auto taken = preview::openLoopbackSocket({"127.0.0.1", opened.name.substr(10)});
  EXPECT_FALSE(taken.socket);
  EXPECT_EQ(taken.error, "Address already in use");
}

}  // namespace
