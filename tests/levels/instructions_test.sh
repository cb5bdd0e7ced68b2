#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# instructions_test.sh PROGRAM BUILD LIMITS [EMULATOR]
# instructions_test.sh PROGRAM BUILD - [EMULATOR]
#
# Counts the instructions per pixel of every step of page_at_level at every vector level, as the
# difference of two page heights: with valgrind, or with the emulator of a cross build. Fails when
# a vector kernel needs a larger share of the scalar kernel's instructions than LIMITS allows for
# the build: the compiler, its version and its optimisation. "-" prints limits a quarter above
# what was counted. Exit status 77: nothing to count with, or no limits for the build.
set -euo pipefail

export PROGRAM=$1 EMULATOR=${4:-}
build=$2 limits=$3

skip() {
  echo "SKIPPED: $*"
  exit 77
}

# count LEVEL STEP WIDTH HEIGHT: the instructions of one run.
count() {
  if [[ -n $EMULATOR ]]; then
    count_executions "$@"
  else
    valgrind --tool=cachegrind --cache-sim=no --cachegrind-out-file=/dev/null "$PROGRAM" "$@" 2>&1 |
      awk '/I +refs:/ { gsub(",", "", $NF); print $NF }'
  fi
}

# One line of the log is one instruction. A million of them take seconds.
count_executions() {
  local folder
  folder=$(mktemp -d)
  mkfifo "$folder/log"
  "$EMULATOR" "$one_instruction" -d exec,nochain -D "$folder/log" "$PROGRAM" "$@" &
  wc -l <"$folder/log"
  wait $!
  rm -r "$folder"
}

# line LEVEL STEP: "LEVEL STEP INSTRUCTIONS-PER-PIXEL". A vector kernel needs more rows than it has
# lanes, and the stencil method more than its window has; a scalar kernel takes as many at any height.
line() {
  local small large small_height=$small_height large_height=$large_height
  if [[ $1 == scalar && $2 != stencil ]]; then
    small_height=8 large_height=16
  fi
  small=$(count "$1" "$2" "$width" "$small_height")
  large=$(count "$1" "$2" "$width" "$large_height")
  awk -v level="$1" -v step="$2" -v small="$small" -v large="$large" \
    -v pixels=$((width * (large_height - small_height))) \
    'BEGIN { printf "%s %s %.3f\n", level, step, (large - small) / pixels }'
}
export -f count count_executions line

if [[ -n $EMULATOR ]]; then
  export width=192 small_height=32 large_height=96 one_instruction=-singlestep
  ! "$EMULATOR" -help | grep -- -one-insn-per-tb >/dev/null || one_instruction=-one-insn-per-tb
  run=("$EMULATOR")
else
  command -v valgrind >/dev/null || skip "there is no valgrind"
  export width=576 small_height=64 large_height=192
  # The levels of the processor that valgrind shows, which can lack some of this one.
  run=(valgrind -q --tool=none)
fi

names=$("${run[@]}" "$PROGRAM" levels)
mapfile -t levels <<<"$names"
names=$("${run[@]}" "$PROGRAM" steps)
mapfile -t steps <<<"$names"
((${#levels[@]} > 1)) || skip "no vector level here: ${levels[*]}"
[[ $limits == - ]] || echo "$build, levels: ${levels[*]}"

comparison=(-v build="$build" -v wanted=$((${#levels[@]} * ${#steps[@]})))
if [[ $limits == - ]]; then
  limits=/dev/null
  comparison+=(-v margin=1.25)
fi
number=0
# shellcheck disable=SC2016  # the child shell expands it
for step in "${steps[@]}"; do
  for level in "${levels[@]}"; do
    printf '%d\0%s\0%s\0' "$((number += 1))" "$level" "$step"
  done
done | xargs -0 -n 3 -P 2 bash -c 'set -euo pipefail; echo "$1 $(line "$2" "$3")"' line |
  sort -n | cut -d ' ' -f 2- | awk -f "${BASH_SOURCE[0]%/*}/instructions.awk" "${comparison[@]}" "$limits" -
