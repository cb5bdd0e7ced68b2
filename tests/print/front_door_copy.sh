# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# For tests of ./wren: creates the temporary folder $work. In it, tree/ is a copy of
# ./wren whose release build is the build under test, and bin/, first in PATH, has a
# stand-in for cmake, so that nothing is built.

# copy_front_door SOURCE_DIR BUILD_DIR
copy_front_door() {
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  mkdir -p "$work/tree/build" "$work/bin"
  cp -r "$1/wren" "$1/tools" "$work/tree"
  ln -s "$2" "$work/tree/build/release"
  printf '#!/bin/sh\nexit 0\n' >"$work/bin/cmake"
  chmod +x "$work/bin/cmake"
  PATH=$work/bin:$PATH
}
