// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Clients that stop in the middle of what they send.

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "common/handles.h"
#include "tests/app/running_app.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kPwg = "image/pwg-raster";
constexpr std::chrono::seconds kLimit(2);
constexpr std::chrono::milliseconds kPause(500);

AppSetup withLimit() {
  return {.options = {"--client-timeout", std::to_string(kLimit.count())}};
}

std::string document() {
  return rasterStream(RasterKind::kPwg, {noisePage(576, 400, 1)});
}

std::string ippText(char tag, const std::string& name, const std::string& value) {
  const auto length = [](const std::string& text) {
    return std::string{static_cast<char>(text.size() >> 8), static_cast<char>(text.size() & 0xFF)};
  };
  return tag + length(name) + name + length(value) + value;
}

std::string printJobRequest(const std::string& uri) {
  return std::string("\x02\x00\x00\x02\x00\x00\x00\x01\x01", 9) +
         ippText('\x47', "attributes-charset", "utf-8") +
         ippText('\x48', "attributes-natural-language", "en") +
         ippText('\x45', "printer-uri", uri) + ippText('\x42', "requesting-user-name", "tester") +
         ippText('\x49', "document-format", kPwg) + '\x03';
}

std::string httpHead(const std::string& bodyHeader) {
  return "POST /ipp/print/wren HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/ipp\r\n" +
         bodyHeader + "\r\n\r\n";
}

/// A connection of plain HTTP that sends what it is told and no more.
class Connection {
 public:
  explicit Connection(int port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }

  void send(const std::string& bytes) {
    EXPECT_EQ(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }

  /// How long the server lets the connection live from now; at most `limit`.
  Clock::duration lifeTime(std::chrono::seconds limit) {
    const auto start = Clock::now();
    pollfd poll = {socket_.get(), POLLIN, 0};
    char buffer[4096];
    while (Clock::now() - start < limit) {
      if (::poll(&poll, 1, 100) > 0 && ::recv(socket_.get(), buffer, sizeof buffer, 0) <= 0) break;
    }
    return Clock::now() - start;
  }

 private:
  wren::FileDescriptor socket_;
};

/// Prints a document, again while the printer is still busy with another job.
JobOutcome printWhenFree(RunningApp& app) {
  for (;;) {
    const JobOutcome outcome = app.print(document(), kPwg);
    if (outcome.status != IPP_STATUS_ERROR_BUSY) return outcome;
  }
}

class StalledClient : public testing::TestWithParam<const char*> {};

TEST_P(StalledClient, IsDroppedAndTheNextJobPrints) {
  RunningApp app(withLimit());
  const std::string body = printJobRequest(app.printerUri()) + document();
  const std::string half = body.substr(0, body.size() / 2);
  Connection client(app.port());
  if (std::string(GetParam()) == "length") {
    client.send(httpHead("Content-Length: " + std::to_string(body.size())) + half);
  } else if (std::string(GetParam()) == "chunks") {
    char size[20];
    std::snprintf(size, sizeof size, "%zx\r\n", half.size());
    client.send(httpHead("Transfer-Encoding: chunked") + size + half + "\r\n");
  } else {
    client.send("POST /ipp/print/wr");
  }
  const auto life = client.lifeTime(std::chrono::seconds(20));
  EXPECT_GE(life, kLimit - std::chrono::milliseconds(500));
  EXPECT_LT(life, 2 * kLimit);
  const JobOutcome next = printWhenFree(app);
  EXPECT_EQ(next.state, IPP_JSTATE_COMPLETED) << next.message;
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(In, StalledClient, testing::Values("length", "chunks", "header"));

TEST(SlowClient, IsNotDropped) {
  RunningApp app(withLimit());
  const std::string body = printJobRequest(app.printerUri()) + document();
  Connection client(app.port());
  client.send(httpHead("Content-Length: " + std::to_string(body.size())) + body.substr(0, 3000));
  // Longer than the limit altogether.
  for (std::size_t sent = 3000; sent < 3006; ++sent) {
    std::this_thread::sleep_for(kPause);
    client.send(body.substr(sent, 1));
  }
  client.send(body.substr(3006));
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_COMPLETED);
}

}  // namespace
}  // namespace wren_test
