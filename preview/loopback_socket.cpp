// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/loopback_socket.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace wren::preview {
namespace {

// Connections that wait while a job is received.
constexpr int kBacklog = 32;

// Without a signal, if the other side is gone. Not every system has the flag.
#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
#else
constexpr int kSendFlags = MSG_DONTWAIT;
#endif

struct AddressFreer {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressFreer>;

bool isPort(const std::string& text) {
  if (text.empty() || text.size() > 5) return false;
  const bool digits =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  return digits && std::stoul(text) <= 65535;
}

bool isLoopback(const sockaddr* address) {
  if (address->sa_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(address);
    return ntohl(v4->sin_addr.s_addr) >> 24 == 127;
  }
  if (address->sa_family == AF_INET6) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(address);
    return IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr);
  }
  return false;
}

std::string nameOf(int socket) {
  sockaddr_storage address = {};
  socklen_t length = sizeof address;
  char host[NI_MAXHOST] = "?";
  char port[NI_MAXSERV] = "?";
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
    ::getnameinfo(reinterpret_cast<sockaddr*>(&address), length, host, sizeof host, port,
                  sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
  }
  const bool bracketed = std::strchr(host, ':') != nullptr;
  return (bracketed ? "[" + std::string(host) + "]" : std::string(host)) + ":" + port;
}

LoopbackSocket failed(const std::string& what) {
  return {FileDescriptor(), {}, what};
}

enum class Use { kListen, kReserve, kConnect };

bool bindTo(int socket, const addrinfo& address) {
  // Otherwise the port stays in use for a minute after the last connection (TIME_WAIT).
  const int on = 1;
  ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  return ::bind(socket, address.ai_addr, address.ai_addrlen) == 0;
}

bool prepare(int socket, const addrinfo& address, Use use) {
  if (use == Use::kConnect) return ::connect(socket, address.ai_addr, address.ai_addrlen) == 0;
  if (!bindTo(socket, address)) return false;
  if (use == Use::kReserve) return true;
  return startListening(socket);
}

LoopbackSocket makeSocket(const addrinfo& address, Use use) {
  FileDescriptor socket(::socket(address.ai_family, address.ai_socktype, address.ai_protocol));
  // A program that is started meanwhile would keep the port in use.
  const bool isPrivate = socket && ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC) == 0;
  if (!isPrivate || !prepare(socket.get(), address, use)) return failed(std::strerror(errno));
  std::string name = nameOf(socket.get());
  return {std::move(socket), std::move(name), {}};
}

LoopbackSocket findSocket(const ListenAddress& address, Use use) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int code = ::getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found);
  if (code != 0) return failed(::gai_strerror(code));
  const AddressList list(found);
  for (const addrinfo* one = list.get(); one != nullptr; one = one->ai_next) {
    if (isLoopback(one->ai_addr)) return makeSocket(*one, use);
  }
  return failed("not a loopback address; only this computer may print here");
}

}  // namespace

std::optional<ListenAddress> parseListenAddress(const std::string& text) {
  const auto colon = text.rfind(':');
  ListenAddress address{"127.0.0.1", text};
  if (colon != std::string::npos) address = {text.substr(0, colon), text.substr(colon + 1)};
  if (address.host.size() > 2 && address.host.front() == '[' && address.host.back() == ']') {
    address.host = address.host.substr(1, address.host.size() - 2);
  } else if (address.host.find_first_of(":[]") != std::string::npos) {
    return std::nullopt;
  }
  if (address.host.empty() || !isPort(address.port)) return std::nullopt;
  return address;
}

bool startListening(int socket) {
  return ::listen(socket, kBacklog) == 0 && ::fcntl(socket, F_SETFL, O_NONBLOCK) == 0;
}

bool sendNow(int socket, std::string_view bytes) {
  return ::send(socket, bytes.data(), bytes.size(), kSendFlags) ==
         static_cast<ssize_t>(bytes.size());
}

LoopbackSocket openLoopbackSocket(const ListenAddress& address) {
  return findSocket(address, Use::kListen);
}

LoopbackSocket reserveLoopbackSocket(const ListenAddress& address) {
  return findSocket(address, Use::kReserve);
}

LoopbackSocket connectLoopbackSocket(const ListenAddress& address) {
  return findSocket(address, Use::kConnect);
}

}  // namespace wren::preview
