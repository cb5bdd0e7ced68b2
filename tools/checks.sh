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

# Inputs that a fuzzer adds to the corpus stay below build/. Only the input of a
# reported defect is added to fuzz/corpus, under a name of its own.
fuzz_command() {
  local target=${1:-all} seconds=${2:-60} targets=()
  [[ $seconds =~ ^[1-9][0-9]*$ ]] || fail_usage "fuzz wants a number of seconds, not '$seconds'"
  mapfile -t targets < <(fuzz_targets)
  if [[ $target != all ]]; then
    [[ " ${targets[*]} " == *" $target "* ]] || fail_usage "fuzz has no target '$target'; it has ${targets[*]}"
    targets=("$target")
  fi
  need build fuzz
  build fuzz "${targets[@]/#/fuzz_}"
  for target in "${targets[@]}"; do fuzz_one "$target" "$seconds"; done
}

fuzz_targets() {
  sed -n 's/^wren_fuzz_target(\([a-z_]*\).*/\1/p' "$WREN_ROOT/fuzz/CMakeLists.txt"
}

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
