#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# front_door_prints_test.sh SOURCE_DIR BUILD_DIR
#
# ./wren print with each kind of document: the bytes equal those of tools/chain, the
# messages are correct, and CUPS gets the options for receipts. A stand-in for
# cupsfilter records its arguments and then runs the real one.
set -euo pipefail

source_dir=$1 build_dir=$2
# shellcheck source=tests/print/front_door_copy.sh
source "$source_dir/tests/print/front_door_copy.sh"
copy_front_door "$source_dir" "$build_dir"
cupsfilter=$(PATH=$PATH:/usr/sbin command -v cupsfilter)
printf '#!/bin/sh\necho "$* " >%s\nexec %s "$@"\n' "$work/asked" "$cupsfilter" >"$work/bin/cupsfilter"
chmod +x "$work/bin/cupsfilter"
cd "$work"

die() {
  echo "$*" >&2
  exit 1
}

# prints PAGES OUT ARGUMENTS...: prints, and compares the messages with the files.
prints() {
  local pages=$1 out=$2
  shift 2
  tree/wren print "$@" >said 2>log || die "print $*: $(cat log)"
  ! grep -v 'it is passed on to CUPS as it is$' log || die "print $* complains"
  grep -qxF "$pages page(s), $(wc -c <"$out") bytes: $out" said || die "print $* says: $(cat said)"
  grep -qxF "picture: ${out%.prn}.png" said || die "print $* says: $(cat said)"
  [[ -s ${out%.prn}.png ]] || die "print $* drew no picture"
}

# chain_gives TYPE OUT DOCUMENT ARGUMENTS...: compares OUT with the bytes of tools/chain.
chain_gives() {
  local type=$1 out=$2 document=$3
  shift 3
  tree/tools/chain --quiet --filter "$build_dir/filter/rastertowren" \
    --ppd "$build_dir/ppd/wren80.ppd" --type "$type" --out expected.prn "$@" -- "$document"
  cmp expected.prn "$out"
}

asks() { grep -qF -- " $1 " asked || die "CUPS is not asked for '$1': $(cat asked)"; }
does_not_ask() { ! grep -qF -- " $1 " asked || die "CUPS is asked for '$1': $(cat asked)"; }

cp "$source_dir/examples/receipt.pdf" "a receipt.pdf"
cp "$source_dir/examples/order.txt" order
convert "$source_dir/examples/photo.png" -quality 95 photo.jpg

# The output is named after the document, also if the name has a space; the type does
# not depend on the extension.
prints 1 "$work/tree/build/print/a receipt.prn" "a receipt.pdf"
chain_gives application/pdf "$work/tree/build/print/a receipt.prn" "a receipt.pdf"
asks "-o position=top"
asks "-o pdfAutoRotate=no"
images=$(find "tree/build/print/a receipt.images" -name '*.bmp' | wc -l)
((images == 2)) || die "$images debug images"

prints 1 text.prn order --out text.prn
chain_gives text/plain text.prn order
prints 1 jpeg.prn photo.jpg --out jpeg.prn -o HalftoneType=Burkes
asks "-i image/jpeg"
chain_gives image/jpeg jpeg.prn photo.jpg -o HalftoneType=Burkes
prints 1 png.prn "$source_dir/examples/drawing.png" --out png.prn -o HalftoneType=QVDithering
chain_gives image/png png.prn "$source_dir/examples/drawing.png" -o HalftoneType=QVDithering

prints 2 twice.prn "a receipt.pdf" -n 2 --out twice.prn --raster pages.ras
asks "-n 2"
[[ $(head -c 4 pages.ras) =~ ^(3SaR|RaS3|2SaR|RaS2)$ ]] || die "no raster was kept"
grep -qxF "raster: pages.ras" said || die "said: $(cat said)"

# Options of the user replace those for receipts.
prints 1 told.prn "a receipt.pdf" --out told.prn -o position=center -o pdfAutoRotate=yes
asks "-o position=center"
asks "-o pdfAutoRotate=yes"
does_not_ask "-o position=top"
does_not_ask "-o pdfAutoRotate=no"
