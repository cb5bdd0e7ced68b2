# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren bench: the comparison described in docs/PERFORMANCE.md.

bench_command() {
  if [[ ${1:-} == --kernels ]]; then
    bench_kernels "${@:2}"
    return
  fi
  local what=filter pairs=25 against=()
  while (($#)); do
    case $1 in
      --pairs) want_value "$@" && pairs=$2 && shift ;;
      --against) want_value "$@" && against=(--against "$2") && check_program "$2" && shift ;;
      --levels | --print)
        [[ $what == filter ]] || fail_usage "bench takes one of --levels and --print"
        what=${1#--}
        ;;
      *) fail_usage "bench has no argument '$1'" ;;
    esac
    shift
  done
  [[ $pairs =~ ^[1-9][0-9]{0,2}$ ]] || fail_usage "--pairs wants a number from 1 to 999, not '$pairs'"
  [[ $what != print || ${#against[@]} == 0 ]] || fail_usage "bench --print takes no --against"
  "bench_$what"
}

# Another build of the filter; checked before anything is built.
check_program() {
  [[ -e $1 ]] || fail_usage "--against: there is no file '$1'"
  [[ -f $1 && -x $1 ]] || fail_usage "--against: '$1' is not an executable program"
}

# Times the whole filter, relative to a program that reads the raster and computes nothing; with
# the variables of bench_command.
bench_filter() {
  local data=$WREN_ROOT/build/bench/data peers=()
  prepare_comparison
  add_peer rastertoepson 1 epson9.ppd /usr/share/cups/drv/sample.drv
  add_peer rastertoescpx 8 escpx.ppd "$WREN_ROOT/bench/peer.drv"
  compare "${against[@]}" "${peers[@]}"
}

# The same at every vector level of this machine.
bench_levels() {
  local bin=$WREN_ROOT/build/bench/bench data=$WREN_ROOT/build/bench/data
  prepare_comparison
  compare --at-level "$bin/rastertowren_at_level" --relocated-at-level "$bin/rastertowren_at_level_relocated" \
    "${against[@]}"
}

# From lp to the software printer, through a private scheduler.
bench_print() {
  local bin=$WREN_ROOT/build/bench mode=user application=()
  need build chain bench
  build bench wren-bench-print
  ((EUID != 0)) || mode=root
  [[ ! -x $bin/app/wren-printer-app ]] || application=("$bin/app/wren-printer-app")
  "$WREN_ROOT/tests/queue/run_queue_test.sh" "$mode" "$bin/bench/wren-bench-print" \
    "$bin/filter/rastertowren" "$bin/filter/commandtowren" "$bin/cli/wren" "$bin/ppd" "$WREN_ROOT" "$pairs" "${application[@]}" ||
    fail "$STATUS_FAILED" "the print time was not measured"
}

# Builds the programs and draws the rasters into $data.
prepare_comparison() {
  need build chain bench
  build bench
  mkdir -p "$data"
  "$WREN_ROOT/build/bench/bench/wren-bench-rasters" "$data" ||
    fail "$STATUS_FAILED" "the rasters cannot be written"
}

# compare [ARGUMENT...]: with $data and $pairs.
compare() {
  local bin=$WREN_ROOT/build/bench
  "$bin/bench/wren-bench-compare" --filter "$bin/filter/rastertowren" \
    --floor "$bin/bench/wren-bench-floor" --relocated-filter "$bin/bench/wren-bench-relocated-filter" \
    --relocated-floor "$bin/bench/wren-bench-relocated-floor" --ppd "$bin/ppd/wren112.ppd" --data "$data" \
    --pairs "$pairs" "$@" || fail "$STATUS_FAILED" "the comparison failed"
}

# add_peer NAME BITS PPD DRV: adds to $peers if the filter is installed.
add_peer() {
  local program
  program=$(cups-config --serverbin 2>/dev/null || echo /usr/lib/cups)/filter/$1
  if [[ ! -x $program ]]; then
    note "without $1: $program is not installed"
  elif ! ppdc -d "$data" "$4" >/dev/null 2>&1 || [[ ! -f $data/$3 ]]; then
    note "without $1: ppdc made no $3 of $4"
  else
    peers+=(--peer "$1" "$program" "$data/$3" "$2")
  fi
}

# The kernels alone, next to the reference implementation.
bench_kernels() {
  need build bench
  build bench wren-bench-kernels
  "$WREN_ROOT/build/bench/bench/wren-bench-kernels" "$@"
}
