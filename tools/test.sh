# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren test

test_command() {
  case $* in
    "") test_dev ;;
    --all) test_all ;;
    --browser) test_browser ;;
    "--browser --pictures") take_browser_pictures ;;
    --package) test_package ;;
    --arm64 | "--preset arm64") test_arm64 ;;
    "--preset "?*) test_one_preset "$2" ;;
    --preset*) fail_usage "--preset wants a name" ;;
    *) fail_usage "test has no argument '$*'" ;;
  esac
}

test_dev() {
  need build chain test street lint
  test_preset dev
  "$WREN_ROOT/dev/lint"
}

# The web pages in Chromium.
test_browser() {
  need build chain browser
  build release wren-printer-app wren-preview
  in_browser || fail "$STATUS_FAILED" "the pages failed in the browser"
}

# Takes the pictures of the pages for docs/pictures.
take_browser_pictures() {
  need build chain browser
  build release wren-printer-app wren-preview
  in_browser --pictures "$WREN_ROOT/docs/pictures" || fail "$STATUS_FAILED" "no pictures were taken"
}

# in_browser [ARGUMENT...]: with Debian's Python, which has selenium.
in_browser() {
  /usr/bin/python3 "$WREN_ROOT/tests/browser/pages_test.py" "$WREN_ROOT/build/release/app/wren-printer-app" \
    "$WREN_ROOT/build/release/preview/wren-preview" "$WREN_ROOT" "$@"
}

# The packages' whole life, from the build to purge, in a bare system of this release.
test_package() {
  need root
  as_root unshare --mount --pid --fork true ||
    fail "$STATUS_SETUP" "a bare system needs namespaces of its own, and there are none here"
  local release status=0
  release=$(this_release)
  "$WREN_ROOT/dev/bare_root" "$release" --as root -- dev/package_trial --throwaway || status=$?
  ((status == 0)) || fail "$status" "the trial of the packages failed; the whole log is in build/roots/$release-root-run.log"
}

test_all() {
  need build chain test lint libcxx coverage street fuzz root
  local preset targets
  for preset in dev asan tsan clang coverage; do
    say "== $preset"
    test_preset "$preset"
  done
  coverage_report
  say "== package"
  test_package
  say "== street"
  ctest --test-dir "$WREN_ROOT/build/dev" --build-config street-long --tests-regex '^street_long\.' --output-on-failure
  say "== fuzz"
  mapfile -t targets < <(fuzz_targets)
  run_fuzzers 300 "${targets[@]}"
  say "== mutate"
  "$WREN_ROOT/dev/mutate" --own --count 2
  "$WREN_ROOT/dev/lint"
}

test_one_preset() {
  case $1 in
    dev) need build chain test street ;;
    clang) need build chain test libcxx ;;
    coverage) need build chain test coverage ;;
    *) need build chain test ;;
  esac
  test_preset "$1"
}

# Prints ctest's summary; its whole output only when a test failed.
test_preset() {
  local preset=$1 log=$WREN_ROOT/build/$1-tests.log
  build "$preset"
  if (cd "$WREN_ROOT" && run_tests "$preset") 2>&1 | show_tests "$log"; then
    sed -n '/% tests passed/,$p' "$log"
  else
    cat "$log" >&2
    fail "$STATUS_FAILED" "tests failed; the whole log is in $log"
  fi
}

# show_tests LOG: copies the output of ctest to LOG and says which test it is at: in one line that
# is overwritten on a terminal, every 100th test elsewhere.
show_tests() {
  local line at=0 all
  : >"$1"
  while IFS= read -r line; do
    printf '%s\n' "$line" >>"$1"
    [[ $line =~ ^\ *([0-9]+)/([0-9]+)\ Test\ +\#[0-9]+:\ ([^ ]+) ]] || continue
    at=${BASH_REMATCH[1]} all=${BASH_REMATCH[2]}
    if [[ -t 2 ]]; then
      printf '\r\033[Kwren: test %s of %s: %.50s' "$at" "$all" "${BASH_REMATCH[3]}" >&2
    elif ((at % 100 == 0)); then
      note "test $at of $all"
    fi
  done
  [[ ! -t 2 ]] || printf '\r\033[K' >&2
}

# The thread sanitizer of older compilers cannot map its memory where the kernel
# randomises more than 28 bits of an address, so its tests run without
# randomisation, unless the system forbids that (some containers do).
run_tests() {
  local without_aslr=()
  if [[ $1 == tsan ]] && setarch "$(uname -m)" -R true 2>/dev/null; then
    without_aslr=(setarch "$(uname -m)" -R)
  fi
  "${without_aslr[@]}" ctest --preset "$1"
}

coverage_report() {
  local folder
  (cd "$WREN_ROOT" && for folder in common dither bitmap stencil printer job filter app cli escpos preview; do
    [[ -d $folder ]] && printf -- '--filter=%s/ ' "$folder"
  done) | (cd "$WREN_ROOT" && xargs gcovr --root . --print-summary --exclude-throw-branches \
    --exclude-unreachable-branches build/coverage)
}
