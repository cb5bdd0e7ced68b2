#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# level_test.sh LEVEL PROGRAM [EMULATOR [ARGUMENT...]]
# level_test.sh --chosen LEVEL PROGRAM EMULATOR [ARGUMENT...]
#
# Prints the pages of page_hashes at a vector level and compares them with those of the
# reference implementation. With --chosen the level is not asked for: the program has to choose
# it by itself on the processor that the emulator shows. Exit status 77: not possible here.
set -euo pipefail

chosen=no
if [[ $1 == --chosen ]]; then
  chosen=yes
  shift
fi
level=$1 program=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

skip() {
  echo "SKIPPED: $*"
  exit 77
}

emulator=()
if (($# > 0)); then
  # Newer packages have dropped the suffix: every emulator is linked statically.
  emulator=("$(command -v "$1" || command -v "${1%-static}" || true)" "${@:2}")
  [[ -n ${emulator[0]} ]] || skip "there is no $1 (package qemu-user-static)"
fi
arguments=(product)
[[ $chosen == yes ]] || arguments+=("$level")
status=0
"${emulator[@]}" "$program" "${arguments[@]}" >"$work/product" 2>"$work/level" || status=$?
[[ $status != 77 ]] || skip "this build or processor has no $level"
if ((status != 0)); then
  cat "$work/level" >&2
  echo "FAILED: page_hashes ended with status $status" >&2
  exit 1
fi
ran=$(tail -n 1 "$work/level")
echo "ran at: $ran${emulator[0]:+ (${emulator[*]})}"
if [[ $ran != "$level" ]]; then
  echo "FAILED: expected $level" >&2
  exit 1
fi
# The reference implementation needs no processor model, but a cross build needs its emulator.
reference=()
[[ $chosen == yes ]] || reference=("${emulator[@]}")
"${reference[@]}" "$program" reference >"$work/reference"
[[ -s $work/reference ]]
diff "$work/reference" "$work/product"
