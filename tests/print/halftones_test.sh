#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# halftones_test.sh SOURCE_DIR BUILD_DIR
#
# ./wren halftones draws a sheet with nine papers. Each must equal a print with its
# halftone type, dot by dot.
set -euo pipefail

source_dir=$1 build_dir=$2
# shellcheck source=tests/print/front_door_copy.sh
source "$source_dir/tests/print/front_door_copy.sh"
copy_front_door "$source_dir" "$build_dir"

readonly PART=180x90+320+90 WIDTH=180 HEIGHT=90
ppd=$build_dir/ppd/wren80.ppd
photo=$source_dir/examples/photo.png
"$work/tree/wren" halftones "$photo" --crop "$PART" --brightness "0 -10" --out "$work/sheet.png" >"$work/said" 2>"$work/log"
grep -qxF "sheet: $work/sheet.png" "$work/said"

# paper TYPE FILE: the same part of a print.
paper() {
  "$source_dir/tools/chain" --quiet --filter "$build_dir/filter/rastertowren" --ppd "$ppd" \
    --type image/png --out "$work/$1.prn" -o "HalftoneType=$1" -- "$photo"
  "$build_dir/preview/wren-preview" "$work/$1.prn" -o "$work/whole.png" >/dev/null
  convert "$work/whole.png" -crop "$PART" +repage -threshold 50% "$2"
}

# Left of the papers: border, gap, label, gap. Above: border, gap, column heads, gap. Each
# paper has a frame of one pixel.
left=$((8 + 8 + 240 + 8 + 1)) top=$((8 + 8 + 40 + 8 + 1)) row=0
types=$(sed -n 's/^\*HalftoneType \([A-Za-z]*\)\/.*/\1/p' "$ppd")
for type in $types; do
  paper "$type" "$work/paper.png"
  convert "$work/sheet.png" -crop "${WIDTH}x$HEIGHT+$left+$((top + row * (HEIGHT + 2 + 8)))" +repage \
    -threshold 50% "$work/cell.png"
  different=$(compare -metric AE "$work/paper.png" "$work/cell.png" null: 2>&1) || {
    echo "$type: $different dots of the sheet differ from the print"
    exit 1
  }
  row=$((row + 1))
done
((row == 9)) || { echo "$row halftone types, not nine"; exit 1; }
[[ $(find "$work" -maxdepth 1 -name '*.prn' -exec md5sum {} + | cut -c1-32 | sort -u | wc -l) -eq 9 ]] ||
  { echo "two types print the same, so the comparison proves little"; exit 1; }
