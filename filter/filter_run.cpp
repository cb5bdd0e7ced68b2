// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/filter_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "common/handles.h"
#include "common/log.h"
#include "common/path.h"
#include "common/private_file.h"
#include "filter/raster_input.h"
#include "filter/settings.h"
#include "job/job.h"
#include "printer/dot_matrix_ep_printer.h"

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

// The file is created or emptied and never written. The line of perror is written on every
// run, whether the file was opened or not: programs that read the log expect it.
FilePtr openSideFile() {
  FileDescriptor descriptor = openPrivateFile(kSideFile);
  FilePtr file(descriptor ? fdopen(descriptor.get(), "w") : nullptr);
  if (file != nullptr) descriptor.release();
  std::perror("fopen() failed.");
  wrenLogCommon(0, "outFile cups.out : %p", static_cast<void*>(file.get()));
  return file;
}

bool runJob(const Settings& settings, int inputDescriptor, const CancelSignal& cancel,
            const char* imageFolder) {
  cancel.announceJob();
  const auto printer = std::make_unique<BandPrinter>();
  printer->setDebugImageFolder(imageFolder);
  job::Job job(settings, *printer, stdout, cancel.check());
  job.begin();
  RasterInput input(inputDescriptor, cancel);
  const FilePtr sideFile = openSideFile();
  return job.printPages(input);
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
  const bool success = runJob(settings, input.descriptor(), cancel, imageFolder);
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace wren::filter
