// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/path.h"

const char* wrenPathGetBasename(const char* path) {
  const char* name = path;
  for (const char* at = path; at != nullptr && *at != '\0'; ++at) {
    if (*at == '/' || *at == '\\') name = at + 1;
  }
  return name;
}
