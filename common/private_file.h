// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Files that only their owner may read, in folders to which others may write as well.

#pragma once

#include "common/handles.h"

namespace wren {

/// Opens a file for reading and writing with mode 0600. A missing file is created, an
/// existing one is emptied. Refuses a symbolic link, a file with a second hard link or of
/// another user, a pipe, a device and a folder. Never blocks.
/// @return a close-on-exec descriptor; none, with errno set, on failure.
FileDescriptor openPrivateFile(const char* path);

}  // namespace wren
