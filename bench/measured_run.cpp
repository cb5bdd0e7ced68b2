// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/measured_run.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace wren::bench {
namespace {

namespace fs = std::filesystem;

// Where the programs write: standard output and debug images.
struct Place {
  std::string output = "/var/spool/output";
  std::string images = "/var/spool/cups/tmp";
};
Place place;

std::string failure(const char* what) {
  return std::string(what) + ": " + std::strerror(errno);
}

// Without root, mounts need a user namespace in which this user is root.
void mapUser(uid_t user, gid_t group) {
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
  std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
}

[[noreturn]] void become(const Command& command) {
  const int output = open(place.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  const int nothing = open("/dev/null", O_RDWR);
  dup2(nothing, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(nothing, STDERR_FILENO);
  close(output);
  close(nothing);
  setenv("PPD", command.ppd.c_str(), 1);
  execl(command.program.c_str(), command.program.c_str(), "1", "user", "title", "1",
        command.options.c_str(), command.raster.c_str(), static_cast<char*>(nullptr));
  _exit(127);
}

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

long long takeImages() {
  long long bytes = 0;
  for (const auto& entry : fs::directory_iterator(place.images)) {
    bytes += static_cast<long long>(entry.file_size());
    fs::remove(entry.path());
  }
  return bytes;
}

}  // namespace

std::string enterPrivateSpool() {
  const uid_t user = getuid();
  const gid_t group = getgid();
  if (unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) != 0) return failure("unshare");
  if (user != 0) mapUser(user, group);
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return failure("mount /");
  if (mount("tmpfs", "/var/spool", "tmpfs", 0, nullptr) != 0) return failure("mount /var/spool");
  std::error_code error;
  fs::create_directories(place.images, error);
  return error ? error.message() : "";
}

SpoolBelow::SpoolBelow() {
  const fs::path memory = "/dev/shm";
  folder_ = (access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path()) /
            "wren-bench.XXXXXX";
  if (mkdtemp(folder_.data()) == nullptr) throw std::runtime_error(failure("mkdtemp"));
  fs::create_directory(folder_ + "/spool");
  place = {folder_ + "/output", folder_ + "/spool"};
  fs::current_path(folder_);
}

SpoolBelow::~SpoolBelow() {
  std::error_code ignored;
  fs::current_path("/", ignored);
  fs::remove_all(folder_, ignored);
}

Usage measure(const Command& command) {
  const pid_t child = fork();
  if (child == 0) become(command);
  int status = 0;
  rusage used{};
  Usage usage;
  if (child == -1 || wait4(child, &status, 0, &used) != child) {
    usage.status = 127;
    return usage;
  }
  usage.cpuMs = milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
  usage.peakMiB = static_cast<double>(used.ru_maxrss) / 1024;
  usage.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  struct stat output {};
  if (stat(place.output.c_str(), &output) == 0) usage.outBytes = output.st_size;
  unlink(place.output.c_str());
  usage.fileBytes = takeImages();
  return usage;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace wren::bench
