// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/queue/scheduler.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "tests/support/temporary_folder.h"

namespace {

constexpr const char* kPolicy = R"(
LogLevel info
MaxLogSize 0
Browsing No
WebInterface Yes
DefaultAuthType None
JobRetryLimit 1
ErrorPolicy abort-job
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  JobPrivateAccess all
  JobPrivateValues none
  SubscriptionPrivateAccess all
  SubscriptionPrivateValues none
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
)";

}  // namespace

int run(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

std::string outputOf(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {};
  std::string text;
  std::array<char, 4096> part;
  while (const auto count = fread(part.data(), 1, part.size(), pipe)) {
    text.append(part.data(), count);
  }
  return pclose(pipe) == 0 ? text : std::string();
}

Scheduler::Scheduler(std::string work, bool asRoot) : work_(std::move(work)), asRoot_(asRoot) {
  setenv("CUPS_SERVER", (work_ + "/state/socket").c_str(), 1);
}

Scheduler::~Scheduler() {
  if (pid_ <= 0) return;
  kill(pid_, SIGTERM);
  waitpid(pid_, nullptr, 0);
}

void Scheduler::writeConfiguration() const {
  std::ofstream(work_ + "/root/cupsd.conf") << "Listen " << work_ << "/state/socket" << kPolicy;
  std::ofstream files(work_ + "/root/cups-files.conf");
  if (asRoot_) files << "User lp\nGroup lp\n";
  const std::array<std::pair<const char*, const char*>, 12> places = {{
      {"ServerRoot", "root"},
      {"ServerBin", "bin"},
      {"CacheDir", "cache"},
      {"StateDir", "state"},
      {"RequestRoot", "requests"},
      {"TempDir", "temp"},
      {"ServerKeychain", "keys"},
      {"AccessLog", "log/access"},
      {"ErrorLog", "log/error"},
      {"PageLog", "log/page"},
      {"Printcap", "printcap"},
      {"DocumentRoot", "root"},
  }};
  for (const auto& [directive, place] : places) {
    files << directive << " " << work_ << "/" << place << "\n";
  }
}

bool Scheduler::start() {
  writeConfiguration();
  const std::string conf = work_ + "/root/cupsd.conf";
  const std::string files = work_ + "/root/cups-files.conf";
  pid_ = fork();
  if (pid_ == 0) {
    if (std::freopen("/dev/null", "r", stdin) == nullptr) _exit(127);
    execlp("cupsd", "cupsd", "-f", "-c", conf.c_str(), "-s", files.c_str(), nullptr);
    _exit(127);
  }
  for (int i = 0; i < 200; ++i) {
    if (run("lpstat -r 2>/dev/null | grep -q 'is running'") == 0) return true;
    usleep(50'000);
  }
  return false;
}

bool Scheduler::addQueue(const std::string& name, int paper, int port,
                         const std::string& settings) const {
  return run("lpadmin -p " + name + " -E -v 'socket://127.0.0.1:" + std::to_string(port) +
             "/?waiteof=false&snmp=false' -P " + work_ + "/ppd/wren" + std::to_string(paper) +
             ".ppd " + settings + " 2>/dev/null") == 0;
}

bool Scheduler::addQueues(int port) const {
  const std::string defaults =
      "-o position-default=top -o pdfAutoRotate-default=no -o orientation-requested-default=3";
  return addQueue("wren58", 58, port, defaults) && addQueue("wren80", 80, port, defaults) &&
         addQueue("wren112", 112, port, defaults) && addQueue("plain80", 80, port, "") &&
         addQueue("dark80", 80, port, defaults + " -o Brightness=10");
}

bool Scheduler::waitForLog(const std::string& text) const {
  constexpr int kTries = 1500;
  for (int i = 0; i < kTries; ++i) {
    if (wren_test::readFile(work_ + "/log/error").find(text) != std::string::npos) return true;
    usleep(20'000);
  }
  return false;
}

std::string Scheduler::logTail() const {
  return outputOf("tail -n 30 " + work_ + "/log/error");
}
