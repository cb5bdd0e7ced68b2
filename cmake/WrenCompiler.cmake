# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Compiler flags of every target.

# Printed bytes depend on the last bit of single-precision results. By default
# compilers fuse multiply and add on arm64, which changes pages.
add_compile_options(-ffp-contract=off)

# Not -Wdouble-promotion with clang: it also warns about an explicit double{x}.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  $<$<CXX_COMPILER_ID:GNU>:-Wdouble-promotion> -Wformat=2 -Wnon-virtual-dtor)

if(WREN_WERROR)
  add_compile_options(-Werror)
endif()
