// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The software printer in a thread of the test: on a free loopback port, with its
// control port and a folder for its jobs. Needs wren::preview.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "escpos/reader.h"
#include "preview/print_server.h"
#include "tests/preview/loopback_client.h"
#include "tests/preview/scratch_folder.h"

class RunningPrinter {
 public:
  /// Starts the printer with these commands, such as "paper out after 30 mm".
  explicit RunningPrinter(std::vector<std::string> faults = {}, wren::preview::Options options = {})
      : options_(std::move(options)) {
    options_.address = "127.0.0.1:0";
    options_.controlAddress = "127.0.0.1:0";
    options_.directory = folder_.path();
    options_.faults = std::move(faults);
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    stopRead_ = wren::FileDescriptor(ends[0]);
    stopWrite_ = wren::FileDescriptor(ends[1]);
    server_ = std::make_unique<wren::preview::PrintServer>(options_, stopRead_.get());
    const std::string error = server_->open();
    EXPECT_EQ(error, "");
    thread_ = std::thread([this] { endedWell_ = server_->serve(); });
    control_ = std::make_unique<LoopbackClient>(server_->controlName());
  }

  ~RunningPrinter() { stop(); }

  /// Ends the printer; what it has stored stays until the end of the object.
  void stop() {
    if (!thread_.joinable()) return;
    EXPECT_EQ(::write(stopWrite_.get(), "x", 1), 1);
    thread_.join();
    EXPECT_TRUE(endedWell_);
  }

  /// "127.0.0.1:PORT"
  const std::string& address() const { return server_->name(); }

  const std::string& controlAddress() const { return server_->controlName(); }

  /// Gives a command and returns the answer: "ok", "error: ..." or, for "status", JSON. From one
  /// thread at a time.
  std::string tell(const std::string& command) {
    const std::string text = command + "\n";
    control_->send({text.begin(), text.end()});
    return control_->readLine();
  }

  /// Waits until the answer to "status" contains a text such as `"paper":"out"`.
  bool waitFor(const std::string& text, double seconds = 20.0) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (tell("status").find(text) == std::string::npos) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
  }

  /// Waits until the files of so many jobs are complete.
  bool waitForJobs(unsigned count) {
    return waitFor("\"storedJobs\":" + std::to_string(count) + "}");
  }

  /// What the printer printed of a job, from 1: the bytes of its commands in their order, without
  /// requests of real-time status.
  std::vector<std::uint8_t> printed(unsigned job) const { return bytesOfFile(fileOf(job, ".prn")); }

  /// The same as paper.
  wren::escpos::Reading reading(unsigned job) const { return wren::escpos::readAll(printed(job)); }

  /// The file of a job; the extension is ".prn" or ".png".
  std::string fileOf(unsigned job, const std::string& extension) const {
    char name[32];
    std::snprintf(name, sizeof name, "job-%04u", job);
    return folder_.file(name + extension);
  }

 private:
  ScratchFolder folder_;
  wren::preview::Options options_;
  wren::FileDescriptor stopRead_;
  wren::FileDescriptor stopWrite_;
  std::unique_ptr<wren::preview::PrintServer> server_;
  std::thread thread_;
  bool endedWell_ = false;
  std::unique_ptr<LoopbackClient> control_;
};
