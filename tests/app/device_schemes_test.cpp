// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <gtest/gtest.h>
#include <pappl/pappl.h>

#include "app/network_device.h"

namespace wren::app {
namespace {

TEST(DeviceSchemes, AreOursForSocketsAndThoseOfPapplForTheRest) {
  EXPECT_TRUE(addDeviceSchemes(true));
  for (const char* uri : {"socket://127.0.0.1:9100", "usb://maker/model", "file:///dev/null"}) {
    EXPECT_TRUE(papplDeviceIsSupported(uri)) << uri;
  }
  // A device of PAPPL would try to connect, and fail.
  pappl_device_t* device = papplDeviceOpen("socket://127.0.0.1:1", "test", nullptr, nullptr);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(deviceFault(device), "");
  EXPECT_FALSE(beginDeviceJob(device, nullptr));
  EXPECT_EQ(deviceFault(device), "Connection refused");
  papplDeviceClose(device);
}

}  // namespace
}  // namespace wren::app
