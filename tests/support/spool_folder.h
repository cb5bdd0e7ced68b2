// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Gives a run of the filter a folder of its own for the debug images, so that nothing
// of a test stays in the real one and two runs never meet there.
//
// Where the system allows it, the run gets its own view of the file system with a
// private folder over the real one (a mount namespace). Elsewhere a second build of the
// filter is run that writes to the folder "spool" below its working folder.
#pragma once

#include <string>

namespace wren_test {

/// The real folder, with a slash at its end.
extern const char* const kRealSpoolFolder;

/// What the run finds in the place of the spool folder.
enum class SpoolKind {
  kPrivate,   ///< an empty folder of its own
  kMissing,   ///< nothing
  kReadOnly,  ///< a folder that takes no files (needs mounts)
  kFull,      ///< a folder with 16 KiB of room (needs mounts)
};

/// Whether this system lets a test mount folders for a run.
bool canMount();

/// Path of the filter to run: the real one where canMount(), else the second build.
std::string filterProgram();

/// To be called in the child before exec. privateFolder/spool takes the place of the spool
/// folder; privateFolder/opt, where it exists, that of /opt. Exits with 125 on failure.
void enterPrivateSpool(const std::string& privateFolder, SpoolKind kind);

}  // namespace wren_test
