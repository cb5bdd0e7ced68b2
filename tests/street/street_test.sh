#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# street_test.sh ROOT BUILD ARGUMENT...
#
# A run of the street with these arguments: clean, or with --break the job named that was damaged.
set -euo pipefail

root=$1 build=$2
shift 2

# The faults that the judge has to name.
declare -rA kWords=([drop]='is lost' [double]='was printed twice' [flip]='is garbled')

street() { PYTHONPATH=$root/tools /usr/bin/python3 -B -m street --build "$build" "$@"; }

skip() {
  echo "skipped: $*"
  exit 77
}

/usr/bin/python3 -c 'import PIL' 2>/dev/null || skip "python3-pil is not installed"
for program in cupsd qrencode zbarimg; do
  PATH=$PATH:/usr/sbin command -v "$program" >/dev/null || skip "there is no $program"
done

if [[ $* != *--break* ]]; then
  street "$@"
  exit
fi

damage=${*: -1}
status=0
said=$(street "$@") || status=$?
echo "$said"
((status == 1))
grep -Eq "^FAULT: job [0-9]+ \(till [0-9]+, .*\) ${kWords[$damage]}" <<<"$said"
rm -rf "$(sed -n 's/^the bytes, the logs and the state: //p' <<<"$said")"
