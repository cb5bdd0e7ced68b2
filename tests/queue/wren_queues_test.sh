#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# wren_queues_test.sh FOLDER PORT
#
# Tests wren add-queue, doctor and remove-queue with the scheduler of CUPS_SERVER
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

system=$work/system
mkdir -p "$work/try"
cd "$work/try"
mkdir -p stand-in
printf '#!/bin/sh\nexec "$@"\n' >stand-in/sudo
# The program with the system of this test in the place of "/".
cat >stand-in/wren <<SCRIPT
#!/bin/sh
command=\$1
shift
case \$command in
  add-queue | doctor) exec "$work/program/cli/wren" \$command --root "$system" "\$@" ;;
  *) exec "$work/program/cli/wren" \$command "\$@" ;;
esac
SCRIPT
chmod +x stand-in/*
PATH=$PWD/stand-in:$PATH
uri="socket://127.0.0.1:$port/?waiteof=false&snmp=false"
filter=$(compgen -G "$system/usr/lib*/cups/filter/rastertowren")
command_filter=$(dirname "$filter")/commandtowren

die() {
  printf 'wren: %s\n' "$*" >&2
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
  expect_status 0 wren doctor till
  ! grep -q '^BAD' answer || die "a finding without a fault: $(cat answer)"
}

# finds WORDS [QUEUE]: doctor reports exactly one fault, with these words. The command
# that repairs it goes to the file "fix".
finds() {
  expect_status 1 wren doctor "${2:-till}"
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
  expect_status 0 wren add-queue till "$uri" 58 --dry-run
  expect_words "the queue 'till' would be added: 58 mm, $uri"
  ! lpstat -p till >/dev/null 2>&1 || die "a dry run added a queue"
  expect_status 0 wren add-queue till "$uri" 58
  expect_words "the queue 'till' is added: 58 mm, $uri"
  expect_status 0 wren add-queue till "$uri"
  expect_words "the queue 'till' is as asked for; nothing is changed"
  # Another paper needs a word more, and changes the default page size.
  expect_status 1 wren add-queue till "$uri" 80
  expect_words "to change it to 80 mm, add --replace"
  expect_status 0 wren add-queue till "$uri" 80 --replace
  expect_words "the queue 'till' is changed: paper 58 -> 80 mm"
  grep -qx '\*DefaultPageSize: X80MMY200MM' "$system/etc/cups/ppd/till.ppd" || die "the size is not that of the new paper"
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
  ! grep -q 'the filter runs on this machine' answer || die "doctor runs a filter that others could have changed"
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
  mv "$command_filter" kept
  finds "the filter for commands is not installed as $command_filter"
  expect_status 4 wren add-queue other "$uri"
  expect_words "the filter is not installed as $command_filter"
  mv kept "$command_filter"
  chmod o+w "$command_filter"
  fixes "$command_filter has owner 0 and mode 757; CUPS refuses it"
  is_sound
}

finds_faults_of_the_ppds() {
  local ppd=$system/usr/share/ppd/wren/wren58.ppd
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
    "$system/usr/share/ppd/wren/wren80.ppd" >old.ppd
  lpadmin -p till -P old.ppd 2>/dev/null
  fixes "the queue 'till' has the PPD of another version"
  # Each paper has a PPD of its own.
  for paper in 58 112; do
    sed 's/^\*FileVersion:.*/*FileVersion: "1.0"/; s/^\*cupsVersion.*/&\n*WrenOld: "1"/' \
      "$system/usr/share/ppd/wren/wren$paper.ppd" >old-paper.ppd
    lpadmin -p till -P old-paper.ppd 2>/dev/null
    fixes "the queue 'till' has the PPD of another version"
    grep -qF "/wren$paper.ppd" fix || die "for $paper mm the cure is: $(cat fix)"
  done
  sed 's/^\*NickName:.*/*NickName: "Some other printer"/; s/^\*ModelName:.*/*ModelName: "Other"/' old.ppd >other.ppd
  lpadmin -p till -P other.ppd 2>/dev/null
  fixes "the queue 'till' does not print with a PPD of Wren's"
  finds "there is no queue 'gone'" gone
}

# As lpadmin -E: who adds a queue wants to print on it.
opens_a_queue() {
  cupsdisable till
  cupsreject till
  expect_status 0 wren add-queue till "$uri" --dry-run
  expect_words "the queue 'till' would be changed: it is started; it takes jobs"
  expect_status 1 wren doctor till
  expect_status 0 wren add-queue till "$uri"
  expect_words "the queue 'till' is changed: it is started; it takes jobs"
  is_sound
  expect_status 0 wren add-queue till "$uri"
  expect_words "nothing is changed"
}

keeps_the_options_of_a_queue() {
  expect_status 0 wren add-queue till "$uri" -o HalftoneType=Burkes -o PageSize=X80MMY600MM -o cpi=14
  expect_words "the queue 'till' is changed: "
  expect_words "HalftoneType None -> Burkes"
  expect_status 0 wren add-queue till "$uri"
  expect_words "nothing is changed"
  cp "$system/etc/cups/ppd/till.ppd" answer
  expect_words "*DefaultHalftoneType: Burkes"
  expect_words "*DefaultPageSize: X80MMY600MM"
  is_sound
  expect_status 2 wren add-queue till "$uri" -o HalftoneType=Stuki
  expect_words "did you mean 'Stucki'?"
}

# What doctor writes, add-queue reads.
applies_a_file() {
  local found='"uri": "socket://127.0.0.1'
  expect_status 0 wren doctor till --json
  cp answer shop.json
  expect_words "$found"
  expect_words '"cpi": "14"'
  expect_status 0 wren add-queue --from shop.json
  expect_words "the queue 'till' is as asked for; nothing is changed"
  lpadmin -p till -o HalftoneType=Sierra -o lpi-default=8
  expect_status 0 wren add-queue --from shop.json --dry-run
  expect_words "the queue 'till' would be changed: HalftoneType Sierra -> Burkes; lpi 8 -> (none)"
  expect_status 0 wren add-queue --from shop.json --dry-run
  expect_words "HalftoneType Sierra -> Burkes"
  expect_status 0 wren add-queue --from shop.json
  expect_words "the queue 'till' is changed"
  expect_status 0 wren add-queue --from shop.json
  expect_words "nothing is changed"
  # A fault in the second queue leaves the first as it is.
  printf '{"schema": 1, "queues": [{"name": "first", "uri": "%s"}, {"name": "till", "uri": "%s", "paper": 58}]}' \
    "$uri" "$uri" >two.json
  expect_status 1 wren add-queue --from two.json
  expect_words "--replace"
  ! lpstat -p first >/dev/null 2>&1 || die "the first of two queues was added"
  printf '{"schema": 1, "queues": [{"name": "till", "uri": "%s"}]}' "$uri" >plain.json
  expect_status 0 wren add-queue --from plain.json
  expect_words "cpi 14 -> (none)"
  expect_status 0 wren add-queue --from plain.json
  expect_words "the queue 'till' is as asked for; nothing is changed"
  sed 's/"uri"/"options": {"PageSize": "A4"}, &/' plain.json >wrong.json
  expect_status 2 wren add-queue --from wrong.json
  expect_words "wrong.json, the queue 'till': PageSize has no choice 'A4'"
  is_sound
}

finds_saved_options_without_effect() {
  export HOME=$PWD/home
  mkdir -p home
  lpadmin -p till -o HalftoneType-default=Bogus
  fixes "the queue 'till' has a saved option without effect: HalftoneType has no choice 'Bogus'"
  lpadmin -p till -o zork-default=3
  fixes "the queue 'till' has a saved option without effect: 'zork' is no option of this printer or of CUPS"
  mkdir -p home/.cups
  echo "Dest till HalftoneType=Stuki" >home/.cups/lpoptions
  fixes "$HOME/.cups/lpoptions has an option for 'till' without effect: HalftoneType has no choice 'Stuki'"
  echo "Dest till HalftoneType=Stuki" >"$system/etc/cups/lpoptions"
  fixes "$system/etc/cups/lpoptions has an option for 'till' without effect: HalftoneType has no choice 'Stuki'"
  rm "$system/etc/cups/lpoptions"
  sed -i 's/^\*DefaultHalftoneType:.*/*DefaultHalftoneType: Bogus/' "$system/etc/cups/ppd/till.ppd"
  fixes "the queue 'till' has a default that its PPD does not know: HalftoneType=Bogus"
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
  local folder=$system/var/spool/cups/tmp
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
  expect_status 1 wren add-queue till nosuch://127.0.0.1/ 80
  expect_words "the scheduler did not take the queue 'till'"
  is_sound
}

finds_a_stopped_scheduler() {
  CUPS_SERVER=$work/nobody-listens expect_status 1 wren doctor
  expect_words "BAD   the scheduler does not run"
  CUPS_SERVER=$work/nobody-listens expect_status 1 wren add-queue other "$uri"
  expect_words "the scheduler does not run; start it with"
}

removes_only_its_own() {
  expect_status 0 wren add-queue short "$uri" 58
  # Without an argument, doctor checks all queues; plain80 was not added by it.
  expect_status 1 wren doctor
  expect_words "BAD   the queue 'plain80' lets CUPS centre or turn receipts"
  expect_words "the queue 'short' has the PPD for 58 mm of this version"
  expect_status 0 wren remove-queue short
  expect_status 1 wren remove-queue short
  expect_words "there is no queue 'short'"
  lpadmin -p other -E -v "$uri" -P other.ppd 2>/dev/null
  expect_status 1 wren remove-queue other
  expect_words "the queue 'other' is not one of Wren's"
  expect_status 1 wren add-queue other "$uri" 80
  expect_words "there is a queue 'other' already, not one of Wren's"
  lpadmin -x other
}

adds_a_queue
finds_faults_of_the_filter
finds_faults_of_the_ppds
finds_faults_of_the_queue
opens_a_queue
keeps_the_options_of_a_queue
applies_a_file
finds_saved_options_without_effect
finds_faults_of_the_device
finds_faults_of_the_spool_folder
says_what_the_scheduler_refuses
finds_a_stopped_scheduler
removes_only_its_own
