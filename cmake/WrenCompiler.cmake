# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Flags that every target shares.

# Printed bytes depend on the last bit of single-precision results. Compilers
# fuse multiply and add on arm64 unless told otherwise, and then pages change.
add_compile_options(-ffp-contract=off)

# clang takes the double{x} that spells a widening out for one that happens by itself.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  $<$<CXX_COMPILER_ID:GNU>:-Wdouble-promotion> -Wformat=2 -Wnon-virtual-dtor)

if(WREN_WERROR)
  add_compile_options(-Werror)
endif()
