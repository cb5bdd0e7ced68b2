// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/spool_folder.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/support/temporary_folder.h"

namespace wren_test {

const char* const kRealSpoolFolder = "/var/spool/cups/tmp/";

namespace {

constexpr char kRealSpoolParent[] = "/var/spool/cups";

void writeTo(const char* path, const std::string& text) {
  const int descriptor = open(path, O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) return;
  static_cast<void>(!write(descriptor, text.data(), text.size()));
  close(descriptor);
}

// Other users than root need a user namespace in which they are root.
bool enterNamespace() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) return false;
  if (user != 0) {
    writeTo("/proc/self/setgroups", "deny");
    writeTo("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    writeTo("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
  }
  return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool bindFolder(const std::string& from, const char* to) {
  return mount(from.c_str(), to, nullptr, MS_BIND, nullptr) == 0;
}

bool mountSpool(const std::string& privateFolder, SpoolKind kind) {
  const std::string spool = privateFolder + "/spool";
  switch (kind) {
    case SpoolKind::kMissing:
      return mount("none", kRealSpoolParent, "tmpfs", 0, "size=16k") == 0;
    case SpoolKind::kFull:
      return mount("none", spool.c_str(), "tmpfs", 0, "size=16k") == 0 &&
             bindFolder(spool, kRealSpoolFolder);
    case SpoolKind::kReadOnly:
      return bindFolder(spool, kRealSpoolFolder) &&
             mount(nullptr, kRealSpoolFolder, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) ==
                 0;
    case SpoolKind::kPrivate:
      break;
  }
  return bindFolder(spool, kRealSpoolFolder);
}

bool mountOpt(const std::string& privateFolder) {
  const std::string opt = privateFolder + "/opt";
  return access(opt.c_str(), F_OK) != 0 || bindFolder(opt, "/opt");
}

bool tryMount() {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path() / "spool");
  const pid_t child = fork();
  if (child == 0) {
    _exit(enterNamespace() && mountSpool(folder.path(), SpoolKind::kPrivate) ? 0 : 1);
  }
  int status = 1;
  waitpid(child, &status, 0);
  return status == 0;
}

}  // namespace

bool canMount() {
  static const bool result = tryMount();
  return result;
}

std::string filterProgram() {
  const char* const other = std::getenv("WREN_TEST_FILTER");
  if (other != nullptr) return other;
  return canMount() ? WREN_FILTER_PROGRAM : WREN_RELOCATED_FILTER_PROGRAM;
}

void enterPrivateSpool(const std::string& privateFolder, SpoolKind kind) {
  if (!canMount()) return;
  if (!enterNamespace() || !mountSpool(privateFolder, kind) || !mountOpt(privateFolder)) {
    _exit(125);
  }
}

}  // namespace wren_test
