// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/raster_job.h"

#include <memory>

#include "common/handles.h"
#include "common/log.h"
#include "common/private_file.h"
#include "filter/raster_input.h"
#include "job/job.h"
#include "printer/dot_matrix_ep_printer.h"

namespace wren::filter {
namespace {

// The line of perror is written on every run, whether the file was opened or not: programs
// that read the log expect it.
FilePtr openSideFile(const char* path) {
  FileDescriptor descriptor = openPrivateFile(path);
  FilePtr file(descriptor ? fdopen(descriptor.get(), "w") : nullptr);
  if (file != nullptr) descriptor.release();
  std::perror("fopen() failed.");
  wrenLogCommon(0, "outFile cups.out : %p", static_cast<void*>(file.get()));
  return file;
}

}  // namespace

bool printRaster(const Settings& settings, const RasterJob& raster, const CancelSignal& cancel) {
  cancel.announceJob();
  const auto printer = std::make_unique<BandPrinter>();
  printer->setDebugImageFolder(raster.imageFolder);
  job::Job job(settings, *printer, raster.output, cancel.check());
  job.begin();
  RasterInput input(raster.input, cancel);
  const FilePtr sideFile = raster.sideFile == nullptr ? nullptr : openSideFile(raster.sideFile);
  return job.printPages(input);
}

}  // namespace wren::filter
