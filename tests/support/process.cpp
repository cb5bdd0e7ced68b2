// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace wren_test {

namespace {

using Clock = std::chrono::steady_clock;

// An unlinked temporary file, closed on exec.
int openUnlinkedFile() {
  std::string pattern = (std::filesystem::temp_directory_path() / "wren-out-XXXXXX").string();
  const int descriptor = mkostemp(pattern.data(), O_CLOEXEC | O_APPEND);
  if (descriptor < 0) throw std::runtime_error("no temporary file");
  unlink(pattern.c_str());
  return descriptor;
}

std::string contentOf(int descriptor) {
  std::string bytes;
  char block[65536];
  off_t at = 0;
  for (ssize_t count = 0; (count = pread(descriptor, block, sizeof block, at)) > 0; at += count) {
    bytes.append(block, static_cast<std::size_t>(count));
  }
  return bytes;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const auto& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

#ifdef WREN_EMULATOR
// A program for another processor, on a system that cannot execute it directly.
void execEmulator(const ProcessSpec& spec) {
  std::vector<std::string> words = {WREN_EMULATOR, "-0", spec.arguments.at(0), spec.program};
  words.insert(words.end(), spec.arguments.begin() + 1, spec.arguments.end());
  const auto arguments = pointersTo(words);
  const auto environment = pointersTo(spec.environment);
  execve(WREN_EMULATOR, arguments.data(), environment.data());
}
#endif

[[noreturn]] void execProgram(const ProcessSpec& spec, int input, int out, int err) {
  dup2(input, 0);
  dup2(out, 1);
  dup2(err, 2);
  std::signal(SIGPIPE, SIG_DFL);
  if (!spec.workingFolder.empty() && chdir(spec.workingFolder.c_str()) != 0) _exit(126);
  const auto arguments = pointersTo(spec.arguments);
  const auto environment = pointersTo(spec.environment);
  if (spec.beforeExec != nullptr) spec.beforeExec();
  execve(spec.program.c_str(), arguments.data(), environment.data());
#ifdef WREN_EMULATOR
  if (errno == ENOEXEC) execEmulator(spec);
#endif
  _exit(127);
}

template <typename Condition>
bool waitUntil(Condition condition, double seconds) {
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  while (!condition()) {
    if (Clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace

Process::Process(const ProcessSpec& spec) : timeoutSeconds_(spec.timeoutSeconds) {
  std::signal(SIGPIPE, SIG_IGN);
  outDescriptor_ = openUnlinkedFile();
  errDescriptor_ = openUnlinkedFile();
  int ends[2] = {-1, -1};
  if (spec.inputPath.empty()) {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    inputDescriptor_ = ends[1];
  } else {
    ends[0] = open(spec.inputPath.c_str(), O_RDONLY | O_CLOEXEC);
  }
  pid_ = fork();
  if (pid_ == 0) execProgram(spec, ends[0], outDescriptor_, errDescriptor_);
  if (ends[0] >= 0) close(ends[0]);
  if (pid_ < 0) throw std::runtime_error("fork failed");
}

Process::~Process() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  closeInput();
  close(outDescriptor_);
  close(errDescriptor_);
}

void Process::feed(const std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(inputDescriptor_, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    done += static_cast<std::size_t>(count);
  }
}

void Process::closeInput() {
  if (inputDescriptor_ >= 0) close(inputDescriptor_);
  inputDescriptor_ = -1;
}

void Process::signal(int number) const {
  if (pid_ > 0) kill(pid_, number);
}

std::string Process::outSoFar() const {
  return contentOf(outDescriptor_);
}

std::string Process::errSoFar() const {
  return contentOf(errDescriptor_);
}

long Process::peakKilobytesSoFar() const {
  std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

bool Process::waitForError(const std::string& text, double seconds) const {
  return waitUntil([&] { return errSoFar().find(text) != std::string::npos; }, seconds);
}

bool Process::waitForOutput(std::size_t bytes, double seconds) const {
  return waitUntil([&] { return lseek(outDescriptor_, 0, SEEK_END) >= static_cast<off_t>(bytes); },
                   seconds);
}

bool Process::hasEnded() {
  if (pid_ < 0) return true;
  int status = 0;
  rusage usage = {};
  if (wait4(pid_, &status, WNOHANG, &usage) != pid_) return false;
  collect(status, usage.ru_maxrss);
  return true;
}

void Process::collect(int status, long peakKilobytes) {
  pid_ = -1;
  if (WIFEXITED(status)) result_.exitStatus = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result_.signal = WTERMSIG(status);
  result_.peakKilobytes = peakKilobytes;
}

ProcessResult Process::finish() {
  closeInput();
  if (!waitUntil([this] { return hasEnded(); }, timeoutSeconds_)) {
    result_.timedOut = true;
    signal(SIGKILL);
    waitUntil([this] { return hasEnded(); }, 10.0);
  }
  result_.out = outSoFar();
  result_.err = errSoFar();
  return result_;
}

ProcessResult runProcess(const ProcessSpec& spec, const std::string& input) {
  Process process(spec);
  if (spec.inputPath.empty()) process.feed(input);
  return process.finish();
}

}  // namespace wren_test
