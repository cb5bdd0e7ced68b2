// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>

#include "cli/interruption.h"
#include "common/handles.h"

#ifdef __APPLE__
extern char** environ;
#endif

namespace wren::cli {
namespace {

std::vector<char*> pointersTo(Arguments& command) {
  std::vector<char*> pointers;
  for (std::string& argument : command) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return pointers;
}

// -1 if the program cannot be started.
pid_t startChild(Arguments command, int output, int error) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  const int streams[] = {output, error};
  for (int i = 0; i < 2; ++i) {
    if (streams[i] < 0) {
      posix_spawn_file_actions_addopen(&actions, i + 1, "/dev/null", O_WRONLY, 0);
    } else {
      posix_spawn_file_actions_adddup2(&actions, streams[i], i + 1);
    }
  }
  pid_t child = -1;
  const std::string program = findProgram(command.at(0));
  const bool started = !program.empty() && posix_spawn(&child, program.c_str(), &actions, nullptr,
                                                       pointersTo(command).data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  if (!started) return -1;
  endAtInterruption(child);
  return child;
}

int waitForEnd(pid_t child) {
  siginfo_t ended;
  while (waitid(P_PID, child, &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  endAtInterruption(0);
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return kNotStarted;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

using Clock = std::chrono::steady_clock;

// Reads to the end of the stream. False after the deadline or an interruption.
bool readUntil(int descriptor, Clock::time_point deadline, std::string& text) {
  constexpr std::size_t kMostBytes = 1 << 20;
  std::array<char, 4096> part;
  while (!isInterrupted()) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    pollfd waited = {descriptor, POLLIN, 0};
    if (poll(&waited, 1, static_cast<int>(left.count())) <= 0) continue;
    const ssize_t count = read(descriptor, part.data(), part.size());
    if (count <= 0) return count == 0;
    if (text.size() < kMostBytes) text.append(part.data(), static_cast<std::size_t>(count));
  }
  return false;
}

}  // namespace

std::string findProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return access(name.c_str(), X_OK) == 0 ? name : "";
  const char* path = std::getenv("PATH");
  const std::string folders =
      std::string(path != nullptr ? path : "/usr/bin:/bin") + ":/usr/local/sbin:/usr/sbin:/sbin";
  for (std::size_t at = 0; at < folders.size();) {
    const std::size_t end = std::min(folders.find(':', at), folders.size());
    std::string file = folders.substr(at, end - at) + "/" + name;
    if (end > at && access(file.c_str(), X_OK) == 0) return file;
    at = end + 1;
  }
  return {};
}

int runChild(const Arguments& command, int output, int error) {
  const pid_t child = startChild(command, output, error);
  if (child < 0) return kNotStarted;
  const int status = waitForEnd(child);
  failIfInterrupted();
  return status;
}

ChildOutput captureOutput(const Arguments& command, int seconds) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const FileDescriptor reader(ends[0]);
  FileDescriptor writer(ends[1]);
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  const pid_t child = startChild(command, writer.get(), -1);
  writer.reset();
  if (child < 0) return {};
  ChildOutput result;
  if (!readUntil(reader.get(), Clock::now() + std::chrono::seconds(seconds), result.text)) {
    kill(child, SIGKILL);
  }
  result.status = waitForEnd(child);
  failIfInterrupted();
  return result;
}

void becomeProgram(const Arguments& command) {
  Arguments copy = command;
  const std::string program = findProgram(copy.at(0));
  if (!program.empty()) execv(program.c_str(), pointersTo(copy).data());
}

}  // namespace wren::cli
