#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# front_door_test.sh FOLDER PORT
#
# Tests ./wren add-queue, doctor and remove-queue with the scheduler of CUPS_SERVER
# and the system below FOLDER/system. The printer is at 127.0.0.1:PORT; the queue
# "till" remains for a test print. Each fault is created, found by doctor, and
# repaired with the command that doctor prints.
set -euo pipefail

work=$1 port=$2
# The installed filter must belong to root; other users become root in a user namespace.
if ((EUID != 0)); then
  unshare -r true 2>/dev/null || exit 77
  exec unshare -r "$0" "$@"
fi

export DESTDIR=$work/system
cd "$work/tree"
mkdir -p stand-in
printf '#!/bin/sh\nexec "$@"\n' >stand-in/sudo
chmod +x stand-in/sudo
PATH=$PWD/stand-in:$PATH
uri="socket://127.0.0.1:$port/?waiteof=false&snmp=false"
filter=$(compgen -G "$DESTDIR/usr/lib*/cups/filter/rastertowren")

die() {
  printf 'front door: %s\n' "$*" >&2
  exit 1
}

expect_status() {
  local expected=$1 got=0
  shift
  "$@" >answer 2>&1 || got=$?
  ((got == expected)) || die "'$*' ended with $got, expected $expected: $(cat answer)"
}

expect_words() { grep -qF -- "$1" answer || die "no '$1' in: $(cat answer)"; }

is_sound() {
  expect_status 0 ./wren doctor till
  ! grep -q '^BAD' answer || die "a finding without a fault: $(cat answer)"
}

# finds WORDS [QUEUE]: doctor reports exactly one fault, with these words. The command
# that repairs it goes to the file "fix".
finds() {
  expect_status 1 ./wren doctor "${2:-till}"
  expect_words "BAD   $1"
  [[ $(grep -c '^BAD' answer) -eq 1 ]] || die "more findings than faults: $(cat answer)"
  sed -n 's/^      fix: //p' answer >fix
}

fixes() {
  finds "$@"
  bash -e fix >said 2>&1 || die "$(cat fix) failed: $(cat said)"
  is_sound
}

adds_a_queue() {
  # The second call changes the paper and with it the default page size.
  expect_status 0 ./wren add-queue till "$uri" 58
  expect_status 0 ./wren add-queue till "$uri" 80
  grep -qx '\*DefaultPageSize: X80MMY200MM' "$DESTDIR/etc/cups/ppd/till.ppd" || die "the size is not that of the new paper"
  is_sound
  [[ -z $(lpstat -W all -o till) ]] || die "add-queue printed something"
  lpoptions -p till >answer
  for setting in position=top pdfAutoRotate=no orientation-requested=3; do expect_words "$setting"; done
  lpstat -v till >answer
  expect_words "$uri"
}

finds_faults_of_the_filter() {
  chmod g+w "$filter"
  finds "$filter has owner 0 and mode 775; CUPS refuses it"
  ! grep -q 'runs on this machine' answer || die "doctor runs a filter that others could have changed"
  fixes "$filter has owner 0 and mode 775; CUPS refuses it"
  chmod 700 "$filter"
  fixes "$filter has owner 0 and mode 700; CUPS refuses it"
  chmod o+w "$(dirname "$filter")"
  fixes "$(dirname "$filter") has owner 0 and mode 757; CUPS refuses it"
  mv "$filter" kept
  printf '\177ELF of another machine' >"$filter"
  chmod 755 "$filter"
  finds "the filter does not run on this machine"
  rm "$filter"
  finds "the filter is not installed as $filter"
  mv kept "$filter"
  is_sound
}

finds_faults_of_the_ppds() {
  local ppd=$DESTDIR/usr/share/ppd/wren/wren58.ppd
  mv "$ppd" kept
  finds "the PPD $ppd is missing"
  head -c 3000 kept >"$ppd"
  finds "the PPD $ppd is damaged"
  mv kept "$ppd"
  is_sound
}

finds_faults_of_the_queue() {
  lpadmin -p till -o position-default=center
  fixes "the queue 'till' lets CUPS centre or turn receipts"
  lpadmin -p till -o pdfAutoRotate-default=yes -o orientation-requested-default=4
  fixes "the queue 'till' lets CUPS centre or turn receipts"
  cupsdisable till
  fixes "the queue 'till' is stopped"
  cupsreject till
  fixes "the queue 'till' takes no jobs"
  sed 's/^\*FileVersion:.*/*FileVersion: "1.0"/; s/^\*cupsVersion.*/&\n*WrenOld: "1"/' \
    "$DESTDIR/usr/share/ppd/wren/wren80.ppd" >old.ppd
  lpadmin -p till -P old.ppd 2>/dev/null
  fixes "the queue 'till' has the PPD of another version"
  sed 's/^\*NickName:.*/*NickName: "Some other printer"/; s/^\*ModelName:.*/*ModelName: "Other"/' old.ppd >other.ppd
  lpadmin -p till -P other.ppd 2>/dev/null
  fixes "the queue 'till' does not print with a PPD of Wren's"
  finds "there is no queue 'gone'" gone
}

finds_faults_of_the_device() {
  lpadmin -p till -v socket://127.0.0.1:1/
  finds "the printer of 'till' does not answer at 127.0.0.1 port 1"
  lpadmin -p till -v 'socket://[::1]:1/'
  finds "the printer of 'till' does not answer at ::1 port 1"
  lpadmin -p till -v 'usb://Wren/80?serial=here'
  is_sound
  lpadmin -p till -v 'usb://Wren/80?serial=none'
  finds "the printer of 'till' is not found at usb://Wren/80?serial=none"
  lpadmin -p till -v "$uri"
  is_sound
}

finds_faults_of_the_spool_folder() {
  local folder=$DESTDIR/var/spool/cups/tmp
  truncate -s 300M "$folder/origin_fill_1.bmp"
  is_sound
  rm "$folder/origin_fill_1.bmp"
  # fallocate is fast, but not every file system supports it.
  if fallocate -l 210M "$folder/dithered_fill_1.bmp" 2>/dev/null; then
    : >"$folder/another_program.bmp"
    fixes "$folder holds "
    [[ -e $folder/another_program.bmp ]] || die "a file that is not Wren's was deleted"
  fi
  rm -f "$folder"/{dithered_fill_1,another_program}.bmp
  mv "$folder" kept
  finds "there is no $folder, so no debug images are written"
  mv kept "$folder"
  is_sound
}

says_what_the_scheduler_refuses() {
  expect_status 1 ./wren add-queue till nosuch://127.0.0.1/ 80
  expect_words "the scheduler did not take the queue 'till'"
  is_sound
}

finds_a_stopped_scheduler() {
  CUPS_SERVER=$work/nobody-listens expect_status 1 ./wren doctor
  expect_words "BAD   the scheduler does not run"
  CUPS_SERVER=$work/nobody-listens expect_status 1 ./wren add-queue other "$uri"
  expect_words "the scheduler does not run; start it with"
}

removes_only_its_own() {
  expect_status 0 ./wren add-queue short "$uri" 58
  # Without an argument, doctor checks all queues; plain80 was not added by ./wren.
  expect_status 1 ./wren doctor
  expect_words "BAD   the queue 'plain80' lets CUPS centre or turn receipts"
  expect_words "the queue 'short' has the PPD for 58 mm of this version"
  expect_status 0 ./wren remove-queue short
  expect_status 1 ./wren remove-queue short
  expect_words "there is no queue 'short'"
  lpadmin -p other -E -v "$uri" -P other.ppd 2>/dev/null
  expect_status 1 ./wren remove-queue other
  expect_words "the queue 'other' is not one of Wren's"
  expect_status 1 ./wren add-queue other "$uri" 80
  expect_words "there is a queue 'other' already, not one of Wren's"
  lpadmin -x other
}

adds_a_queue
finds_faults_of_the_filter
finds_faults_of_the_ppds
finds_faults_of_the_queue
finds_faults_of_the_device
finds_faults_of_the_spool_folder
says_what_the_scheduler_refuses
finds_a_stopped_scheduler
removes_only_its_own
