#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# cupstestppd_test.sh CUPSTESTPPD PPD: checks a PPD with cupstestppd. The only
# allowed warning, once per size, is that the size has no Adobe standard name.
set -euo pipefail

checker=$1 ppd=$2
# The filter that the PPD names need not be installed for the tests.
report=$("$checker" -v -I filters "$ppd") || {
  printf '%s\n' "$report"
  exit 1
}
printf '%s\n' "$report"
grep -q 'NO ERRORS FOUND' <<<"$report"
warnings=$(grep 'WARN' <<<"$report")
sizes=$(grep -c '^\*PageSize X' "$ppd")
((sizes > 0))
[[ $(grep -c 'should be the Adobe standard name' <<<"$warnings") -eq $sizes ]]
[[ $(wc -l <<<"$warnings") -eq $sizes ]]
