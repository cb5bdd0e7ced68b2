// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/rounds.h"

#include <cstdio>

namespace wren::bench {

std::string optionsOf(Images images) {
  return std::string("PageCutType=0 DocCutType=0 DebugImages=") +
         (images == Images::kOn ? "On" : "Off");
}

std::string optionsOf(const Halftone& halftone, Images images) {
  return optionsOf(images) + " HalftoneType=" + halftone.name;
}

Command commandOf(const Setup& setup, const std::string& program, const std::string& raster,
                  const std::string& options) {
  return {program, "", setup.ppd, options, setup.data + "/" + raster + ".ras"};
}

bool didSameWork(const std::string& label, const std::string& oneName, const Usage& one,
                 const std::string& otherName, const Usage& other) {
  const bool same = one.status == other.status && one.outBytes == other.outBytes &&
                    one.fileBytes == other.fileBytes;
  if (!same) {
    std::fprintf(stderr,
                 "%s: %s and %s differ: status %d and %d, output %lld and %lld bytes, "
                 "images %lld and %lld bytes\n",
                 label.c_str(), oneName.c_str(), otherName.c_str(), one.status, other.status,
                 one.outBytes, other.outBytes, one.fileBytes, other.fileBytes);
  }
  return same;
}

double megapixels(const Workload& workload, double ms) {
  return workload.pages * workload.pagePixels / ms / 1e3;
}

const char* mark(double value, double goal) {
  return value <= goal ? "" : " (missed)";
}

}  // namespace wren::bench
