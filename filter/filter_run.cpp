// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "filter/filter_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "common/log.h"
#include "common/own_file.h"
#include "common/path.h"
#include "filter/job.h"
#include "filter/raster_input.h"
#include "printer/dot_matrix_ep_printer.h"

namespace {

constexpr char kVersion[] = "3.13.31";
constexpr char kSideFile[] = "/opt/cupsout/cups.out";
constexpr int kFewestArguments = 6;
constexpr int kOptionsArgument = 5;
constexpr int kFileArgument = 6;

// Standard input, or the raster file of the arguments, which is closed at the end.
class InputFile {
 public:
  InputFile() = default;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    if (fileDescriptor > 0) close(fileDescriptor);
  }

  // A pipe that nobody writes to yet keeps open waiting.
  bool openPath(const char* path) {
    fileDescriptor = open(path, O_RDONLY | O_CLOEXEC);
    return fileDescriptor >= 0;
  }
  int descriptor() const { return fileDescriptor; }

 private:
  int fileDescriptor = STDIN_FILENO;
};

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using SideFile = std::unique_ptr<FILE, CloseFile>;

void writeUsage(const char* program) {
  const char* name = program == nullptr ? "" : wrenPathGetBasename(program);
  wrenWriteMessage("%s v%s\n\nUsage:\n\n    %s job_id user title copyies options [file]\n\n", name,
                   kVersion, name);
}

// The file is created or emptied and never written. The line of perror comes on every
// run, whether the file opened or not: who watches the log expects it.
SideFile openSideFile() {
  const int descriptor = openOwnFile(kSideFile);
  SideFile file(descriptor < 0 ? nullptr : fdopen(descriptor, "w"));
  std::perror("fopen() failed.");
  wrenLogCommon(0, "outFile cups.out : %p", static_cast<void*>(file.get()));
  return file;
}

bool runJob(const Settings& settings, int inputDescriptor, const CancelSignal& cancel) {
  cancel.announceJob();
  beginJob(settings);
  const auto printer = std::make_unique<DotMatrixEpPrinter>();
  RasterInput input(inputDescriptor, cancel);
  const SideFile sideFile = openSideFile();
  return Job(settings, *printer, cancel).printPages(input);
}

}  // namespace

int runFilter(int argc, char** argv, const CancelSignal& cancel) {
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
  return runJob(settings, input.descriptor(), cancel) ? EXIT_SUCCESS : EXIT_FAILURE;
}
