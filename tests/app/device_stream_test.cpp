// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/device_stream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/support/same_bytes.h"

namespace wren::app {
namespace {

// A port of which a test sees what it took, and that may refuse all bytes.
std::string taken;
bool isBroken = false;

bool list(pappl_device_cb_t /*found*/, void* /*data*/, pappl_deverror_cb_t /*failed*/,
          void* /*failedData*/) {
  return false;
}

bool open(pappl_device_t* /*device*/, const char* /*uri*/, const char* /*name*/) {
  return true;
}

void close(pappl_device_t* /*device*/) {}

ssize_t read(pappl_device_t* /*device*/, void* /*buffer*/, std::size_t /*size*/) {
  return -1;
}

ssize_t write(pappl_device_t* /*device*/, const void* bytes, std::size_t size) {
  if (isBroken) return -1;
  taken.append(static_cast<const char*>(bytes), size);
  return static_cast<ssize_t>(size);
}

pappl_preason_t status(pappl_device_t* /*device*/) {
  return PAPPL_PREASON_NONE;
}

class DeviceStream : public testing::Test {
 protected:
  DeviceStream() {
    taken.clear();
    isBroken = false;
    papplDeviceAddScheme2("port", PAPPL_DEVTYPE_CUSTOM_LOCAL, list, open, close, read, write,
                          status, nullptr, nullptr);
    device_ = papplDeviceOpen("port://wren", "test", nullptr, nullptr);
  }
  ~DeviceStream() override { papplDeviceClose(device_); }

  pappl_device_t* device_;
  std::string record_;
};

TEST_F(DeviceStream, RecordsWhatTheDeviceTakes) {
  const std::string bytes(100000, 'w');
  FilePtr stream = openDeviceStream(device_, &record_);
  EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), stream.get()), bytes.size());
  EXPECT_EQ(std::fclose(stream.release()), 0);
  papplDeviceFlush(device_);
  EXPECT_TRUE(wren_test::sameBytes(bytes, taken));
  EXPECT_TRUE(wren_test::sameBytes(bytes, record_));
}

TEST_F(DeviceStream, FailsWithItsDevice) {
  const std::string bytes(100000, 'w');
  isBroken = true;
  const FilePtr stream = openDeviceStream(device_, &record_);
  EXPECT_LT(std::fwrite(bytes.data(), 1, bytes.size(), stream.get()), bytes.size());
  EXPECT_NE(std::ferror(stream.get()), 0);
  EXPECT_LT(record_.size(), bytes.size());
}

TEST_F(DeviceStream, GoesOnWhenTheRecordIsFull) {
  const std::string bytes(kMostRecordedBytes + 1, 'w');
  FilePtr stream = openDeviceStream(device_, &record_);
  EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), stream.get()), bytes.size());
  EXPECT_EQ(std::fclose(stream.release()), 0);
  papplDeviceFlush(device_);
  EXPECT_EQ(taken.size(), bytes.size());
  EXPECT_EQ(record_.size(), kMostRecordedBytes);
}

}  // namespace
}  // namespace wren::app
