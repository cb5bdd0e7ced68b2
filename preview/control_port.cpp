// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/control_port.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace wren::preview {

ControlPort::ControlPort(Handler handler) : handler_(std::move(handler)) {}

std::string ControlPort::open(const ListenAddress& address) {
  listener_ = openLoopbackSocket(address);
  return listener_.error;
}

// Further sessions wait in the backlog.
void ControlPort::addTo(std::vector<pollfd>& descriptors) const {
  if (listener_.socket && sessions_.size() < kMaxSessions) {
    descriptors.push_back({listener_.socket.get(), POLLIN, 0});
  }
  for (const Session& session : sessions_) {
    descriptors.push_back({session.socket.get(), POLLIN, 0});
  }
}

void ControlPort::serve() {
  if (!listener_.socket) return;
  acceptSession();
  std::erase_if(sessions_, [this](Session& session) { return !serveSession(session); });
}

void ControlPort::acceptSession() {
  if (sessions_.size() >= kMaxSessions) return;
  FileDescriptor socket(::accept(listener_.socket.get(), nullptr, nullptr));
  if (socket) sessions_.push_back({std::move(socket), {}});
}

// False: the session has ended.
bool ControlPort::serveSession(Session& session) {
  char buffer[kMaxLineBytes];
  const ssize_t count = ::recv(session.socket.get(), buffer, sizeof buffer, MSG_DONTWAIT);
  if (count < 0) return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
  session.input.append(buffer, static_cast<std::size_t>(count));
  // The last line need not have a newline.
  if (count == 0 && !session.input.empty()) session.input += '\n';
  return answerLines(session) && count > 0 && session.input.size() <= kMaxLineBytes;
}

bool ControlPort::answerLines(Session& session) {
  for (;;) {
    const std::size_t end = session.input.find('\n');
    if (end == std::string::npos) return true;
    const std::string answer = handler_(session.input.substr(0, end)) + "\n";
    session.input.erase(0, end + 1);
    // One who does not read the answers gives up the session.
    if (!sendNow(session.socket.get(), answer)) return false;
  }
}

}  // namespace wren::preview
