# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The filter runs as CUPS's user on bytes that come from the network. With these
# flags a memory error ends the job instead of being exploited. The sanitizer presets
# switch them off: the sanitizers have their own checks.

option(WREN_HARDENING "Fortified C library calls, stack protector, PIE, full RELRO" ON)
if(NOT WREN_HARDENING)
  return()
endif()

# Not CMAKE_POSITION_INDEPENDENT_CODE: it compiles the static libraries with -fPIC,
# and the compiler must then not inline functions that could be interposed.
add_compile_options(-fPIE -fstack-protector-strong)
# Fortified calls need optimisation. -U comes first because a distribution may have
# set a level already.
add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
                    $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
if(NOT APPLE)
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
