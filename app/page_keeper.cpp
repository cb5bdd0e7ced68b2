// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/page_keeper.h"

#include <cstdio>
#include <memory>

#include "common/handles.h"
#include "common/private_file.h"

namespace wren::app {
namespace {

struct CloseRaster {
  void operator()(cups_raster_t* raster) const { cupsRasterClose(raster); }
};

std::string nameOf(unsigned number, const JobKey& job) {
  char name[64];
  std::snprintf(name, sizeof name, "/page-%06u-printer-%d-job-%d.ras", number, job.printerId,
                job.jobId);
  return name;
}

}  // namespace

bool PageKeeper::keep(const JobKey& job, cups_page_header2_s header, const std::uint8_t* levels) {
  if (folder_.empty()) return true;
  const std::string path = folder_ + nameOf(++pages_, job);
  const FileDescriptor file = openPrivateFile(path.c_str());
  if (!file) return false;
  const std::unique_ptr<cups_raster_t, CloseRaster> raster(
      cupsRasterOpen(file.get(), CUPS_RASTER_WRITE));
  if (raster == nullptr || cupsRasterWriteHeader2(raster.get(), &header) == 0) return false;
  const unsigned size = header.cupsHeight * header.cupsBytesPerLine;
  // The library takes the pixels of a page to write as not constant.
  return cupsRasterWritePixels(raster.get(), const_cast<std::uint8_t*>(levels), size) == size;
}

}  // namespace wren::app
