// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/message.h"

#include <cstdio>

namespace wren::preview {

void printMessage(const std::string& text) {
  std::fprintf(stderr, "wren-preview: %s\n", text.c_str());
}

}  // namespace wren::preview
