// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/loopback_socket.h"

#include <gtest/gtest.h>

#include <string>

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
  for (const char* wrong :
       {"", ":", ":9100", "9100:", "65536", "-1", "http", "::1:9100", "[]:1", "host:99999999999"}) {
    EXPECT_EQ(shown(wrong), "none") << wrong;
  }
}

TEST(LoopbackSocket, RefusesAddressesThatOtherComputersCanReach) {
  for (const char* host : {"0.0.0.0", "192.0.2.1", "::"}) {
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

}  // namespace
}  // namespace wren::preview
