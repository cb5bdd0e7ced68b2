#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# self_test_codes_test.sh COMMANDTOWREN WREN-PREVIEW PPD-FOLDER
#
# Prints the self-test page for each width of paper, draws the paper from the printer bytes, and
# reads its two codes with zbarimg.
set -euo pipefail

filter=$1 preview=$2 ppds=$3
command -v zbarimg >/dev/null || {
  echo "zbarimg is not installed"
  exit 77
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '#CUPS-COMMAND\nPrintSelfTestPage\n' >"$work/commands"

failed=0
for paper in 58 80 112; do
  PPD=$ppds/wren$paper.ppd "$filter" 1 user title 1 "" "$work/commands" >"$work/page.prn" 2>"$work/log"
  "$preview" "$work/page.prn" -o "$work/page.png" >/dev/null
  # zbarimg exits with 4 when it finds no code.
  found=$(zbarimg --nodbus -q "$work/page.png" 2>/dev/null | LC_ALL=C sort) || (($? == 4))
  if [[ $found != $'CODE-128:WREN-TEST\nQR-Code:WREN SELF-TEST' ]]; then
    echo "$paper mm: read '$found'"
    failed=1
  fi
done
exit "$failed"
