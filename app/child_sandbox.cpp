// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/child_sandbox.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#ifdef __linux__
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string_view>
#include <thread>
#include <utility>

#include "app/document_error.h"
#include "app/syscall_filter.h"

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kCancelPoll{20};
constexpr milliseconds kExitPoll{2};
constexpr int kStatusDescriptor = 3;
constexpr int kOpenFiles = 64;
constexpr int kPipeBytes = 1 << 20;

[[noreturn]] void fail(const std::string& text) {
  throw DocumentError(DocumentError::Kind::kSystem, text + ": " + std::strerror(errno));
}

// The same file above the standard descriptors, so that the child can put them where it wants in
// any order.
FileDescriptor aboveStandard(int descriptor) {
  const FileDescriptor low(descriptor);
  FileDescriptor high(::fcntl(low.get(), F_DUPFD_CLOEXEC, kStatusDescriptor));
  if (!high) fail("there is no descriptor left");
  return high;
}

struct Pipe {
  Pipe() {
    int ends[2];
    if (::pipe(ends) != 0) fail("there is no pipe");
    FileDescriptor lowWriteEnd(ends[1]);
    readEnd = aboveStandard(ends[0]);
    writeEnd = aboveStandard(lowWriteEnd.release());
  }

  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

void setNonBlocking(const FileDescriptor& descriptor) {
  ::fcntl(descriptor.get(), F_SETFL, ::fcntl(descriptor.get(), F_GETFL) | O_NONBLOCK);
}

// All that the child needs between fork and exec. Other threads may have held the lock of malloc
// at the fork, so that nothing may be allocated there.
struct ChildPlan {
  std::vector<char*> arguments;
  std::vector<char*> environment;
  int input;
  int output;
  int errors;
  int status;
  rlim_t memoryBytes;
  rlim_t processorSeconds;
  pid_t parent;
  const std::vector<FilterInstruction>* filter;
};

enum class Stage : int { kLimits, kSandbox, kProgram };

struct StartFailure {
  Stage stage;
  int error;
};

// A soft limit alone could be raised again by the child.
bool limit(int resource, rlim_t value) {
  const rlimit both{value, value};
  return ::setrlimit(static_cast<decltype(RLIMIT_AS)>(resource), &both) == 0;
}

// File size 0: pipes are not files. SIGXFSZ is ignored, so that a write of the font cache fails
// instead of ending the program. macOS does not support a limit of the address space.
bool enterLimits(const ChildPlan& plan) {
#ifdef __linux__
  if (!limit(RLIMIT_AS, plan.memoryBytes)) return false;
#endif
  // The hard limit kills; SIGXCPU comes first and tells why.
  const rlimit processor{plan.processorSeconds, plan.processorSeconds + 1};
  return ::setrlimit(RLIMIT_CPU, &processor) == 0 && limit(RLIMIT_FSIZE, 0) &&
         limit(RLIMIT_CORE, 0) && limit(RLIMIT_NOFILE, kOpenFiles);
}

void closeFrom(int first) {
#if defined(__linux__) && defined(SYS_close_range)
  if (::syscall(SYS_close_range, static_cast<unsigned>(first), ~0U, 0U) == 0) return;
#endif
  rlimit open{};
  if (::getrlimit(RLIMIT_NOFILE, &open) != 0) open.rlim_cur = 1024;
  const rlim_t end = std::min<rlim_t>(open.rlim_cur, 1 << 20);
  for (int descriptor = first; static_cast<rlim_t>(descriptor) < end; ++descriptor) {
    ::close(descriptor);
  }
}

bool placeDescriptors(const ChildPlan& plan) {
  const bool placed = ::dup2(plan.input, 0) == 0 && ::dup2(plan.output, 1) == 1 &&
                      ::dup2(plan.errors, 2) == 2 &&
                      ::dup2(plan.status, kStatusDescriptor) == kStatusDescriptor &&
                      ::fcntl(kStatusDescriptor, F_SETFD, FD_CLOEXEC) == 0;
  closeFrom(kStatusDescriptor + 1);
  return placed;
}

// Handlers of the parent are gone after exec; what it ignores would stay ignored.
void resetSignals() {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  for (const int number : {SIGPIPE, SIGCHLD, SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGXCPU}) {
    ::sigaction(number, &action, nullptr);
  }
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGXFSZ, &action, nullptr);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The child dies with the thread that started it, which is also the one that reads its output.
bool tieToParent([[maybe_unused]] const ChildPlan& plan) {
#ifdef __linux__
  return ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == plan.parent;
#else
  return true;
#endif
}

[[noreturn]] void report(int descriptor, Stage stage) {
  const StartFailure failure{stage, errno};
  [[maybe_unused]] const auto written = ::write(descriptor, &failure, sizeof failure);
  ::_exit(127);
}

// Only async-signal-safe calls from here on.
[[noreturn]] void runChild(const ChildPlan& plan) {
  resetSignals();
  if (!placeDescriptors(plan)) report(plan.status, Stage::kLimits);
  if (!tieToParent(plan) || ::chdir("/") != 0 || !enterLimits(plan)) {
    report(kStatusDescriptor, Stage::kLimits);
  }
  if (!enterSyscallFilter(*plan.filter)) report(kStatusDescriptor, Stage::kSandbox);
  ::execve(plan.arguments[0], plan.arguments.data(), plan.environment.data());
  report(kStatusDescriptor, Stage::kProgram);
}

std::vector<char*> pointers(std::vector<std::string>& strings) {
  std::vector<char*> result;
  result.reserve(strings.size() + 1);
  for (std::string& text : strings) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::string describe(const StartFailure& failure, const std::string& program) {
  const std::string error = std::strerror(failure.error);
  switch (failure.stage) {
    case Stage::kLimits:
      return "the limits of " + program + " cannot be set: " + error;
    case Stage::kSandbox:
      return "the sandbox of " + program + " cannot be set up: " + error;
    case Stage::kProgram:
      break;
  }
  return program + " cannot be started: " + error;
}

}  // namespace

SandboxedChild::SandboxedChild(std::vector<std::string> arguments, const ChildLimits& limits,
                               const CancelCheck& cancel,
                               std::function<void(const std::string&)> errorLine)
    : silence_(limits.silence), cancel_(cancel), errorLine_(std::move(errorLine)) {
  start(arguments, limits);
}

SandboxedChild::~SandboxedChild() {
  kill();
}

void SandboxedChild::start(std::vector<std::string>& arguments, const ChildLimits& limits) {
  Pipe output;
  Pipe errors;
  Pipe status;
  const FileDescriptor nothing = aboveStandard(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  std::vector<std::string> environment = {"PATH=/usr/local/bin:/usr/bin:/bin", "LC_ALL=C"};
  ChildPlan plan{.arguments = pointers(arguments),
                 .environment = pointers(environment),
                 .input = nothing.get(),
                 .output = output.writeEnd.get(),
                 .errors = errors.writeEnd.get(),
                 .status = status.writeEnd.get(),
                 .memoryBytes = limits.memoryBytes,
                 .processorSeconds = limits.processorSeconds,
                 .parent = ::getpid(),
                 .filter = &syscallFilter()};
#ifdef F_SETPIPE_SZ
  // Fewer switches between the two processes. The default size will do as well.
  ::fcntl(output.writeEnd.get(), F_SETPIPE_SZ, kPipeBytes);
#endif
  pid_ = ::fork();
  if (pid_ == 0) runChild(plan);
  if (pid_ < 0) fail(arguments[0] + " cannot be started");
  output_ = std::move(output.readEnd);
  errors_ = std::move(errors.readEnd);
  setNonBlocking(output_);
  setNonBlocking(errors_);
  status.writeEnd.reset();
  StartFailure failure{};
  ssize_t count;
  do {
    count = ::read(status.readEnd.get(), &failure, sizeof failure);
  } while (count < 0 && errno == EINTR);
  if (count == 0) return;  // exec closed it
  kill();
  throw DocumentError(DocumentError::Kind::kSystem, describe(failure, arguments[0]));
}

SandboxedChild::Read SandboxedChild::waitFor(bool output) {
  const Clock::time_point end = Clock::now() + silence_;
  while (!cancel_.isCancelled()) {
    // poll() ignores negative descriptors.
    pollfd both[2] = {{output ? output_.get() : -1, POLLIN, 0}, {errors_.get(), POLLIN, 0}};
    const int ready = ::poll(both, 2, static_cast<int>(kCancelPoll.count()));
    if (ready > 0 && both[1].revents != 0) {
      drainErrors();
      if (!output) return Read::kBytes;
    }
    if (both[0].revents != 0) return Read::kBytes;
    if (Clock::now() >= end) return Read::kSilent;
  }
  return Read::kCancelled;
}

SandboxedChild::Read SandboxedChild::read(std::uint8_t* to, std::size_t size,
                                          std::size_t* bytesRead) {
  *bytesRead = 0;
  for (;;) {
    const Read waited = waitFor(true);
    if (waited != Read::kBytes) return waited;
    const ssize_t count = ::read(output_.get(), to, size);
    if (count == 0) return Read::kEnd;
    if (count > 0) {
      *bytesRead = static_cast<std::size_t>(count);
      return Read::kBytes;
    }
    if (errno != EINTR && errno != EAGAIN) fail("a pipe cannot be read");
  }
}

SandboxedChild::Read SandboxedChild::waitForErrorLine() {
  return errors_ ? waitFor(false) : Read::kEnd;
}

void SandboxedChild::drainErrors() {
  std::array<char, 4096> bytes;
  const ssize_t count = ::read(errors_.get(), bytes.data(), bytes.size());
  if (count > 0) {
    takeErrorBytes(bytes.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
    if (!line_.empty()) endErrorLine();
    errors_.reset();
  }
}

void SandboxedChild::takeErrorBytes(const char* bytes, std::size_t count) {
  for (const char byte : std::string_view(bytes, count)) {
    if (byte == '\n') {
      endErrorLine();
    } else if (line_.size() < kMaxLineBytes) {
      line_.push_back(byte);
    }
  }
}

void SandboxedChild::endErrorLine() {
  if (errorLine_) errorLine_(line_);
  line_.clear();
}

ChildExit SandboxedChild::finish() {
  const Clock::time_point end = Clock::now() + silence_;
  while (errors_ && Clock::now() < end && waitFor(false) == Read::kBytes) {
  }
  int status = 0;
  pid_t ended = 0;
  while ((ended = ::waitpid(pid_, &status, WNOHANG)) == 0 || (ended < 0 && errno == EINTR)) {
    if (cancel_.isCancelled() || Clock::now() >= end) {
      kill();
      return {.status = -1, .signal = SIGKILL};
    }
    std::this_thread::sleep_for(kExitPoll);
  }
  pid_ = -1;
  if (ended < 0) return {};  // somebody else waited for it
  if (WIFSIGNALED(status)) return {.status = -1, .signal = WTERMSIG(status)};
  return {.status = WEXITSTATUS(status), .signal = 0};
}

void SandboxedChild::kill() {
  if (pid_ < 0) return;
  ::kill(pid_, SIGKILL);
  while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
}

std::string findProgram(const std::string& name) {
  const char* variable = std::getenv("PATH");
  std::stringstream folders(std::string("/usr/bin:/usr/local/bin:/opt/homebrew/bin:") +
                            (variable != nullptr ? variable : ""));
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (folder.empty() || folder.front() != '/') continue;
    std::string path = folder;
    path.append("/").append(name);
    if (::access(path.c_str(), X_OK) == 0) return path;
  }
  return {};
}

}  // namespace wren::app
