// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "filter/raster_input.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

bool isPlainFile(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

RasterInput::RasterInput(int inputDescriptor, const CancelSignal& cancelSignal)
    : descriptor(inputDescriptor),
      cancel(cancelSignal),
      mayWait(!isPlainFile(inputDescriptor)),
      stream(cupsRasterOpenIO(readBytes, this, CUPS_RASTER_READ)) {}

RasterInput::~RasterInput() {
  if (stream != nullptr) cupsRasterClose(stream);
}

bool RasterInput::readHeader(cups_page_header2_s& header) {
  return stream != nullptr && cupsRasterReadHeader2(stream, &header) != 0;
}

bool RasterInput::readPixels(unsigned char* pixels, unsigned size) {
  return cupsRasterReadPixels(stream, pixels, size) != 0;
}

// The handler of the signal writes to the wake-up descriptor, so a signal that comes
// just before the wait is not lost either.
bool RasterInput::waitForBytes() const {
  pollfd waited[] = {{descriptor, POLLIN, 0}, {cancel.wakeUpDescriptor, POLLIN, 0}};
  while (!cancel.isRequested()) {
    const int ready = poll(waited, 2, -1);
    if (ready > 0 && waited[0].revents != 0) return true;
    if (ready < 0 && errno != EINTR) return true;
  }
  return false;
}

ssize_t RasterInput::readBytes(void* self, unsigned char* buffer, size_t length) {
  const auto& input = *static_cast<const RasterInput*>(self);
  while (!input.cancel.isRequested()) {
    if (input.mayWait && !input.waitForBytes()) break;
    const ssize_t count = read(input.descriptor, buffer, length);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) return count;
  }
  return -1;
}
