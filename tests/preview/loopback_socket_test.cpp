// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/loopback_socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <chrono>
#include <string>

#include "tests/preview/loopback_client.h"

namespace wren::preview {
namespace {

TEST(ListenAddress, IsAPortWithAnOptionalHost) {
  const auto shown = [](const std::string& text) {
    const auto address = parseListenAddress(text);
    return address ? address->host + " " + address->port : "none";
  };
  EXPECT_EQ(shown("9100"), "127.0.0.1 9100");
  EXPECT_EQ(shown("0"), "127.0.0.1 0");
  EXPECT_EQ(shown("localhost:65535"), "localhost 65535");
  EXPECT_EQ(shown("[::1]:9100"), "::1 9100");
  for (const char* wrong : {"", ":", ":9100", "065535", "9100:", "65536", "-1", "http", "::1:9100",
                            "[]:1", "host:99999999999"}) {
    EXPECT_EQ(shown(wrong), "none") << wrong;
  }
}

TEST(LoopbackSocket, RefusesAddressesThatOtherComputersCanReach) {
  for (const char* host : {"0.0.0.0", "192.0.2.1", "128.0.0.1", "126.255.255.255", "::"}) {
    const auto opened = openLoopbackSocket({host, "0"});
    EXPECT_FALSE(opened.socket) << host;
    EXPECT_EQ(opened.error, "not a loopback address; only this computer may print here") << host;
  }
}

TEST(LoopbackSocket, ReportsItsActualPort) {
  const auto opened = openLoopbackSocket({"127.0.0.1", "0"});
  ASSERT_TRUE(opened.socket) << opened.error;
  EXPECT_EQ(opened.name.substr(0, 10), "127.0.0.1:");
  EXPECT_NE(opened.name, "127.0.0.1:0");
  const auto taken = openLoopbackSocket({"127.0.0.1", opened.name.substr(10)});
  EXPECT_FALSE(taken.socket);
  EXPECT_EQ(taken.error, "Address already in use");
}

TEST(LoopbackSocket, MayHaveAnyLoopbackAddress) {
  const auto other = openLoopbackSocket({"127.1.2.3", "0"});
  EXPECT_EQ(other.name.substr(0, 10), "127.1.2.3:") << other.error;
  const auto six = openLoopbackSocket({"::1", "0"});
  if (!six.socket) GTEST_SKIP() << "no IPv6: " << six.error;
  EXPECT_EQ(six.name.substr(0, 6), "[::1]:");
  EXPECT_EQ(parseListenAddress(six.name)->host, "::1");
}

// A name of a service is none: it would depend on the machine.
TEST(LoopbackSocket, WantsAPortInDigits) {
  const auto opened = openLoopbackSocket({"127.0.0.1", "http"});
  EXPECT_FALSE(opened.socket);
  EXPECT_EQ(opened.error, "Name or service not known");
}

TEST(LoopbackSocket, DoesNotBlockWhereItListens) {
  const auto listening = openLoopbackSocket({"127.0.0.1", "0"});
  EXPECT_NE(::fcntl(listening.socket.get(), F_GETFL) & O_NONBLOCK, 0);
  const auto connected = connectLoopbackSocket({"127.0.0.1", listening.name.substr(10)});
  EXPECT_EQ(::fcntl(connected.socket.get(), F_GETFL) & O_NONBLOCK, 0);
  const auto reserved = reserveLoopbackSocket({"127.0.0.1", "0"});
  EXPECT_FALSE(LoopbackClient(reserved.name).connected());
  EXPECT_TRUE(startListening(reserved.socket.get()));
  EXPECT_NE(::fcntl(reserved.socket.get(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_TRUE(LoopbackClient(reserved.name).connected());
}

// Neither a signal nor a pause, whoever the other side is.
TEST(LoopbackSocket, SendsNowOrNotAtAll) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const FileDescriptor here(ends[0]);
  FileDescriptor there(ends[1]);
  EXPECT_TRUE(sendNow(here.get(), "ok\n"));
  char bytes[8] = {};
  EXPECT_EQ(::recv(there.get(), bytes, sizeof bytes, 0), 3);
  EXPECT_STREQ(bytes, "ok\n");
  // A call that waits would end with this.
  const timeval patience = {30, 0};
  ::setsockopt(here.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  const auto before = std::chrono::steady_clock::now();
  const std::string much(1'000'000, 'x');
  while (sendNow(here.get(), much)) {
  }
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
  there.reset();
  const auto handler = ::signal(SIGPIPE, SIG_DFL);
  EXPECT_FALSE(sendNow(here.get(), "ok\n"));
  ::signal(SIGPIPE, handler);
}

// The side that closes first keeps the connection for a minute (TIME_WAIT).
TEST(LoopbackSocket, CanHaveItsPortAgainAfterAConnection) {
  auto opened = openLoopbackSocket({"127.0.0.1", "0"});
  ASSERT_TRUE(opened.socket) << opened.error;
  LoopbackClient client(opened.name);
  ASSERT_TRUE(client.connected());
  pollfd waited = {opened.socket.get(), POLLIN, 0};
  ASSERT_EQ(::poll(&waited, 1, 20'000), 1);
  FileDescriptor accepted(::accept(opened.socket.get(), nullptr, nullptr));
  ASSERT_TRUE(accepted);
  accepted.reset();
  client.waitForClose();
  client.endInput();
  opened.socket.reset();
  for (const auto again : {openLoopbackSocket, reserveLoopbackSocket}) {
    const auto second = again({"127.0.0.1", opened.name.substr(10)});
    EXPECT_TRUE(second.socket) << second.error;
    EXPECT_EQ(second.name, opened.name);
  }
}

TEST(LoopbackSocket, IsNotForProgramsThatAreStarted) {
  const auto listening = openLoopbackSocket({"127.0.0.1", "0"});
  const std::string port = listening.name.substr(10);
  const auto connected = connectLoopbackSocket({"127.0.0.1", port});
  const auto reserved = reserveLoopbackSocket({"127.0.0.1", "0"});
  for (const LoopbackSocket* one : {&listening, &connected, &reserved}) {
    ASSERT_TRUE(one->socket) << one->error;
    EXPECT_EQ(::fcntl(one->socket.get(), F_GETFD), FD_CLOEXEC) << one->name;
  }
}

}  // namespace
}  // namespace wren::preview
