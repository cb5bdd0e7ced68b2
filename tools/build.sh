# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Builds a preset of CMakePresets.json below build/.

# build PRESET [TARGET...]: shows ninja's counter on a terminal and prints nothing
# elsewhere, unless it fails. The packages "build" must be installed.
build() {
  local preset=$1 log
  shift
  log=$WREN_ROOT/build/$preset.log
  mkdir -p "$WREN_ROOT/build"
  forget_moved_build "$preset"
  if ! configure_preset "$preset" >"$log" 2>&1 || ! run_ninja "$preset" "$log" "$@"; then
    tail -n 40 "$log" >&2
    fail "$STATUS_SETUP" "the build failed; the whole log is in $log"
  fi
}

# The paths in a build folder are those of the checkout when it was made.
forget_moved_build() {
  local cache=$WREN_ROOT/build/$1/CMakeCache.txt made_for
  [[ -f $cache ]] || return 0
  made_for=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache")
  [[ ! $made_for -ef $WREN_ROOT ]] || return 0
  note "this checkout was at $made_for before; building again"
  rm -rf "${WREN_ROOT:?}/build/$1"
}

configure_preset() (
  cd "$WREN_ROOT" || return
  [[ -f build/$1/build.ninja ]] || cmake --preset "$1"
)

# run_ninja PRESET LOG [TARGET...]
run_ninja() (
  local preset=$1 log=$2
  shift 2
  cd "$WREN_ROOT" || return
  if [[ -t 2 ]] && has_work "$preset" "$@"; then
    # ninja overwrites its line with the counter, and shows what fails.
    cmake --build --preset "$preset" ${1:+--target "$@"} >&2
  else
    cmake --build --preset "$preset" ${1:+--target "$@"} >>"$log" 2>&1
  fi
)

has_work() {
  local preset=$1
  shift
  ! ninja -C "build/$preset" -n "$@" 2>/dev/null | grep -q 'no work to do'
}
