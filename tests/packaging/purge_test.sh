#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# purge_test.sh SOURCE_DIR: the script that runs after the removal of the package, in a folder of
# this test: purge deletes the debug images and nothing else, remove deletes nothing.
set -euo pipefail

script=$1/debian/printer-driver-wren.postrm
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
spool=$work/spool
mkdir -p "$spool/folder_origin_1.bmp" "$spool/deeper"

# after_removal ARGUMENT
after_removal() {
  sed "s|/var/spool/cups/tmp|$spool|g; /^#DEBHELPER#/d" "$script" >"$work/postrm"
  ! grep -q /var "$work/postrm" || { echo "it touches another folder"; exit 1; }
  sh "$work/postrm" "$1"
}

images=(origin_2026-11-22_1_22_27_0.bmp dithered_2026-11-22_1_22_27_1.bmp)
others=(origin_1.bmp.txt my_origin_1.bmp origin.bmp dithered.bmp d00001-001 origin_1.png deeper/origin_1.bmp deeper/dithered_1.bmp)
for file in "${images[@]}" "${others[@]}"; do echo x >"$spool/$file"; done
ln -s "$spool/d00001-001" "$spool/origin_link.bmp"
everything() { (cd "$spool" && find . | LC_ALL=C sort); }

before=$(everything)
for argument in remove upgrade failed-upgrade abort-install; do after_removal "$argument"; done
diff <(everything) - <<<"$before"
after_removal purge
diff <(everything) <(grep -vxF "$(printf './%s\n' "${images[@]}")" <<<"$before")
rm -r "$spool"
after_removal purge
