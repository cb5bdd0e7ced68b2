#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The entry point for everything in this repository: installs the packages that are
# missing, builds below build/, and hands over to the program wren of cli/ or does
# the work of a checkout (test, bench, package). The list of commands: ./wren help.
#
# A new command of the program is a row in the case table below and a line in
# usage(). A new command of the checkout is also a function in a file of tools/.
set -euo pipefail

# The checkout, also when this is called through a symbolic link.
wren_root() {
  local script=${BASH_SOURCE[0]} target
  while [[ -L $script ]]; do
    target=$(readlink "$script")
    [[ $target == /* ]] || target=$(dirname "$script")/$target
    script=$target
  done
  (cd -- "$(dirname -- "$script")" && pwd -P)
}

WREN_ROOT=$(wren_root)
readonly WREN_ROOT

# shellcheck source=tools/newer_bash.sh
source "$WREN_ROOT/tools/newer_bash.sh"
# shellcheck source=tools/say.sh
source "$WREN_ROOT/tools/say.sh"
# shellcheck source=tools/packages.sh
source "$WREN_ROOT/tools/packages.sh"
# shellcheck source=tools/build.sh
source "$WREN_ROOT/tools/build.sh"
# shellcheck source=tools/program.sh
source "$WREN_ROOT/tools/program.sh"
# shellcheck source=tools/app.sh
source "$WREN_ROOT/tools/app.sh"
# shellcheck source=tools/street.sh
source "$WREN_ROOT/tools/street.sh"
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

usage() {
  cat <<'TEXT'
Usage: ./wren COMMAND [ARGUMENTS]

The program wren, built here and run at once (./wren COMMAND --help for its options):

  print FILE
        Turns a PDF, PNG, JPEG or text file into printer bytes and a picture of the
        paper, in build/print.
        Example: ./wren print examples/receipt.pdf -o HalftoneType=Burkes --paper 58
  preview FILE.prn
        Shows the paper that printer bytes print.
        Example: ./wren preview build/print/receipt.prn --marks
  halftones FILE
        Draws a document with all nine halftone types and several brightness values, as
        one sheet to choose from, in build/halftones.
        Example: ./wren halftones examples/photo.png --crop 300x200+0+0
  devices
        Lists USB and network printers with their addresses.
        Example: ./wren devices
  add-queue NAME ADDRESS [58|80|112]
        Adds a print queue to this machine's scheduler; installs Wren if it is missing.
        Example: ./wren add-queue till socket://192.0.2.7:9100 80
  remove-queue NAME
        Removes such a queue.
        Example: ./wren remove-queue till
  drawer QUEUE
        Opens the cash drawer of a queue's printer, without paper.
        Example: ./wren drawer till
  beep QUEUE
        Sounds its buzzer.
        Example: ./wren beep till
  cut QUEUE [full|partial]
        Cuts the paper.
        Example: ./wren cut till full
  feed QUEUE MM
        Feeds paper.
        Example: ./wren feed till 20
  selftest QUEUE
        Prints a page that shows what the printer can do.
        Example: ./wren selftest till
  doctor [QUEUE]
        Checks everything between a document and the printer, and names for each
        finding the command that fixes it.
        Example: ./wren doctor till
  uninstall
        Removes the queues and the files that add-queue has installed, or the package.
        Example: ./wren uninstall --dry-run

This checkout:

  app [--port N] [--directory STATE] [--paper 58|80|112] [--device URI] [--pages DIR]
        Serves a printer without a driver (IPP Everywhere, AirPrint) on this machine
        alone, in the foreground until SIGTERM, and says its two addresses: for print
        jobs and for its web page. Port 0 is a free one. Without a device, a software
        printer draws what comes in into STATE (build/app). DIR gets the pages that
        are handed to the core, as CUPS raster.
        Example: ./wren app --port 8000
  street [--shell cups|app] [--tills N] [--jobs M] [--minutes T] [--seed S]
         [--break drop|double|flip] [--figures] [--keep]
        Tills print documents with numbers through a private scheduler or the printer
        application, while printers break and the shell is restarted and killed; then
        reads all paper. Status 0 only if every job came out whole and once, or its
        user was told why not. --break damages one job, which must be noticed.
        --figures breaks nothing and measures: receipts per second, first bytes,
        processor time, memory (as root). --keep keeps the folder of a clean run.
        Example: ./wren street --tills 20 --minutes 5
  test [--all | --preset NAME | --arm64 | --browser | --package]
        Builds with warnings as errors, runs every test and lints. --all adds the
        sanitizers, clang with libc++, coverage, the packages, a street of tills, each
        fuzzer for five minutes and a sample of the mutation test; --preset runs the
        tests of one preset of CMakePresets.json. --arm64 cross-builds for 64-bit ARM
        and runs the tests under qemu: every byte has to be the same there. --browser
        tests the web pages in Chromium; with --pictures behind it, it takes their
        pictures for docs/pictures. --package builds the packages in a bare system,
        upgrades, prints, removes and purges them there (as root).
        Example: ./wren test
  bench [--pairs N] [--levels] [--against PROGRAM]
  bench [--pairs N] --print
  bench --kernels [FLAGS]
        Compares the time and memory of the filter with a program that computes
        nothing and with other printer filters (docs/PERFORMANCE.md), N times
        each. PROGRAM is another build of rastertowren, measured in the same
        rounds. --levels compares the vector levels of this machine. --print
        measures from lp to the bytes at the printer. --kernels times the inner
        loops alone.
        Example: ./wren bench --pairs 5
  package [--release bookworm|trixie|sid] [--arch amd64|arm64|armhf]
        Builds the Debian package below build/package and runs lintian on it. With a
        release or an architecture, builds it in a bare system of that release, below
        build/packages, and runs the golden jobs with the files of the package.
        Example: ./wren package --release trixie --arch arm64
  lint
        clang-tidy, cppcheck and shellcheck; part of test. Findings of other versions
        of these tools than Debian 12's are advice and do not fail.
        Example: ./wren lint
  fuzz [TARGET] [SECONDS]
  fuzz --reach [TARGET]
        Runs one fuzz target of fuzz/, or each of them, for so many seconds (60).
        Inputs that reach new code stay in build/fuzz/found for the next run. --reach
        counts the lines that the kept inputs reach in the sources of the target.
        Example: ./wren fuzz filter_job 60
  mutate [--list] [--own] [--seed SEED] [--count N] [FOLDER...]
        Mutation test: makes small changes in what is shipped, one at a time, lists
        those that no test detects, and scores each folder (docs/TESTING.md). Takes
        hours; with --own, which runs the tests of the changed folder alone, less.
        Example: ./wren mutate --own --count 3 job
  help
        This list.

Exit status: 0 done; 1 it was tried and failed; 2 wrong usage; 3 the document
cannot be used; 4 a needed package or the build is missing.
TEXT
}

# usage_of COMMAND: the part of usage() about it.
usage_of() {
  echo "Usage:"
  usage | awk -v name="$1" '/^  [a-z]/ { shown = $1 == name } /^[^ ]/ { shown = 0 } shown && NF'
}

main() {
  local command=${1:-help}
  shift || true
  case $command in
    print | halftones | preview | devices | add-queue | remove-queue | drawer | beep | cut | feed | \
      selftest | doctor | uninstall)
      hand_over "$command" "$@"
      ;;
    app | street | test | bench | package | lint | fuzz | mutate)
      case ${1:-} in
        -h | --help) usage_of "$command" ;;
        *) "${command}_command" "$@" ;;
      esac
      ;;
    help | -h | --help) usage ;;
    --version) hand_over --version ;;
    *) fail_usage "unknown command '$command'; ./wren help lists them" ;;
  esac
}

main "$@"
