# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The filter runs as the print system's user on bytes that came over the
# network. These flags turn a memory error that slipped through into a stopped
# job. The sanitizer presets switch them off, because they have their own checks.

option(WREN_HARDENING "Fortified C library calls, stack protector, PIE, full RELRO" ON)
if(NOT WREN_HARDENING)
  return()
endif()

# Not CMAKE_POSITION_INDEPENDENT_CODE: that compiles the libraries as for a shared
# object, in which the compiler may not inline a function that others could replace.
add_compile_options(-fPIE -fstack-protector-strong)
# The fortified calls exist only in optimised code. The -U comes first because a
# distribution may already pass a level of its own.
add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
                    $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
if(NOT APPLE)
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
