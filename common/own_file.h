// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Files that the filter writes for its owner alone, in folders that others may
// write to as well.
#pragma once

/// Opens a file for reading and writing, created where it is missing, emptied where it
/// exists, with mode 0600. A symbolic link, a file with a second name (a hard link) or of
/// another user, a pipe, a device or a folder of that name is refused, and the call never
/// waits.
/// @return a descriptor that the caller closes and that exec does not pass on; -1 with
///   errno set on failure.
int openOwnFile(const char* path);
