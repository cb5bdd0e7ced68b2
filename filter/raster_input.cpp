// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/raster_input.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace wren::filter {
namespace {

bool isRegularFile(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

RasterInput::RasterInput(int descriptor, const CancelSignal& cancel)
    : descriptor_(descriptor),
      cancel_(cancel),
      mayWait_(!isRegularFile(descriptor)),
      stream_(cupsRasterOpenIO(readBytes, this, CUPS_RASTER_READ)) {}

RasterInput::~RasterInput() {
  if (stream_ != nullptr) cupsRasterClose(stream_);
}

bool RasterInput::readHeader(cups_page_header2_s& header) {
  return stream_ != nullptr && cupsRasterReadHeader2(stream_, &header) != 0;
}

bool RasterInput::readPixels(std::uint8_t* pixels, unsigned size) {
  return cupsRasterReadPixels(stream_, pixels, size) != 0;
}

// The signal handler writes to the wake-up descriptor, so a signal that arrives just before
// the poll is not lost either.
bool RasterInput::waitForBytes() const {
  pollfd waited[] = {{descriptor_, POLLIN, 0}, {cancel_.wakeUpDescriptor, POLLIN, 0}};
  while (!cancel_.isRequested()) {
    const int ready = poll(waited, 2, -1);
    if (ready > 0 && waited[0].revents != 0) return true;
    if (ready < 0 && errno != EINTR) return true;
  }
  return false;
}

ssize_t RasterInput::readBytes(void* self, unsigned char* buffer, size_t length) {
  const auto& input = *static_cast<const RasterInput*>(self);
  while (!input.cancel_.isRequested()) {
    if (input.mayWait_ && !input.waitForBytes()) break;
    const ssize_t count = read(input.descriptor_, buffer, length);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) return count;
  }
  return -1;
}

}  // namespace wren::filter
