// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A private spool folder for each run of the filter, so that tests leave no debug images
// in the real one and do not see those of each other. Where the system allows it, the
// folder is mounted over the real one in a mount namespace. Elsewhere a second build of
// the filter runs, which writes to "spool" below its working folder.

#pragma once

#include <string>

namespace wren_test {

/// The real folder, with a trailing slash.
extern const char* const kRealSpoolFolder;

/// What the filter finds at the path of the spool folder.
enum class SpoolKind {
  kPrivate,   ///< an empty folder
  kMissing,   ///< nothing
  kReadOnly,  ///< a read-only folder (needs mounts)
  kFull,      ///< a file system of 16 KiB (needs mounts)
};

/// Whether this process may mount folders in a mount namespace.
bool canMount();

/// Path of the filter to run: the real one if `canMount`, else the second build. The environment
/// variable WREN_TEST_FILTER names another one, such as that of a package.
std::string filterProgram();

/// Called in the child before exec. Mounts `privateFolder`/spool over the spool folder and, if it
/// exists, `privateFolder`/opt over /opt. Exits with status 125 on failure.
void enterPrivateSpool(const std::string& privateFolder, SpoolKind kind);

}  // namespace wren_test
