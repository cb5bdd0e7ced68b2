#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# limits_test.sh: the comparison of instructions_test.sh with counts that are made up.
set -euo pipefail

folder=$(dirname -- "${BASH_SOURCE[0]}")
limits='# shares
build other
step AVX2 NEON
blur 0.01 0.01
build this
step AVX2 NEON
blur 0.25 0.5
pack 0.1 0.1'
counts=$'scalar blur 40.0\nAVX2 blur 10.0\nscalar pack 2.0\nAVX2 pack 0.1'

# expect STATUS TEXT COUNTS [BUILD]: of the comparison; four counts are wanted.
expect() {
  local status=0 said
  said=$(awk -f "$folder/instructions.awk" -v wanted=4 -v build="${4:-this}" \
    <(echo "$limits") <(echo "$3")) || status=$?
  if [[ $status != "$1" || $said != *"$2"* ]]; then
    printf 'FAILED: status %s instead of %s, "%s" expected in:\n%s\n' "$status" "$1" "$2" "$said" >&2
    exit 1
  fi
}

expect 0 "blur                 AVX2       10.000 of   40.000 per pixel: 0.250, limit 0.25" "$counts"
expect 1 "blur at AVX2 is above its limit" "${counts/10.0/10.1}"
expect 1 "pack at AVX2 is above its limit" "${counts/0.1/0.3}"
expect 1 "no count for pack at AVX2" "${counts%$'\n'*}"
expect 1 "3 of 4 counts" "${counts%$'\n'*}"
expect 1 "no count for blur at AVX2" "${counts/10.0/0}"
expect 1 "no count for blur at AVX2" "${counts/40.0/}"
expect 1 "no limit for blur at SSE4" "${counts//AVX2/SSE4}"
expect 1 "0 of 4 counts" ""
expect 77 "SKIPPED: no limits for unknown" "$counts" unknown
expect 1 "3 of 4 counts" "${counts%$'\n'*}" unknown
