# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Builds a preset of CMakePresets.json below build/.

# build PRESET [TARGET...]: prints nothing unless it fails. The packages "build" must be installed.
build() {
  local preset=$1 log
  shift
  log=$WREN_ROOT/build/$preset.log
  mkdir -p "$WREN_ROOT/build"
  if ! run_build "$preset" "$@" >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    fail "$STATUS_SETUP" "the build failed; the whole log is in $log"
  fi
}

run_build() (
  local preset=$1
  shift
  cd "$WREN_ROOT" || return
  if [[ ! -f build/$preset/build.ninja ]]; then
    cmake --preset "$preset" || return
  fi
  cmake --build --preset "$preset" ${1:+--target "$@"}
)
