#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# street_test.sh ROOT BUILD cups|app [drop|double|flip]
set -euo pipefail

root=$1 build=$2 shell=$3 damage=${4:-}

street() { PYTHONPATH=$root/tools /usr/bin/python3 -B -m street --build "$build" --shell "$shell" "$@"; }

if [[ -z $damage ]]; then
  street --tills 4 --minutes 0.33
  exit
fi

status=0
said=$(street --tills 2 --jobs 8 --minutes 0.05 --break "$damage") || status=$?
echo "$said"
((status == 1))
declare -A words=([drop]='is lost' [double]='was printed twice' [flip]='is garbled')
grep -Eq "^FAULT: job [0-9]+ \(till [01], .*\) ${words[$damage]}" <<<"$said"
rm -rf "$(sed -n 's/^the bytes, the logs and the state: //p' <<<"$said")"
