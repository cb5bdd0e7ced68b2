// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/device_stream.h"

#include <algorithm>
#include <memory>
#include <new>

namespace wren::app {
namespace {

struct Target {
  pappl_device_t* device;
  std::string* record;

  bool write(const char* bytes, std::size_t count) const {
    if (papplDeviceWrite(device, bytes, count) != static_cast<ssize_t>(count)) return false;
    if (record != nullptr) note(bytes, std::min(count, kMostRecordedBytes - record->size()));
    return true;
  }

 private:
  // Paper now is worth more than its picture later. Nothing thrown may reach the C library.
  void note(const char* bytes, std::size_t count) const {
    try {
      record->append(bytes, count);
    } catch (const std::bad_alloc&) {
      record->clear();
    }
  }
};

int closeTarget(void* target) {
  delete static_cast<Target*>(target);
  return 0;
}

#ifdef __APPLE__
int writeTo(void* target, const char* bytes, int count) {
  return static_cast<Target*>(target)->write(bytes, static_cast<std::size_t>(count)) ? count : -1;
}

std::FILE* openStream(Target* target) {
  return funopen(target, nullptr, writeTo, nullptr, closeTarget);
}
#else
// The result of 0 is the error of this interface.
ssize_t writeTo(void* target, const char* bytes, std::size_t count) {
  return static_cast<Target*>(target)->write(bytes, count) ? static_cast<ssize_t>(count) : 0;
}

std::FILE* openStream(Target* target) {
  cookie_io_functions_t functions = {};
  functions.write = writeTo;
  functions.close = closeTarget;
  return fopencookie(target, "w", functions);
}
#endif

}  // namespace

FilePtr openDeviceStream(pappl_device_t* device, std::string* record) {
  auto target = std::make_unique<Target>(Target{device, record});
  FilePtr stream(openStream(target.get()));
  if (stream != nullptr) (void)target.release();
  return stream;
}

}  // namespace wren::app
