// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Prints the hash of all stencil results. It is built with several compilers and
// optimisation levels; every build has to print the same line.

#include <cinttypes>
#include <cstdio>

#include "tests/stencil/product_stencil.h"
#include "tests/stencil/result_hash.h"

int main() {
  using namespace wren::stencil;
  std::printf("%016" PRIx64 "\n", StencilHasher<ProductStencil>().run());
  return 0;
}
