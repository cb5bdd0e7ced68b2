# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# For tests of ./wren: makes $work, a folder that goes with the test, in it tree/, a copy
# of the front door whose release build is the one under test, and bin/, first in PATH,
# with a stand-in for cmake, so that nothing is built here.

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
