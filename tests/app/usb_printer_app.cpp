// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-printer-app with a USB printer that files play, in place of PAPPL's USB ports. The address
// is `usb://test/FOLDER`, and each file of the folder is read when it is needed:
//   answers   `12 12 12 12`, what it answers to `10 04 n`, n = 1 to 4, in hex; `silent`: a read
//             waits and gets nothing; `one-way`: a read fails at once
//   unread    bytes that wait to be read before the first answer; those of a line come at once
//   received  what was written to it
//   reads     one line for each read that got nothing

#include <pappl/pappl.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

namespace wren_test {
namespace {

constexpr std::string_view kAddress = "usb://test";

// Stands for the ten seconds of a real port.
constexpr std::chrono::milliseconds kSilence(200);

std::string bytesOf(const std::string& hex) {
  std::istringstream in(hex);
  std::string bytes;
  for (unsigned byte = 0; in >> std::hex >> byte;) bytes += static_cast<char>(byte);
  return bytes;
}

class FilePrinter {
 public:
  explicit FilePrinter(std::string folder) : folder_(std::move(folder)) {
    std::ifstream unread(folder_ + "/unread");
    for (std::string line; std::getline(unread, line);) packets_.push_back(bytesOf(line));
  }

  // A question is written alone; the same bytes inside a page are part of a picture.
  void write(std::string_view bytes) {
    std::ofstream(folder_ + "/received", std::ios::app | std::ios::binary) << bytes;
    if (bytes.size() != 3 || bytes[0] != 0x10 || bytes[1] != 0x04) return;
    const std::string answers = bytesOf(this->answers());
    const auto n = static_cast<std::uint8_t>(bytes[2]);
    if (n >= 1 && n <= answers.size()) packets_.emplace_back(1, answers[n - 1U]);
  }

  ssize_t read(char* buffer, std::size_t size) {
    if (packets_.empty()) {
      std::ofstream(folder_ + "/reads", std::ios::app) << "nothing\n";
      if (answers() == "one-way") return -1;
      std::this_thread::sleep_for(kSilence);
      return 0;
    }
    const std::size_t count = packets_.front().copy(buffer, size);
    packets_.pop_front();
    return static_cast<ssize_t>(count);
  }

 private:
  std::string answers() const {
    std::ifstream file(folder_ + "/answers");
    std::string line;
    std::getline(file, line);
    return line;
  }

  std::string folder_;
  std::deque<std::string> packets_;
};

FilePrinter& printerOf(pappl_device_t* device) {
  return *static_cast<FilePrinter*>(papplDeviceGetData(device));
}

bool open(pappl_device_t* device, const char* uri, const char* /*name*/) {
  papplDeviceSetData(device, std::make_unique<FilePrinter>(uri + kAddress.size()).release());
  return true;
}

void close(pappl_device_t* device) {
  const std::unique_ptr<FilePrinter> closed(&printerOf(device));
  papplDeviceSetData(device, nullptr);
}

ssize_t read(pappl_device_t* device, void* buffer, std::size_t size) {
  return printerOf(device).read(static_cast<char*>(buffer), size);
}

ssize_t write(pappl_device_t* device, const void* bytes, std::size_t size) {
  printerOf(device).write({static_cast<const char*>(bytes), size});
  return static_cast<ssize_t>(size);
}

pappl_preason_t status(pappl_device_t* /*device*/) {
  return PAPPL_PREASON_NONE;
}

bool list(pappl_device_cb_t /*found*/, void* /*data*/, pappl_deverror_cb_t /*failed*/,
          void* /*failedData*/) {
  return false;
}

// PAPPL keeps the first registration of a scheme, and this one is made before `main`.
const bool kRegistered = [] {
  papplDeviceAddScheme2("usb", PAPPL_DEVTYPE_USB, list, open, close, read, write, status, nullptr,
                        nullptr);
  return true;
}();

}  // namespace
}  // namespace wren_test
