// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/print_server.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "preview/message.h"
#include "preview/received_job.h"

namespace wren::preview {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kProgressInterval = std::chrono::seconds(1);

// After a shortage of descriptors, and while the pictures of other jobs have to be drawn first.
constexpr auto kRetryInterval = std::chrono::milliseconds(50);

constexpr std::size_t kReadBytes = 65536;

// Requests of status are kept up to this size; beyond, they make a job.
constexpr std::size_t kMaxRequestBytes = 65536;

// Resets the connection when the socket is closed.
void closeByReset(FileDescriptor& socket) {
  const linger hard = {1, 0};
  ::setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
  socket.reset();
}

const char* nameOf(PaperSupply paper) {
  if (paper == PaperSupply::kOk) return "ok";
  return paper == PaperSupply::kNearEnd ? "near-end" : "out";
}

const char* nameOf(PrinterError error) {
  switch (error) {
    case PrinterError::kNone:
      return "none";
    case PrinterError::kRecoverable:
      return "recoverable";
    case PrinterError::kCutter:
      return "cutter";
    case PrinterError::kUnrecoverable:
      return "unrecoverable";
    case PrinterError::kTemperature:
      return "temperature";
  }
  return "";
}

short eventsOf(const std::vector<pollfd>& descriptors, int descriptor) {
  short events = 0;
  for (const pollfd& one : descriptors) {
    if (one.fd == descriptor) events = one.revents;
  }
  return events;
}

}  // namespace

AcceptError acceptErrorOf(int code) {
  for (const int one : {EAGAIN, EWOULDBLOCK, EINTR, ECONNABORTED, EPROTO}) {
    if (code == one) return AcceptError::kOfConnection;
  }
  for (const int one : {EMFILE, ENFILE, ENOBUFS, ENOMEM}) {
    if (code == one) return AcceptError::kOfResources;
  }
  return AcceptError::kOfListener;
}

PrintServer::PrintServer(const Options& options, int stopDescriptor)
    : options_(options),
      stopDescriptor_(stopDescriptor),
      control_([this](const std::string& line) { return obey(line); }),
      printer_(*this, options.style.dpi, Clock::now()),
      buffer_(kReadBytes) {}

PrintServer::~PrintServer() = default;

std::string PrintServer::open() {
  const auto address = parseListenAddress(options_.address);
  if (!address) return options_.address + ": not [HOST:]PORT";
  listener_ = openLoopbackSocket(*address);
  if (!listener_.socket) return options_.address + ": " + listener_.error;
  isListening_ = true;
  name_ = listener_.name;
  limitWindow();
  const auto controlAddress = parseListenAddress(options_.controlAddress);
  const std::string error = controlAddress ? control_.open(*controlAddress) : "";
  if (!error.empty()) return options_.controlAddress + ": " + error;
  for (const std::string& fault : options_.faults) {
    std::string answer = obey(fault);
    if (answer != "ok") return answer;
  }
  return {};
}

bool PrintServer::serve() {
  worker_ = std::make_unique<PictureWorker>();
  lastCheck_ = Clock::now();
  bool isUsable = true;
  while (isUsable && !isStopped_) isUsable = serveOnce();
  printer_.abandon("cut short by the end of the printer");
  worker_.reset();
  return isUsable;
}

// One round: waits for something and deals with it. False: the listening socket failed.
bool PrintServer::serveOnce() {
  std::vector<pollfd> waited = descriptors(Clock::now());
  ::poll(waited.data(), waited.size(), timeoutMs(Clock::now()));
  const Time now = Clock::now();
  // The stop wins, so that a busy sender cannot keep the server running.
  isStopped_ = eventsOf(waited, stopDescriptor_) != 0;
  if (isStopped_) return true;
  printer_.advance(now);
  control_.serve();
  followReachability();
  if (printer_.receiving()) {
    const int socket = connections_.at(*printer_.receiving()).socket.get();
    const short events = eventsOf(waited, socket);
    if (events != 0) receive((events & (POLLHUP | POLLERR)) != 0, now);
  } else if (isListening_ && eventsOf(waited, listener_.socket.get()) != 0) {
    if (!acceptConnection(now)) return false;
  }
  checkLimits(now);
  followReachability();
  for (auto& [id, connection] : connections_) {
    if (connection.job != nullptr) connection.job->flush();
  }
  return true;
}

// A connection that the printer does not read is still watched: poll() reports its reset.
std::vector<pollfd> PrintServer::descriptors(Time now) {
  std::vector<pollfd> wanted = {{stopDescriptor_, POLLIN, 0}};
  control_.addTo(wanted);
  if (printer_.receiving()) {
    const int socket = connections_.at(*printer_.receiving()).socket.get();
    const short events = printer_.room(now) > 0 ? POLLIN : 0;
    wanted.push_back({socket, events, 0});
  } else if (mayAccept() && (!acceptAt_ || *acceptAt_ <= now)) {
    wanted.push_back({listener_.socket.get(), POLLIN, 0});
  }
  return wanted;
}

int PrintServer::timeoutMs(Time now) const {
  Time next = printer_.nextEvent().value_or(Time::max());
  if (printer_.receiving()) next = std::min({next, deadline_, nextProgress_});
  if (acceptAt_ && *acceptAt_ > now) next = std::min(next, *acceptAt_);
  if (isListening_ && worker_->isFull()) next = std::min(next, now + kRetryInterval);
  if (next == Time::max()) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - now);
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
}

// A printer that vanished, or lost its power, refuses connections; its port stays its own.
void PrintServer::followReachability() {
  if (isListening_ == printer_.isReachable()) return;
  if (isListening_) {
    listener_.socket.reset();
    listener_ = reserveLoopbackSocket(*parseListenAddress(name_));
  } else if (!startListening(listener_.socket.get())) {
    listener_ = openLoopbackSocket(*parseListenAddress(name_));
  }
  if (!listener_.error.empty()) printMessage(name_ + ": " + listener_.error);
  isListening_ = !isListening_;
  limitWindow();
  acceptAt_.reset();
}

// A small window lets the sender feel a small buffer. Connections inherit it from the listener.
void PrintServer::limitWindow() {
  const int window = static_cast<int>(printer_.bufferSize());
  ::setsockopt(listener_.socket.get(), SOL_SOCKET, SO_RCVBUF, &window, sizeof window);
}

bool PrintServer::mayAccept() const {
  return isListening_ && connections_.size() < kMaxUnfinishedJobs && !worker_->isFull();
}

// False: the listening socket failed.
bool PrintServer::acceptConnection(Time now) {
  if (!acceptAt_ && printer_.acceptDelay().count() > 0) {
    acceptAt_ = now + printer_.acceptDelay();
    return true;
  }
  acceptAt_.reset();
  FileDescriptor socket(::accept(listener_.socket.get(), nullptr, nullptr));
  if (!socket) return acceptFailed(errno, now);
  acceptError_ = 0;
  beginConnection(std::move(socket), now);
  return true;
}

bool PrintServer::acceptFailed(int code, Time now) {
  const AcceptError error = acceptErrorOf(code);
  if (error == AcceptError::kOfConnection) return true;
  if (std::exchange(acceptError_, code) != code) printMessage(name_ + ": " + std::strerror(code));
  acceptAt_ = now + kRetryInterval;
  return error == AcceptError::kOfResources;
}

void PrintServer::beginConnection(FileDescriptor socket, Time now) {
  const JobId id = ++lastJob_;
  connections_[id].socket = std::move(socket);
  printer_.beginJob(id);
  deadline_ = now + std::chrono::seconds(options_.maxSeconds);
  nextProgress_ = now + kProgressInterval;
}

void PrintServer::receive(bool hasHungUp, Time now) {
  const int socket = connections_.at(*printer_.receiving()).socket.get();
  const std::size_t room = std::min(printer_.room(now), buffer_.size());
  if (room == 0) {
    // Nothing more can come, and what is still in the network is lost with the connection.
    if (hasHungUp) printer_.endInput(std::string("cut short: ") + std::strerror(ECONNRESET), now);
    return;
  }
  const ssize_t count = ::recv(socket, buffer_.data(), room, MSG_DONTWAIT);
  if (count > 0) {
    takeBytes(std::span(buffer_).first(static_cast<std::size_t>(count)), now);
  } else if (count == 0) {
    printer_.endInput("", now);
  } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
    printer_.endInput(std::string("cut short: ") + std::strerror(errno), now);
  }
}

void PrintServer::takeBytes(std::span<const std::uint8_t> bytes, Time now) {
  const JobId id = *printer_.receiving();
  Connection& connection = connections_.at(id);
  const std::uint64_t left = options_.maxBytes - connection.receivedBytes;
  const bool isTooMuch = bytes.size() > left;
  if (isTooMuch) bytes = bytes.first(static_cast<std::size_t>(left));
  connection.receivedBytes += bytes.size();
  printer_.take(bytes, now);
  if (printer_.receiving() != id) return;
  if (connection.job != nullptr && !connection.job->error().empty()) {
    printer_.endInput("cut short", now);
  } else if (isTooMuch) {
    printer_.endInput("cut short after " + std::to_string(options_.maxBytes) + " bytes", now);
  }
}

// The time that the printer itself makes a job wait does not count.
void PrintServer::checkLimits(Time now) {
  const auto passed = now - std::exchange(lastCheck_, now);
  if (!printer_.receiving()) return;
  if (!printer_.isReady()) deadline_ += passed;
  if (now >= deadline_) {
    printer_.endInput("cut short after " + std::to_string(options_.maxSeconds) + " s", now);
  } else if (now >= nextProgress_) {
    nextProgress_ = now + kProgressInterval;
    const auto& job = connections_.at(*printer_.receiving()).job;
    if (job != nullptr) printMessage(job->progress());
  }
}

// A connection that only asks for the status leaves no files.
void PrintServer::print(JobId job, escpos::CommandKind kind, std::span<const std::uint8_t> bytes) {
  Connection& connection = connections_.at(job);
  auto& request = connection.request;
  if (connection.job == nullptr && kind == escpos::CommandKind::kTransmitStatus &&
      request.size() < kMaxRequestBytes) {
    request.insert(request.end(), bytes.begin(), bytes.end());
    return;
  }
  if (connection.job == nullptr) {
    connection.job = std::make_unique<ReceivedJob>(options_, nextNumber_);
    connection.job->take(request);
  }
  connection.job->take(bytes);
}

// A host that does not read its answers does without them.
void PrintServer::answer(JobId job, std::uint8_t byte) {
  const int socket = connections_.at(job).socket.get();
  if (socket >= 0) sendNow(socket, {reinterpret_cast<const char*>(&byte), 1});
}

void PrintServer::endJob(JobId job, const std::string& ending) {
  Connection connection = std::move(connections_.extract(job).mapped());
  if (connection.job != nullptr) {
    connection.job->endStream();
    worker_->add({std::move(connection.job), ending, std::move(connection.socket)});
  } else if (connection.receivedBytes == 0) {
    printMessage("a connection without a job" + (ending.empty() ? "" : ": " + ending));
  }
}

void PrintServer::resetConnection(JobId job) {
  closeByReset(connections_.at(job).socket);
}

std::string PrintServer::obey(const std::string& line) {
  if (line.substr(0, line.find_last_not_of(" \r") + 1) == "status") return statusText();
  const ParsedControl parsed = parseControl(line);
  const std::string error =
      parsed.control ? printer_.control(*parsed.control, Clock::now()) : parsed.error;
  if (!error.empty()) return "error: " + error;
  followReachability();
  limitWindow();
  return "ok";
}

std::string PrintServer::statusText() const {
  const PrinterState& state = printer_.state();
  const double millimetres = static_cast<double>(printer_.printedUnits()) / escpos::kUnitsPerRow *
                             25.4 / options_.style.dpi;
  const nlohmann::ordered_json json = {{"online", state.isOnline()},
                                       {"paper", nameOf(state.paper)},
                                       {"cover", state.isCoverOpen ? "open" : "closed"},
                                       {"error", nameOf(state.error)},
                                       {"button", state.isButtonHeld ? "held" : "released"},
                                       {"drawer", state.isDrawerHigh ? "high" : "low"},
                                       {"powered", printer_.isPowered()},
                                       {"reachable", printer_.isReachable()},
                                       {"stalled", printer_.isStalled()},
                                       {"receiving", printer_.receiving().has_value()},
                                       {"receivedBytes", printer_.receivedBytes()},
                                       {"bufferedBytes", printer_.bufferedBytes()},
                                       {"printedMm", std::round(millimetres * 10) / 10},
                                       {"unfinishedJobs", connections_.size()},
                                       {"storedJobs", worker_ ? worker_->doneCount() : 0}};
  return json.dump();
}

}  // namespace wren::preview
