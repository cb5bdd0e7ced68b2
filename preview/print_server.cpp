// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/print_server.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "preview/message.h"
#include "preview/received_job.h"

namespace wren::preview {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kProgressInterval = std::chrono::seconds(1);

enum class Event { kReadable, kStop, kTimeout };

// Waits for the first of three events. kStop wins over kReadable, so that a busy sender cannot
// keep the server running.
Event waitFor(int descriptor, int stopDescriptor, int timeoutMs) {
  std::array<pollfd, 2> fds = {{{stopDescriptor, POLLIN, 0}, {descriptor, POLLIN, 0}}};
  const int ready = ::poll(fds.data(), fds.size(), timeoutMs);
  if (ready > 0 && fds[0].revents != 0) return Event::kStop;
  return ready > 0 ? Event::kReadable : Event::kTimeout;
}

int millisecondsUntil(Clock::time_point when) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(when - Clock::now());
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
}

// Receives the job of one connection.
class Reception {
 public:
  Reception(const Options& options, int connection, int stopDescriptor, unsigned& nextNumber)
      : options_(options),
        connection_(connection),
        stopDescriptor_(stopDescriptor),
        nextNumber_(nextNumber),
        deadline_(Clock::now() + std::chrono::seconds(options.maxSeconds)),
        nextProgress_(Clock::now() + kProgressInterval) {}

  void run() {
    const std::string ending = receiveAll();
    if (!job_) {
      printMessage("a connection without a job" + (ending.empty() ? "" : ": " + ending));
      return;
    }
    std::printf("%s\n", job_->finish(ending).c_str());
    std::fflush(stdout);
  }

 private:
  // Returns why the job ended early; empty after a regular end.
  std::string receiveAll() {
    for (;;) {
      const Event event = waitFor(connection_, stopDescriptor_,
                                  millisecondsUntil(std::min(deadline_, nextProgress_)));
      if (event == Event::kStop) return "cut short by the end of the printer";
      if (Clock::now() >= deadline_) {
        return "cut short after " + std::to_string(options_.maxSeconds) + " s";
      }
      showProgress();
      if (event == Event::kTimeout) continue;
      const ssize_t count = ::recv(connection_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
      if (count == 0) return {};
      if (count > 0) {
        std::string refusal = take(std::span(buffer_).first(static_cast<std::size_t>(count)));
        if (!refusal.empty()) return refusal;
      } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
        return std::string("cut short: ") + std::strerror(errno);
      }
    }
  }

  // Returns why the job ends here; empty if it continues.
  std::string take(std::span<const std::uint8_t> bytes) {
    if (!job_) job_.emplace(options_, nextNumber_);
    const std::uint64_t room = options_.maxBytes - job_->bytesTaken();
    job_->take(bytes.first(std::min<std::uint64_t>(room, bytes.size())));
    if (!job_->error().empty()) return "cut short";
    if (bytes.size() <= room) return {};
    return "cut short after " + std::to_string(options_.maxBytes) + " bytes";
  }

  void showProgress() {
    if (Clock::now() < nextProgress_) return;
    nextProgress_ = Clock::now() + kProgressInterval;
    if (job_) printMessage(job_->progress());
  }

  const Options& options_;
  int connection_;
  int stopDescriptor_;
  unsigned& nextNumber_;
  Clock::time_point deadline_;
  Clock::time_point nextProgress_;
  std::optional<ReceivedJob> job_;
  std::array<std::uint8_t, 65536> buffer_;
};

// accept() also reports errors of a connection that failed before it was accepted. These do not
// concern the listening socket.
bool isConnectionError(int code) {
  for (const int one : {EAGAIN, EWOULDBLOCK, EINTR, ECONNABORTED, EPROTO}) {
    if (code == one) return true;
  }
  return false;
}

}  // namespace

PrintServer::PrintServer(const Options& options, int stopDescriptor)
    : options_(options), stopDescriptor_(stopDescriptor) {}

std::string PrintServer::open() {
  const auto address = parseListenAddress(options_.address);
  if (!address) return options_.address + ": not [HOST:]PORT";
  listener_ = openLoopbackSocket(*address);
  return listener_.socket ? std::string() : options_.address + ": " + listener_.error;
}

bool PrintServer::serve() {
  for (;;) {
    const Event event = waitFor(listener_.socket.get(), stopDescriptor_, -1);
    if (event == Event::kStop) return true;
    if (event == Event::kTimeout) continue;
    FileDescriptor connection(::accept(listener_.socket.get(), nullptr, nullptr));
    if (connection) {
      receive(std::move(connection));
    } else if (!isConnectionError(errno)) {
      printMessage(name() + ": " + std::strerror(errno));
      return false;
    }
  }
}

void PrintServer::receive(FileDescriptor connection) {
  Reception(options_, connection.get(), stopDescriptor_, nextNumber_).run();
}

}  // namespace wren::preview
