// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/device_stream.h"

namespace wren::app {
namespace {

bool writeWhole(pappl_device_t* device, const char* bytes, std::size_t count) {
  return papplDeviceWrite(device, bytes, count) == static_cast<ssize_t>(count);
}

#ifdef __APPLE__
int writeTo(void* device, const char* bytes, int count) {
  const auto size = static_cast<std::size_t>(count);
  return writeWhole(static_cast<pappl_device_t*>(device), bytes, size) ? count : -1;
}

std::FILE* openStream(pappl_device_t* device) {
  return funopen(device, nullptr, writeTo, nullptr, nullptr);
}
#else
// The result of 0 is the error of this interface.
ssize_t writeTo(void* device, const char* bytes, std::size_t count) {
  const auto size = static_cast<ssize_t>(count);
  return writeWhole(static_cast<pappl_device_t*>(device), bytes, count) ? size : 0;
}

std::FILE* openStream(pappl_device_t* device) {
  cookie_io_functions_t functions = {};
  functions.write = writeTo;
  return fopencookie(device, "w", functions);
}
#endif

}  // namespace

FilePtr openDeviceStream(pappl_device_t* device) {
  return FilePtr(openStream(device));
}

}  // namespace wren::app
