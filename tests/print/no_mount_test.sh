#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# no_mount_test.sh SOURCE_DIR FILTER PPD
#
# Where mounting is not allowed, a print gives the same bytes, and its debug images
# are still written to the folder of the run only.
set -euo pipefail

source_dir=$1 filter=$2 ppd=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin"
printf '#!/bin/sh\nexit 1\n' >"$work/bin/unshare"
chmod +x "$work/bin/unshare"

print_to() {
  "$source_dir/tools/chain" --quiet --filter "$filter" --ppd "$ppd" --type text/plain \
    --out "$1" --images "$2" -o DebugImages=On -- "$source_dir/examples/order.txt"
}

print_to "$work/mounted.prn" "$work/mounted"
PATH=$work/bin:$PATH print_to "$work/refused.prn" "$work/refused"
cmp "$work/mounted.prn" "$work/refused.prn"
for kind in origin dithered; do
  cmp "$work"/mounted/"$kind"_*.bmp "$work"/refused/"$kind"_*.bmp
done
