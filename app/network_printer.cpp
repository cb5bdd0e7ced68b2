// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/network_printer.h"

#include <fcntl.h>
#ifdef __linux__
#include <linux/sockios.h>
#endif
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "app/host_lookup.h"

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Bytes that wait in this machine for a printer that takes none. Small, so that a cancelled job
// leaves little behind and a printer that has stopped is noticed early; a band is about 2 KiB.
constexpr int kSendBuffer = 16 * 1024;

constexpr const char* kClosedByPrinter = "the printer closed the connection";

// Far enough away for every wait, and no overflow when the limit is kForever.
Clock::time_point deadlineOf(milliseconds limit) {
  constexpr milliseconds kYear = std::chrono::hours(24 * 365);
  return Clock::now() + std::min(limit, kYear);
}

milliseconds timeUntil(Clock::time_point when) {
  const auto left = std::chrono::ceil<milliseconds>(when - Clock::now());
  return std::max(left, milliseconds(0));
}

// Never waits, is closed in child processes, raises no SIGPIPE with `kSendFlags`.
#ifdef SOCK_NONBLOCK
constexpr int kSendFlags = MSG_DONTWAIT | MSG_NOSIGNAL;

int newSocket(const addrinfo& address) {
  return ::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                  address.ai_protocol);
}
#else  // macOS
constexpr int kSendFlags = MSG_DONTWAIT;

int newSocket(const addrinfo& address) {
  const int socket = ::socket(address.ai_family, address.ai_socktype, address.ai_protocol);
  const int on = 1;
  ::fcntl(socket, F_SETFD, FD_CLOEXEC);
  ::fcntl(socket, F_SETFL, O_NONBLOCK);
  ::setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
  return socket;
}
#endif

FileDescriptor openSocket(const addrinfo& address) {
  FileDescriptor socket(newSocket(address));
  const int on = 1;
  const int size = kSendBuffer;
  ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  // Finds a printer that vanished while a job waits and nothing is on its way.
  ::setsockopt(socket.get(), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
  return socket;
}

// A connection to a local port where nobody listens can come back to its own socket.
bool isConnectedToItself(int socket) {
  sockaddr_storage own = {};
  sockaddr_storage peer = {};
  socklen_t ownLength = sizeof own;
  socklen_t peerLength = sizeof peer;
  return ::getsockname(socket, reinterpret_cast<sockaddr*>(&own), &ownLength) == 0 &&
         ::getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &peerLength) == 0 &&
         ownLength == peerLength && std::memcmp(&own, &peer, ownLength) == 0;
}

int socketError(int socket) {
  int code = 0;
  socklen_t length = sizeof code;
  return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &code, &length) == 0 ? code : errno;
}

bool isDecimal(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isPort(std::string_view text) {
  if (!isDecimal(text) || text.size() > 5) return false;
  const unsigned long port = std::stoul(std::string(text));
  return port >= 1 && port <= 65535;
}

std::ptrdiff_t addressCount(const addrinfo* list) {
  std::ptrdiff_t count = 0;
  for (; list != nullptr; list = list->ai_next) ++count;
  return count;
}

}  // namespace

std::optional<NetworkAddress> parseNetworkUri(std::string_view uri) {
  const auto mark = uri.find("://");
  if (mark == std::string_view::npos || mark == 0) return std::nullopt;
  std::string_view place = uri.substr(mark + 3);
  place = place.substr(0, place.find_first_of("/?"));
  std::string_view host = place;
  std::string_view port = "9100";
  if (!place.empty() && place.front() == '[') {
    const auto end = place.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    host = place.substr(1, end - 1);
    place = place.substr(end + 1);
    if (!place.empty() && place.front() != ':') return std::nullopt;
    if (!place.empty()) port = place.substr(1);
  } else if (const auto colon = place.find(':'); colon != std::string_view::npos) {
    host = place.substr(0, colon);
    port = place.substr(colon + 1);
  }
  if (host.empty() || host.find_first_of("[]@ ") != std::string_view::npos || !isPort(port)) {
    return std::nullopt;
  }
  return NetworkAddress{std::string(host), std::string(port)};
}

LinkResult NetworkPrinter::closed(const std::string& why) {
  error_ = why;
  reset();
  return LinkResult::kClosed;
}

LinkResult NetworkPrinter::connect(const NetworkAddress& address, const Patience& patience) {
  reset();
  received_.clear();
  const auto deadline = deadlineOf(patience.limit);
  const HostLookup found = findHost(address.host, address.port, deadline, patience.cancel);
  if (patience.cancel.isCancelled()) return LinkResult::kCancelled;
  if (!found.error.empty()) return closed(found.error);
  LinkResult result = LinkResult::kTimedOut;
  auto left = addressCount(found.addresses.get());
  for (const addrinfo* one = found.addresses.get(); one != nullptr; one = one->ai_next, --left) {
    result = connectTo(*one, {timeUntil(deadline) / left, patience.cancel});
    if (result == LinkResult::kDone || result == LinkResult::kCancelled) break;
  }
  return result;
}

LinkResult NetworkPrinter::connectTo(const addrinfo& address, const Patience& patience) {
  socket_ = openSocket(address);
  if (!socket_) return closed(std::strerror(errno));
  if (::connect(socket_.get(), address.ai_addr, address.ai_addrlen) != 0) {
    if (errno != EINPROGRESS) return closed(std::strerror(errno));
    const LinkResult result = waitFor(POLLOUT, patience);
    if (result != LinkResult::kDone) {
      reset();
      return result;
    }
    const int code = socketError(socket_.get());
    if (code != 0) return closed(std::strerror(code));
  }
  return isConnectedToItself(socket_.get()) ? closed(std::strerror(ECONNREFUSED))
                                            : LinkResult::kDone;
}

// Reads whatever the printer has sent. False: it closed or reset the connection; `error_` says so.
bool NetworkPrinter::receive() {
  std::array<std::uint8_t, 512> buffer;
  for (;;) {
    const ssize_t count = ::recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count == 0) error_ = kClosedByPrinter;
    if (count < 0) error_ = std::strerror(errno);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    received_.insert(received_.end(), buffer.begin(), buffer.begin() + count);
    if (received_.size() > kMaxReceived) {
      const auto excess = static_cast<std::ptrdiff_t>(received_.size() - kMaxReceived);
      received_.erase(received_.begin(), received_.begin() + excess);
    }
  }
}

// kDone: one of the events, or an error that the next call of the system will report.
LinkResult NetworkPrinter::waitFor(short events, const Patience& patience) {
  const auto deadline = deadlineOf(patience.limit);
  for (;;) {
    if (patience.cancel.isCancelled()) return LinkResult::kCancelled;
    const auto slice = std::min(timeUntil(deadline), kCancelLatency);
    pollfd poll = {socket_.get(), events, 0};
    const int ready = ::poll(&poll, 1, static_cast<int>(slice.count()));
    if (ready > 0) return LinkResult::kDone;
    if (ready < 0 && errno != EINTR) return closed(std::strerror(errno));
    if (Clock::now() >= deadline) return LinkResult::kTimedOut;
  }
}

LinkResult NetworkPrinter::write(std::span<const std::uint8_t> bytes, const Patience& patience,
                                 std::size_t& taken) {
  taken = 0;
  if (!isOpen()) return LinkResult::kClosed;
  const auto deadline = deadlineOf(patience.limit);
  while (taken < bytes.size()) {
    // A printer that has closed its side takes nothing more; what it still gets is lost.
    if (!receive()) return closed(std::string(error_));
    const std::span left = bytes.subspan(taken);
    const ssize_t count = ::send(socket_.get(), left.data(), left.size(), kSendFlags);
    if (count > 0) {
      taken += static_cast<std::size_t>(count);
    } else if (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
      return closed(std::strerror(errno));
    }
    if (taken == bytes.size()) break;
    const LinkResult result = waitFor(POLLIN | POLLOUT, {timeUntil(deadline), patience.cancel});
    if (result != LinkResult::kDone) return result;
  }
  return LinkResult::kDone;
}

LinkResult NetworkPrinter::waitForAnswer(const Patience& patience) {
  if (!isOpen()) return LinkResult::kClosed;
  const auto deadline = deadlineOf(patience.limit);
  for (;;) {
    const bool open = receive();
    if (!received_.empty()) return LinkResult::kDone;
    if (!open) return closed(std::string(error_));
    const LinkResult result = waitFor(POLLIN, {timeUntil(deadline), patience.cancel});
    if (result != LinkResult::kDone) return result;
  }
}

std::vector<std::uint8_t> NetworkPrinter::takeReceived() {
  if (isOpen()) receive();
  return std::exchange(received_, {});
}

std::size_t NetworkPrinter::unacknowledged() const {
  int count = 0;
#ifdef SIOCOUTQ
  if (!isOpen() || ::ioctl(socket_.get(), SIOCOUTQ, &count) != 0) return 0;
#else  // macOS
  socklen_t length = sizeof count;
  if (!isOpen() || ::getsockopt(socket_.get(), SOL_SOCKET, SO_NWRITE, &count, &length) != 0) {
    return 0;
  }
#endif
  return static_cast<std::size_t>(std::max(count, 0));
}

LinkResult NetworkPrinter::drain(const Patience& patience) {
  if (!isOpen()) return LinkResult::kClosed;
  const auto deadline = deadlineOf(patience.limit);
  // The system reports no event for an acknowledgement: ask again after growing pauses.
  for (milliseconds pause(1);; pause = std::min(2 * pause, kCancelLatency)) {
    if (!receive()) return closed(std::string(error_));
    if (unacknowledged() == 0) return LinkResult::kDone;
    if (patience.cancel.isCancelled()) return LinkResult::kCancelled;
    if (Clock::now() >= deadline) return LinkResult::kTimedOut;
    pollfd poll = {socket_.get(), POLLIN, 0};
    ::poll(&poll, 1, static_cast<int>(pause.count()));
  }
}

LinkResult NetworkPrinter::finish(const Patience& patience) {
  if (!isOpen()) return LinkResult::kClosed;
  const auto deadline = deadlineOf(patience.limit);
  ::shutdown(socket_.get(), SHUT_WR);
  LinkResult result = LinkResult::kDone;
  while (receive() && result == LinkResult::kDone) {
    result = waitFor(POLLIN, {timeUntil(deadline), patience.cancel});
  }
  if (result == LinkResult::kDone && error_ != kClosedByPrinter) result = LinkResult::kClosed;
  // Not reset(): what the printer has not taken yet is still sent.
  socket_.reset();
  return result;
}

void NetworkPrinter::reset() {
  if (!isOpen()) return;
  const linger none = {1, 0};
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
  socket_.reset();
}

}  // namespace wren::app
