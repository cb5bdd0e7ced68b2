#!/bin/bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# bench/bench.sh [PAIRS]
#
# Builds the filter as shipped, makes the rasters and PPDs that are missing, and
# prints the comparison table (docs/PERFORMANCE.md explains it). PAIRS runs of
# filter and floor stand behind every figure (default 11).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
pairs=${1:-11}
build=$root/build/bench
data=$build/data

# PEERS grows by one peer if its program is installed and its PPD can be made.
PEERS=()
add_peer() { # name bits ppd drv
  local program
  program=$(cups-config --serverbin 2>/dev/null || echo /usr/lib/cups)/filter/$1
  if [[ ! -x $program ]]; then
    echo "Without $1: $program is not installed." >&2
    return
  fi
  if ! ppdc -d "$data" "$4" >/dev/null 2>&1 || [[ ! -f $data/$3 ]]; then
    echo "Without $1: ppdc made no $3 from $4." >&2
    return
  fi
  PEERS+=(--peer "$1" "$program" "$data/$3" "$2")
}

cd "$root"
cmake --preset bench -DWREN_TESTS=OFF >/dev/null
cmake --build --preset bench --target rastertowren wren-bench-rasters wren-bench-floor \
  wren-bench-compare
mkdir -p "$data"
build/bench/bench/wren-bench-rasters "$data"

# The photos are wider than any receipt printer, so the width limit is left out.
ppdc -d "$data/ppd" ppd/*.drv
ppds=("$data"/ppd/*.ppd)
grep -v '^\*MaxMediaWidth' "${ppds[0]}" >"$data/wren.ppd"

add_peer rastertoepson 1 epson9.ppd /usr/share/cups/drv/sample.drv
add_peer rastertoescpx 8 escpx.ppd bench/peer.drv

"$build/bench/wren-bench-compare" --filter "$build/filter/rastertowren" \
  --floor "$build/bench/wren-bench-floor" --ppd "$data/wren.ppd" --data "$data" \
  --pairs "$pairs" "${PEERS[@]}"
