// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/filter_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "common/handles.h"
#include "common/log.h"
#include "common/path.h"
#include "filter/raster_job.h"
#include "filter/settings.h"

namespace wren::filter {
namespace {

// The version of the byte stream, not of the package: printed by the usage text.
constexpr char kVersion[] = "3.13.31";
constexpr char kSideFile[] = "/opt/cupsout/cups.out";
constexpr int kFewestArguments = 6;
constexpr int kOptionsArgument = 5;
constexpr int kFileArgument = 6;

// Standard input, or the raster file of the arguments.
class InputFile {
 public:
  // Blocks on a pipe that nobody has opened for writing yet.
  bool openPath(const char* path) {
    file_ = FileDescriptor(open(path, O_RDONLY | O_CLOEXEC));
    return static_cast<bool>(file_);
  }
  int descriptor() const { return file_ ? file_.get() : STDIN_FILENO; }

 private:
  FileDescriptor file_;
};

void writeUsage(const char* program) {
  const char* name = program == nullptr ? "" : wrenPathGetBasename(program);
  wrenWriteMessage("%s v%s\n\nUsage:\n\n    %s job_id user title copyies options [file]\n\n", name,
                   kVersion, name);
}

}  // namespace

int runFilter(int argc, char** argv, const CancelSignal& cancel, const char* imageFolder) {
  if (argc < kFewestArguments) {
    writeUsage(argc > 0 ? argv[0] : nullptr);
    return EXIT_FAILURE;
  }
  InputFile input;
  if (argc > kFileArgument && !input.openPath(argv[kFileArgument])) {
    wrenWriteMessage("ERROR: Unable to open raster file - ");
    return EXIT_FAILURE;
  }
  Settings settings;
  if (!initializeSettings(argv[kOptionsArgument], &settings)) return EXIT_FAILURE;
  const RasterJob job = {input.descriptor(), stdout, imageFolder, kSideFile};
  return printRaster(settings, job, cancel) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace wren::filter
