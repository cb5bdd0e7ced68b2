// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Tries what a child in the sandbox must not be able to do, and prints the outcome: "ok", or the
// name of the error.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

int tell(bool done) {
  std::printf("%s\n", done ? "ok" : strerrorname_np(errno));
  return 0;
}

int connectTo(const char* port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
  const int network = socket(AF_INET, SOCK_STREAM, 0);
  return tell(network >= 0 &&
              connect(network, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
}

int writeFile(const char* path) {
  const int file = open(path, O_WRONLY | O_CREAT, 0600);
  return tell(file >= 0 && write(file, "x", 1) == 1);
}

int listDescriptors() {
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) std::printf("%d ", descriptor);
  }
  return 0;
}

int allocate(const char* megabytes) {
  const std::size_t size = std::strtoul(megabytes, nullptr, 10) << 20;
  return tell(mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
}

int becomeRoot() {
  std::printf("%d\n", prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0));
  return 0;
}

int useThread() {
  int value = 0;
  std::thread([&value] { value = 1; }).join();
  return tell(value == 1);
}

int startProcess() {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  return tell(child > 0);
}

[[noreturn]] void spin() {
  for (;;) static_cast<void>(getppid());
}

int flood(const char* lines) {
  const std::string line(1000, 'x');
  for (long i = 0; i < std::atol(lines); ++i) std::fprintf(stderr, "%s\n", line.c_str());
  return 0;
}

int run(const std::string& what, const char* value) {
  if (what == "connect") return connectTo(value);
  if (what == "local") return tell(socket(AF_UNIX, SOCK_STREAM, 0) >= 0);
  if (what == "pair") {
    int ends[2];
    return tell(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
  }
  if (what == "ring") return tell(syscall(SYS_io_uring_setup, 1, nullptr) >= 0);
  if (what == "write") return writeFile(value);
  if (what == "descriptors") return listDescriptors();
  if (what == "allocate") return allocate(value);
  if (what == "privileges") return becomeRoot();
  if (what == "thread") return useThread();
  if (what == "process") return startProcess();
  if (what == "clone3") return tell(syscall(SYS_clone3, nullptr, 0) >= 0);
  if (what == "kill") return tell(kill(getppid(), 0) == 0);
  if (what == "echo") return std::puts(value) < 0 ? 1 : 0;
  if (what == "status") return std::atoi(value);
  if (what == "crash") std::abort();
  if (what == "spin") spin();
  if (what == "flood") return flood(value);
  if (what == "sleep") {
    // With "quiet", without its output.
    if (std::string(value) == "quiet") close(1), close(2);
    for (;;) pause();
  }
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  return argc < 2 ? 2 : run(argv[1], argc > 2 ? argv[2] : "");
}
