// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/printing.h"

#include <fcntl.h>

#include <string_view>

#include "cli/interruption.h"
#include "common/handles.h"
#include "common/log.h"
#include "filter/raster_job.h"
#include "filter/settings.h"

namespace wren::cli {
namespace {

void takeMessage(void* context, const char* text, std::size_t length) {
  constexpr std::string_view kError = "ERROR:";
  auto& printed = *static_cast<PrintedPages*>(context);
  std::string_view line(text, length);
  while (!line.empty() && line.back() == '\n') line.remove_suffix(1);
  if (line.starts_with("DEBUG:Try print page")) ++printed.pages;
  if (line.starts_with(kError)) printed.error = line.substr(kError.size());
}

}  // namespace

PrintedPages printRasterFile(const std::string& ppd, const std::string& options,
                             const std::string& rasterPath, std::FILE* out,
                             const std::string& imageFolder) {
  PrintedPages printed;
  const MessageSink sink(takeMessage, &printed);
  Settings settings;
  if (!initializeSettingsFrom(ppd.c_str(), options.c_str(), &settings)) return printed;
  const FileDescriptor raster(open(rasterPath.c_str(), O_RDONLY | O_CLOEXEC));
  filter::CancelSignal cancel;
  cancel.flag = interruptionFlag();
  printed.success =
      filter::printRaster(settings, {raster.get(), out, imageFolder.c_str(), nullptr}, cancel);
  failIfInterrupted();
  return printed;
}

}  // namespace wren::cli
