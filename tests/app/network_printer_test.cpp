// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/network_printer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "tests/app/scripted_printer.h"

namespace wren::app {

void PrintTo(const NetworkAddress& address, std::ostream* out);

void PrintTo(const NetworkAddress& address, std::ostream* out) {
  *out << address.host << " port " << address.port;
}

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// More than the buffers of both sides hold, where the printer's is kSmallBuffer.
constexpr std::size_t kManyBytes = 300'000;
constexpr int kSmallBuffer = 4096;
constexpr milliseconds kLong(10'000);

void readAll(ScriptedPrinter& printer) {
  printer.readAll();
}

void readNothing(ScriptedPrinter& printer) {
  printer.pause(kLong);
}

milliseconds since(Clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

/// A cancel that comes after a time.
class LateCancel {
 public:
  explicit LateCancel(milliseconds delay) : when_(Clock::now() + delay) {}
  CancelCheck check() const { return {isDue, this}; }
  milliseconds sinceThen() const { return since(when_); }

 private:
  static bool isDue(const void* self) {
    return Clock::now() >= static_cast<const LateCancel*>(self)->when_;
  }
  Clock::time_point when_;
};

NetworkPrinter connected(const ScriptedPrinter& printer) {
  NetworkPrinter link;
  EXPECT_EQ(link.connect(*parseNetworkUri(printer.uri()), {kLong}), LinkResult::kDone)
      << link.error();
  return link;
}

TEST(NetworkUri, GivesHostAndPort) {
  const struct {
    const char* uri;
    NetworkAddress address;
  } cases[] = {
      {"socket://till", {"till", "9100"}},
      {"socket://till/", {"till", "9100"}},
      {"socket://till:9101", {"till", "9101"}},
      {"socket://192.0.2.7:9100/?waiteof=false", {"192.0.2.7", "9100"}},
      {"socket://[::1]", {"::1", "9100"}},
      {"socket://[2001:db8::7]:65535/", {"2001:db8::7", "65535"}},
  };
  for (const auto& one : cases) {
    const auto address = parseNetworkUri(one.uri);
    ASSERT_TRUE(address.has_value()) << one.uri;
    EXPECT_EQ(*address, one.address) << one.uri;
  }
}

TEST(NetworkUri, RefusesWhatHasNoHostOrNoPort) {
  for (const char* uri : {"", "till", "://till", "socket://", "socket:///", "socket://:9100",
                          "socket://till:", "socket://till:0", "socket://till:65536",
                          "socket://till:91a0", "socket://till:-1", "socket://[::1",
                          "socket://[::1]9100", "socket://[]:9100", "socket://user@till"}) {
    EXPECT_FALSE(parseNetworkUri(uri).has_value()) << uri;
  }
}

TEST(NetworkPrinter, SendsEveryByteInOrder) {
  ScriptedPrinter printer(readAll);
  const Bytes bytes = sampleBytes(kManyBytes);
  NetworkPrinter link = connected(printer);
  std::size_t taken = 0;
  EXPECT_EQ(link.write(bytes, {}, taken), LinkResult::kDone);
  EXPECT_EQ(taken, bytes.size());
  EXPECT_EQ(link.finish({kLong}), LinkResult::kDone);
  EXPECT_THAT(printer.received(), testing::ContainerEq(bytes));
}

TEST(NetworkPrinter, ConnectsToANameAndToAnIpv6Address) {
  ScriptedPrinter four(readAll);
  ScriptedPrinter six(readAll, 0, true);
  for (const NetworkAddress& address :
       {NetworkAddress{"localhost", four.port()}, NetworkAddress{"::1", six.port()}}) {
    NetworkPrinter link;
    EXPECT_EQ(link.connect(address, {kLong}), LinkResult::kDone)
        << address.host << ": " << link.error();
  }
}

TEST(NetworkPrinter, WaitsWhileThePrinterTakesNoBytes) {
  ScriptedPrinter printer(
      [](ScriptedPrinter& self) {
        self.read(1000);
        self.pause(milliseconds(300));
        self.readAll();
      },
      kSmallBuffer);
  const Bytes bytes = sampleBytes(kManyBytes);
  NetworkPrinter link = connected(printer);
  const auto start = Clock::now();
  std::size_t taken = 0;
  EXPECT_EQ(link.write(bytes, {}, taken), LinkResult::kDone);
  EXPECT_GE(since(start), milliseconds(250));
  EXPECT_EQ(link.finish({kLong}), LinkResult::kDone);
  EXPECT_THAT(printer.received(), testing::ContainerEq(bytes));
}

TEST(NetworkPrinter, ACancelEndsABlockedWriteSoon) {
  ScriptedPrinter printer(readNothing, kSmallBuffer);
  NetworkPrinter link = connected(printer);
  const LateCancel cancel(milliseconds(200));
  std::size_t taken = 0;
  const auto result =
      link.write(sampleBytes(kManyBytes), {Patience::kForever, cancel.check()}, taken);
  EXPECT_LT(cancel.sinceThen(), milliseconds(100));
  EXPECT_EQ(result, LinkResult::kCancelled);
  EXPECT_GT(taken, 0U);
  EXPECT_LT(taken, kManyBytes);
}

TEST(NetworkPrinter, AWriteThatTimedOutGoesOnWhereItStopped) {
  std::atomic<bool> paper{false};
  ScriptedPrinter printer(
      [&paper](ScriptedPrinter& self) {
        self.pauseUntil([&paper] { return paper.load(); });
        self.readAll();
      },
      kSmallBuffer);
  const Bytes bytes = sampleBytes(kManyBytes);
  NetworkPrinter link = connected(printer);
  std::size_t first = 0;
  ASSERT_EQ(link.write(bytes, {milliseconds(100)}, first), LinkResult::kTimedOut);
  ASSERT_LT(first, bytes.size());
  paper = true;
  std::size_t second = 0;
  EXPECT_EQ(link.write(std::span(bytes).subspan(first), {kLong}, second), LinkResult::kDone);
  EXPECT_EQ(first + second, bytes.size());
  EXPECT_EQ(link.finish({kLong}), LinkResult::kDone);
  EXPECT_THAT(printer.received(), testing::ContainerEq(bytes));
}

TEST(NetworkPrinter, CallsAResetConnectionClosed) {
  ScriptedPrinter printer(
      [](ScriptedPrinter& self) {
        self.read(1000);
        self.reset();
      },
      kSmallBuffer);
  NetworkPrinter link = connected(printer);
  std::size_t taken = 0;
  EXPECT_EQ(link.write(sampleBytes(kManyBytes), {kLong}, taken), LinkResult::kClosed);
  EXPECT_LT(taken, kManyBytes);
  EXPECT_NE(link.error(), "");
  EXPECT_FALSE(link.isOpen());
}

TEST(NetworkPrinter, SendsNothingIntoAConnectionThatThePrinterClosed) {
  ScriptedPrinter printer([](ScriptedPrinter&) {});
  NetworkPrinter link = connected(printer);
  EXPECT_EQ(link.waitForAnswer({kLong}), LinkResult::kClosed);
  std::size_t taken = 1;
  EXPECT_EQ(link.write(sampleBytes(10), {kLong}, taken), LinkResult::kClosed);
  EXPECT_EQ(taken, 0U);
}

TEST(NetworkPrinter, SaysWhyItCannotConnect) {
  std::string freePort;
  {
    ScriptedPrinter gone(readAll);
    freePort = gone.port();
  }
  NetworkPrinter link;
  EXPECT_EQ(link.connect({"127.0.0.1", freePort}, {kLong}), LinkResult::kClosed);
  EXPECT_EQ(link.error(), "Connection refused");
}

/// A port that answers no connection: its queue of waiting ones is full.
class FullListener {
 public:
  FullListener() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* any = reinterpret_cast<sockaddr*>(&address);
    ::bind(socket_.get(), any, length);
    ::listen(socket_.get(), 0);
    ::getsockname(socket_.get(), any, &length);
    port_ = ntohs(address.sin_port);
    for (int i = 0; i < 4; ++i) {
      waiting_.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
      ::connect(waiting_.back().get(), any, length);
    }
  }
  NetworkAddress address() const { return {"127.0.0.1", std::to_string(port_)}; }

 private:
  FileDescriptor socket_;
  std::vector<FileDescriptor> waiting_;
  unsigned port_ = 0;
};

TEST(NetworkPrinter, StopsConnectingAtItsTimeLimit) {
  const FullListener listener;
  NetworkPrinter link;
  const auto start = Clock::now();
  EXPECT_EQ(link.connect(listener.address(), {milliseconds(200)}), LinkResult::kTimedOut);
  EXPECT_GE(since(start), milliseconds(200));
  EXPECT_LT(since(start), milliseconds(300));
}

TEST(NetworkPrinter, ACancelEndsConnectingSoon) {
  const FullListener listener;
  NetworkPrinter link;
  const LateCancel cancel(milliseconds(100));
  EXPECT_EQ(link.connect(listener.address(), {kLong, cancel.check()}), LinkResult::kCancelled);
  EXPECT_LT(cancel.sinceThen(), milliseconds(100));
}

TEST(NetworkPrinter, CollectsWhatThePrinterSendsWhileItTakesBytes) {
  ScriptedPrinter printer([](ScriptedPrinter& self) {
    self.send({0x12, 0x16});
    self.read(kManyBytes / 2);
    self.send({0x1A});
    self.readAll();
  });
  NetworkPrinter link = connected(printer);
  std::size_t taken = 0;
  ASSERT_EQ(link.write(sampleBytes(kManyBytes), {kLong}, taken), LinkResult::kDone);
  Bytes answers;
  while (answers.size() < 3 && link.waitForAnswer({kLong}) == LinkResult::kDone) {
    for (const std::uint8_t byte : link.takeReceived()) answers.push_back(byte);
  }
  EXPECT_THAT(answers, testing::ElementsAre(0x12, 0x16, 0x1A));
}

TEST(NetworkPrinter, KeepsTheLastOfManyAnswers) {
  const Bytes many = sampleBytes(10 * NetworkPrinter::kMaxReceived);
  ScriptedPrinter printer([&many](ScriptedPrinter& self) {
    self.send(many);
    self.read(1);
  });
  NetworkPrinter link = connected(printer);
  // Ends when the printer, which has then sent everything, closes.
  std::size_t taken = 0;
  while (link.write(sampleBytes(1), {kLong}, taken) == LinkResult::kDone) {
    std::this_thread::sleep_for(milliseconds(1));
  }
  const Bytes last(many.end() - NetworkPrinter::kMaxReceived, many.end());
  EXPECT_THAT(link.takeReceived(), testing::ContainerEq(last));
}

TEST(NetworkPrinter, DrainsWhenThePrinterHasTakenEverything) {
  std::atomic<bool> paper{false};
  ScriptedPrinter printer(
      [&paper](ScriptedPrinter& self) {
        self.pauseUntil([&paper] { return paper.load(); });
        self.readAll();
      },
      kSmallBuffer);
  NetworkPrinter link = connected(printer);
  std::size_t taken = 0;
  ASSERT_EQ(link.write(sampleBytes(kManyBytes), {milliseconds(100)}, taken), LinkResult::kTimedOut);
  EXPECT_EQ(link.drain({milliseconds(50)}), LinkResult::kTimedOut);
  EXPECT_GT(link.unacknowledged(), 0U);
  paper = true;
  EXPECT_EQ(link.drain({kLong}), LinkResult::kDone);
  EXPECT_EQ(link.unacknowledged(), 0U);
}

TEST(NetworkPrinter, ACancelEndsADrainSoon) {
  ScriptedPrinter printer(readNothing, kSmallBuffer);
  NetworkPrinter link = connected(printer);
  std::size_t taken = 0;
  ASSERT_EQ(link.write(sampleBytes(kManyBytes), {milliseconds(50)}, taken), LinkResult::kTimedOut);
  const LateCancel cancel(milliseconds(100));
  EXPECT_EQ(link.drain({Patience::kForever, cancel.check()}), LinkResult::kCancelled);
  EXPECT_LT(cancel.sinceThen(), milliseconds(100));
}

TEST(NetworkPrinter, DoesNotWaitLongerThanItsLimitForThePrinterToClose) {
  ScriptedPrinter printer([](ScriptedPrinter& self) {
    self.readAll();
    self.pause(kLong);
  });
  NetworkPrinter link = connected(printer);
  const auto start = Clock::now();
  EXPECT_EQ(link.finish({milliseconds(100)}), LinkResult::kTimedOut);
  EXPECT_LT(since(start), milliseconds(200));
  EXPECT_FALSE(link.isOpen());
}

}  // namespace
}  // namespace wren::app
