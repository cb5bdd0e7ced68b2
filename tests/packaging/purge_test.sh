#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# purge_test.sh SOURCE_DIR: the scripts that run after the removal of the packages, in a folder of
# this test. What users have made goes with purge alone, and nothing else goes.
set -euo pipefail

debian=$1/debian
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
system=$work/system

# after_removal PACKAGE ARGUMENT
after_removal() {
  sed -E "s#(^|[ '\"])/(run|var)#\1$system/\2#g; /^#DEBHELPER#/d" "$debian/$1.postrm" >"$work/postrm"
  ! grep -nE "(^|[ '\"])/(run|var|etc|usr)" "$work/postrm" || { echo "it touches another folder"; exit 1; }
  sh "$work/postrm" "$2"
}

everything() { (cd "$system" && find . | LC_ALL=C sort); }

# goes PATH...: since the last call, these and what is in them are gone.
last=""
goes() {
  local path left=$last
  for path; do left=$(awk -v path="./$path" '$0 != path && index($0, path "/") != 1' <<<"$left"); done
  diff <(everything) - <<<"$left"
  last=$left
}

images=(origin_2026-11-22_1_22_27_0.bmp dithered_2026-11-22_1_22_27_1.bmp)
others=(origin_1.bmp.txt my_origin_1.bmp origin.bmp dithered.bmp d00001-001 origin_1.png deeper/origin_1.bmp deeper/dithered_1.bmp)
spool=$system/var/spool/cups/tmp
mkdir -p "$spool/folder_origin_1.bmp" "$spool/origin_folder.bmp" "$spool/deeper"
for file in "${images[@]}" "${others[@]}"; do echo x >"$spool/$file"; done
ln -s "$spool/d00001-001" "$spool/origin_link.bmp"
last=$(everything)
for argument in remove upgrade failed-upgrade abort-install; do after_removal printer-driver-wren "$argument"; done
goes
after_removal printer-driver-wren purge
goes "${images[@]/#/var/spool/cups/tmp/}"
rm -r "$spool"
after_removal printer-driver-wren purge

# Of the printer application: the link to its socket, and its printers, jobs and password.
rm -r "$system"
own=(var/lib/wren-printer-app var/lib/private/wren-printer-app)
for folder in "${own[@]}" var/lib/other var/lib/private/other; do
  mkdir -p "$system/$folder"
  echo x >"$system/$folder/state"
done
mkdir -p "$system/run/wren-printer-app"
make_link() { ln -s wren-printer-app/wren-printer-app.sock "$system/run/wren-printer-app.sock"; }
make_link
last=$(everything)
for argument in upgrade failed-upgrade abort-install; do after_removal wren-printer-app "$argument"; done
goes
after_removal wren-printer-app remove
goes run/wren-printer-app.sock
make_link
last=$(everything)
after_removal wren-printer-app purge
goes run/wren-printer-app.sock "${own[@]}"
after_removal wren-printer-app purge
