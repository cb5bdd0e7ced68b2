#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# refusals_test.sh ROOT: messages and exit statuses of ./wren for usage errors and
# for files that it cannot print. Each message is one line on standard error and
# comes before anything is built.
set -euo pipefail

wren=$1/wren
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
printf 'text\n' >good.txt
printf 'a\0b' >binary
: >empty
printf '\x89PNG broken' >half.png
failed=0

# refuses STATUS WORDS ARGUMENTS...
refuses() {
  local status=$1 words=$2 got=0
  shift 2
  "$wren" "$@" >out 2>err </dev/null || got=$?
  if ((got != status)) || [[ -s out ]] || (($(wc -l <err) != 1)) || ! grep -qF -- "$words" err; then
    echo "wren $*: status $got, expected $status and '$words'; said:" && cat out err
    failed=1
  fi
}

refuses 2 "unknown command 'prnt'" prnt good.txt
refuses 2 "print wants a FILE" print
refuses 2 "print wants one FILE" print good.txt empty
refuses 2 "print has no option '-x'" print -x good.txt
refuses 2 "-n wants a value" print good.txt -n
refuses 2 "-n wants a number of copies" print good.txt -n 0
refuses 2 "-n wants a number of copies" print good.txt -n two
refuses 2 "--paper wants 58, 80 or 112" print good.txt --paper 79
refuses 2 "-o wants NAME=VALUE" print good.txt -o Brightness
cp half.png logo.png
refuses 2 "'good.txt' is the document itself" print good.txt --out good.txt
refuses 2 "'good.txt' is the document itself" print good.txt --raster good.txt
refuses 2 "'logo.png' is the document itself" print logo.png --out logo.prn
refuses 2 "'logo.png' is the document itself" print "$PWD/logo.png" --out logo
refuses 2 "'logo.png' is the document itself" halftones logo.png --out logo.png
cmp half.png logo.png || failed=1
refuses 2 "halftones wants a FILE" halftones
refuses 2 "halftones wants one FILE" halftones good.txt empty
refuses 2 "halftones has no option '-n'" halftones good.txt -n 2
refuses 2 "halftones has no option '-x'" halftones good.txt -x
refuses 2 "--crop wants WIDTHxHEIGHT+X+Y" halftones good.txt --crop 100
refuses 2 "--brightness wants" halftones good.txt --brightness ""
refuses 3 "there is no file 'gone.pdf'" halftones gone.pdf
refuses 2 "bench has no argument '-x'" bench -x
refuses 2 "--pairs wants a number from 1 to 999, not '0'" bench --pairs 0
refuses 2 "--against wants a value" bench --against
refuses 2 "--against: there is no file 'gone'" bench --against gone
refuses 2 "--against: 'good.txt' is not an executable program" bench --against good.txt
refuses 2 "--against: '.' is not an executable program" bench --against . --pairs 1
refuses 2 "package has no argument 'x'" package x
refuses 2 "--arch wants a value" package --arch
refuses 2 "--arch wants one of amd64 arm64 armhf, not 'mips'" package --arch mips
refuses 2 "--release wants one of bookworm trixie sid, not 'bullseye'" package --release bullseye
refuses 2 "add-queue wants NAME URI" add-queue till
refuses 2 "unlike 'my till'" add-queue "my till" usb://Wren/80
refuses 2 "unlike '-till'" add-queue -till usb://Wren/80
refuses 2 "unlike '/dev/usb/lp0'" add-queue till /dev/usb/lp0
refuses 2 "not '79'" add-queue till usb://Wren/80 79
refuses 2 "remove-queue wants NAME" remove-queue
refuses 2 "doctor wants at most one QUEUE" doctor a b
refuses 3 "there is no file 'gone.pdf'" print gone.pdf
refuses 3 "'.' is not a file" print .
refuses 3 "'empty' is empty" print empty
refuses 3 "'binary' is neither PDF, PNG, JPEG nor text" print binary
if ((EUID != 0)); then
  chmod 000 good.txt
  refuses 3 "'good.txt' cannot be read" print good.txt
fi
exit $failed
