// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/listen_run.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/handles.h"
#include "preview/message.h"
#include "preview/print_server.h"

namespace wren::preview {
namespace {

// Write end of the self-pipe. Static, because a signal handler has no other context.
volatile sig_atomic_t signalPipe = -1;

void onSignal(int) {
  const int savedErrno = errno;
  const char byte = 1;
  // A full pipe already holds a stop request.
  [[maybe_unused]] const ssize_t ignored = ::write(signalPipe, &byte, 1);
  errno = savedErrno;
}

void catchSignals(int pipeEnd) {
  signalPipe = pipeEnd;
  struct sigaction action = {};
  action.sa_handler = onSignal;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  // Without it, the server would end as soon as the reader of its standard output is gone.
  ::signal(SIGPIPE, SIG_IGN);
}

int fail(const std::string& text) {
  printMessage(text);
  return 1;
}

}  // namespace

int runListener(const Options& options) {
  int ends[2];
  if (::pipe(ends) != 0) return fail(std::strerror(errno));
  const FileDescriptor readEnd(ends[0]);
  const FileDescriptor writeEnd(ends[1]);
  catchSignals(writeEnd.get());
  PrintServer server(options, readEnd.get());
  const std::string error = server.open();
  if (!error.empty()) return fail(error);
  std::printf("listening on %s\n", server.name().c_str());
  if (!server.controlName().empty()) std::printf("control on %s\n", server.controlName().c_str());
  std::fflush(stdout);
  return server.serve() ? 0 : 1;
}

}  // namespace wren::preview
