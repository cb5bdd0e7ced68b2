// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "common/own_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// Emptied only once it is known to be a plain file of this user that has no second name:
// others may have made this one to read it later, or as a hard link to a file that is not
// theirs to overwrite.
bool makeOwn(int descriptor) {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0) return false;
  if (!S_ISREG(status.st_mode) || status.st_nlink > 1 || status.st_uid != geteuid()) {
    errno = EINVAL;
    return false;
  }
  return fchmod(descriptor, kOwnerOnly) == 0 && ftruncate(descriptor, 0) == 0;
}

}  // namespace

int openOwnFile(const char* path) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int descriptor = open(path, kFlags, kOwnerOnly);
  if (descriptor < 0 || makeOwn(descriptor)) return descriptor;
  const int reason = errno;
  close(descriptor);
  errno = reason;
  return -1;
}
