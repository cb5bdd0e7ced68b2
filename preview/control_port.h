// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The second port of the software printer: one command a line, one line of answer.

#pragma once

#include <poll.h>

#include <functional>
#include <string>
#include <vector>

#include "preview/loopback_socket.h"

namespace wren::preview {

class ControlPort {
 public:
  static constexpr std::size_t kMaxSessions = 8;
  static constexpr std::size_t kMaxLineBytes = 256;

  /// Answers a command; both without a newline.
  using Handler = std::function<std::string(const std::string& line)>;

  explicit ControlPort(Handler handler);

  /// Starts to listen.
  /// @return the error message, or an empty string.
  std::string open(const ListenAddress& address);

  /// The address with the actual port; empty before `open`.
  const std::string& name() const { return listener_.name; }

  /// Adds what to wait for.
  void addTo(std::vector<pollfd>& descriptors) const;

  /// Accepts, reads and answers what is there, without waiting.
  void serve();

 private:
  struct Session {
    FileDescriptor socket;
    std::string input;
  };

  void acceptSession();
  bool serveSession(Session& session);
  bool answerLines(Session& session);

  Handler handler_;
  LoopbackSocket listener_;
  std::vector<Session> sessions_;
};

}  // namespace wren::preview
