// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/measured_run.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
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
  std::vector<const char*> arguments = {command.program.c_str()};
  if (!command.firstArgument.empty()) arguments.push_back(command.firstArgument.c_str());
  arguments.insert(arguments.end(), {"1", "user", "title", "1", command.options.c_str(),
                                     command.raster.c_str(), nullptr});
  execv(command.program.c_str(), const_cast<char* const*>(arguments.data()));
  _exit(127);
}

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

// The 64-bit FNV-1a hash (Fowler, Noll, Vo), over words of eight bytes where there are eight.
std::uint64_t hashOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> part(1 << 16);
  std::uint64_t hash = 0xCBF29CE484222325U;
  while (file.read(part.data(), static_cast<std::streamsize>(part.size())), file.gcount() > 0) {
    const auto count = static_cast<std::size_t>(file.gcount());
    for (std::size_t i = 0; i < count; i += sizeof hash) {
      std::uint64_t word = 0;
      std::memcpy(&word, part.data() + i, std::min(sizeof word, count - i));
      hash = (hash ^ word) * 0x100000001B3U;
    }
  }
  return hash;
}

void takeFile(const fs::path& path, long long& bytes, Hash hash, Usage& usage) {
  std::error_code missing;
  const auto size = fs::file_size(path, missing);
  if (missing) return;
  bytes += static_cast<long long>(size);
  // The names of the images change from run to run, and so does their order.
  if (hash == Hash::kTake) usage.hash += hashOf(path);
  fs::remove(path);
}

void takeFiles(Hash hash, Usage& usage) {
  takeFile(place.output, usage.outBytes, hash, usage);
  for (const auto& entry : fs::directory_iterator(place.images)) {
    takeFile(entry.path(), usage.fileBytes, hash, usage);
  }
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

Usage measure(const Command& command, Hash hash) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) become(command);
  int status = 0;
  rusage used{};
  Usage usage;
  if (child == -1 || wait4(child, &status, 0, &used) != child) {
    usage.status = 127;
    return usage;
  }
  usage.wallMs =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  usage.cpuMs = milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
  usage.peakMiB = static_cast<double>(used.ru_maxrss) / 1024;
  usage.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  takeFiles(hash, usage);
  return usage;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace wren::bench
