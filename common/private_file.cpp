// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace wren {
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// Others may have created the file to read it later, or as a hard link to a file that this
// user must not overwrite. It is emptied only after these checks.
bool makePrivate(int descriptor) {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0) return false;
  if (!S_ISREG(status.st_mode) || status.st_nlink > 1 || status.st_uid != geteuid()) {
    errno = EINVAL;
    return false;
  }
  return fchmod(descriptor, kOwnerOnly) == 0 && ftruncate(descriptor, 0) == 0;
}

}  // namespace

FileDescriptor openPrivateFile(const char* path) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  FileDescriptor file(open(path, kFlags, kOwnerOnly));
  if (file && !makePrivate(file.get())) {
    const int reason = errno;
    file.reset();
    errno = reason;
  }
  return file;
}

}  // namespace wren
