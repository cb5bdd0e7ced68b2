# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Cross build for 64-bit ARM with Debian's cross compiler and multiarch libraries. The
# programs run under qemu user mode. On this architecture compilers fuse multiply and
# add by default, so the tests show that the printed bytes do not depend on that.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
find_program(WREN_QEMU_AARCH64 NAMES qemu-aarch64-static qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${WREN_QEMU_AARCH64})

# Keeps find_library() from finding libraries of the build machine.
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_IGNORE_PREFIX_PATH /usr/lib/x86_64-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
