# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren lint, fuzz and mutate: searches for defects that no test covers yet.

lint_command() {
  (($# == 0)) || fail_usage "lint has no argument '$1'"
  need build lint
  "$WREN_ROOT/dev/lint"
}

mutate_command() {
  need build chain test
  "$WREN_ROOT/dev/mutate" "$@"
}

fuzz_command() {
  local reach=no target seconds targets=()
  if [[ ${1:-} == --reach ]]; then
    reach=yes
    shift
    (($# < 2)) || fail_usage "fuzz --reach has no argument '$2'"
  fi
  target=${1:-all} seconds=${2:-60}
  [[ $seconds =~ ^[1-9][0-9]*$ ]] || fail_usage "fuzz wants a number of seconds, not '$seconds'"
  mapfile -t targets < <(fuzz_targets)
  if [[ $target != all ]]; then
    [[ " ${targets[*]} " == *" $target "* ]] || fail_usage "fuzz has no target '$target'; it has ${targets[*]}"
    targets=("$target")
  fi
  if [[ $reach == yes ]]; then
    need build coverage
    measure_reach "${targets[@]}"
  else
    need build fuzz
    run_fuzzers "$seconds" "${targets[@]}"
  fi
}

# Those that depend on an option of the build are indented.
fuzz_targets() {
  sed -n 's/^ *wren_fuzz_target(\([a-z_]*\).*/\1/p' "$WREN_ROOT/fuzz/CMakeLists.txt"
}

# run_fuzzers SECONDS TARGET...
run_fuzzers() {
  local seconds=$1 target
  shift
  build fuzz "${@/#/fuzz_}"
  for target; do fuzz_one "$target" "$seconds"; done
}

# Inputs that a fuzzer adds to the corpus stay below build/. Only the input of a
# reported defect is added to fuzz/corpus, under a name of its own.
fuzz_one() {
  local target=$1 seconds=$2 found log TIMEFORMAT='processor seconds: %U'
  found=$WREN_ROOT/build/fuzz/found/$target
  log=$WREN_ROOT/build/fuzz/$target.log
  mkdir -p "$found"
  say "== $target, $seconds s"
  # Inputs that reach new code are kept for the next run; a crash is kept next to the log.
  # A page header may ask for gigabytes: the allocation then fails, and CUPS returns no page.
  if ! time (cd "$WREN_ROOT/build/fuzz" && ASAN_OPTIONS=max_allocation_size_mb=64:allocator_may_return_null=1 \
    "fuzz/fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 \
    -timeout=20 -rss_limit_mb=2048 -close_fd_mask=3 -artifact_prefix="$target-" \
    "$found" "$WREN_ROOT/fuzz/corpus/$target") >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    fail "$STATUS_FAILED" "$target found something; the whole log is in $log"
  fi
  sed -n 's/^stat::number_of_executed_units: */executions: /p; s/^stat::peak_rss_mb: */peak MiB: /p; /^processor/p' "$log"
}

# measure_reach TARGET...: prints how many lines of their entry points the inputs of the targets
# reach: the corpus, and what the fuzzers have added to it on this machine.
measure_reach() {
  local target sources=()
  build coverage "${@/#/replay_}"
  printf '%-22s %6s %6s %7s  %s\n' target lines of % "entry point"
  for target; do
    read -r -a sources < <(sed -n "s/^$target //p" "$WREN_ROOT/build/coverage/fuzz/entry_points")
    reach_of "$target" "${sources[@]}"
  done
}

# reach_of TARGET SOURCE...: the lines that are not reached are in build/reach/TARGET.txt.
reach_of() {
  local target=$1 inputs folders reach=$WREN_ROOT/build/reach percent reached lines
  shift
  mapfile -t folders < <(printf '%s\n' "${@%%/*}" | sort -u)
  inputs=("$WREN_ROOT/fuzz/corpus/$target")
  [[ ! -d $WREN_ROOT/build/fuzz/found/$target ]] || inputs+=("$WREN_ROOT/build/fuzz/found/$target")
  mkdir -p "$reach"
  # What other programs have reached does not count.
  find "$WREN_ROOT/build/coverage" -name '*.gcda' -delete
  "$WREN_ROOT/build/coverage/fuzz/replay_$target" "${inputs[@]}" >"$reach/$target.log" 2>&1 ||
    fail "$STATUS_FAILED" "$target stopped at an input; the whole log is in $reach/$target.log"
  (cd "$WREN_ROOT" && gcovr --root . --print-summary --output "$reach/$target.txt" \
    "${@/#/--filter=}" "${folders[@]/#/build/coverage/}") >"$reach/$target.log" 2>&1 ||
    fail "$STATUS_FAILED" "gcovr failed; the whole log is in $reach/$target.log"
  read -r percent reached lines < <(sed -n 's/^lines: *\([0-9.]*\)% (\([0-9]*\) out of \([0-9]*\)).*/\1 \2 \3/p' "$reach/$target.log")
  printf '%-22s %6s %6s %7s  %s\n' "$target" "$reached" "$lines" "$percent" "$*"
}
