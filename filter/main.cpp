// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The program rastertowren: pages to printer bytes.

#include "filter/filter_run.h"
#include "filter/process.h"
#include "printer/debug_image_path.h"

// A second build of the filter, for tests, has another folder.
#ifndef WREN_IMAGE_FOLDER
#define WREN_IMAGE_FOLDER wren::printer::kSpoolFolder
#endif

int main(int argc, char** argv) {
  const wren::filter::CancelSignal cancel = wren::filter::prepareProcess();
  return wren::filter::runFilter(argc, argv, cancel, WREN_IMAGE_FOLDER);
}
