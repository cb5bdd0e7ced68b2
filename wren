#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The entry point for everything in this repository. Each command installs the
# packages that it lacks, builds below build/ and then does its work. The list of
# commands: ./wren help.
#
# A new command is a function in a file of tools/, a row in the case table
# below, and a line in usage().
set -euo pipefail

WREN_ROOT=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
readonly WREN_ROOT

# shellcheck source=tools/newer_bash.sh
source "$WREN_ROOT/tools/newer_bash.sh"
# shellcheck source=tools/say.sh
source "$WREN_ROOT/tools/say.sh"
# shellcheck source=tools/packages.sh
source "$WREN_ROOT/tools/packages.sh"
# shellcheck source=tools/build.sh
source "$WREN_ROOT/tools/build.sh"
# shellcheck source=tools/print.sh
source "$WREN_ROOT/tools/print.sh"
# shellcheck source=tools/spool.sh
source "$WREN_ROOT/tools/spool.sh"
# shellcheck source=tools/halftones.sh
source "$WREN_ROOT/tools/halftones.sh"
# shellcheck source=tools/test.sh
source "$WREN_ROOT/tools/test.sh"
# shellcheck source=tools/arm64.sh
source "$WREN_ROOT/tools/arm64.sh"
# shellcheck source=tools/bench.sh
source "$WREN_ROOT/tools/bench.sh"
# shellcheck source=tools/checks.sh
source "$WREN_ROOT/tools/checks.sh"
# shellcheck source=tools/root.sh
source "$WREN_ROOT/tools/root.sh"
# shellcheck source=tools/package.sh
source "$WREN_ROOT/tools/package.sh"
# shellcheck source=tools/queue.sh
source "$WREN_ROOT/tools/queue.sh"
# shellcheck source=tools/doctor.sh
source "$WREN_ROOT/tools/doctor.sh"

usage() {
  cat <<'TEXT'
Usage: ./wren COMMAND [ARGUMENTS]

  print FILE [-n COPIES] [-o NAME=VALUE]... [--paper 58|80|112]
             [--out FILE.prn] [--raster FILE.ras]
        Turns a PDF, PNG, JPEG or text file into printer bytes. No queue, no
        root and no running scheduler needed. A picture of the paper is drawn
        beside the bytes. --raster also keeps the pages that the filter was given.
  halftones FILE [-o NAME=VALUE]... [--paper 58|80|112] [--out FILE.png]
        [--brightness "-20 -10 0 10 20"] [--crop WIDTHxHEIGHT+X+Y]
        Prints a document with all nine halftone types and several brightness
        values, as one sheet of pictures to choose from. --crop, in dots, shows
        a part of the paper only.
  test [--all | --preset NAME | --arm64]
        Builds with warnings as errors, runs every test and lints. --all adds the
        sanitizers, clang with libc++, and coverage; --preset runs the tests of
        one preset of CMakePresets.json. --arm64 cross-builds for 64-bit ARM and
        runs the tests under qemu: every byte has to be the same there.
  bench [--pairs N] [--levels] [--against PROGRAM]
  bench [--pairs N] --print
  bench --kernels [FLAGS]
        Compares the time and memory of the filter with a program that computes
        nothing and with other printer filters (docs/PERFORMANCE.md), N times
        each. PROGRAM is another build of rastertowren, measured in the same
        rounds. --levels compares the vector levels of this machine. --print
        measures from lp to the bytes at the printer. --kernels times the inner
        loops alone.
  lint
        clang-tidy, cppcheck and shellcheck; part of test. Findings of other versions
        of these tools than Debian 12's are advice and do not fail.
  fuzz [TARGET] [SECONDS]
        Runs one fuzz target of fuzz/, or each of them, for so many seconds.
  mutate [--list] [--count N] [FOLDER...]
        Mutation test: makes small changes in the product code, one at a time, and
        lists those that no test detects. Takes most of an hour.
  package [--release bookworm|trixie|sid] [--arch amd64|arm64|armhf]
        Builds the Debian package below build/package and runs lintian on it. With a
        release or an architecture, builds it in a bare system of that release, below
        build/packages, and runs the golden jobs with the files of the package.
  add-queue NAME URI [58|80|112]
        Adds a print queue to this machine's scheduler, with the settings that keep
        a receipt upright and at the top; installs the filter if it is missing.
  remove-queue NAME
        Removes such a queue.
  doctor [QUEUE]
        Checks everything between a document and the printer, and names for each
        finding the command that fixes it.
  help
        This list.

Exit status: 0 done; 1 it was tried and failed; 2 wrong usage; 3 the document
cannot be used; 4 a needed package or the build is missing.
TEXT
}

main() {
  local command=${1:-help}
  shift || true
  case $command in
    print) print_command "$@" ;;
    halftones) halftones_command "$@" ;;
    test) test_command "$@" ;;
    bench) bench_command "$@" ;;
    lint) lint_command "$@" ;;
    fuzz) fuzz_command "$@" ;;
    mutate) mutate_command "$@" ;;
    package) package_command "$@" ;;
    add-queue) add_queue_command "$@" ;;
    remove-queue) remove_queue_command "$@" ;;
    doctor) doctor_command "$@" ;;
    help | -h | --help) usage ;;
    *) fail_usage "unknown command '$command'; ./wren help lists them" ;;
  esac
}

main "$@"
