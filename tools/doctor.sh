# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren doctor [QUEUE]: checks everything between a document and the printer and
# names, for each finding, the command that fixes it. Changes nothing.

# --reinstall also restores missing files of an installed package. The package is
# built here because no archive has it.
readonly REINSTALL="./wren package && sudo apt install --reinstall ./build/package/printer-driver-wren_*.deb"

doctor_command() {
  (($# <= 1)) || fail_usage "doctor wants at most one QUEUE"
  local findings=0 name queues=()
  check_filter
  check_ppds
  check_spool_folder
  if check_scheduler; then
    if (($# == 1)); then queues=("$1"); else mapfile -t queues < <(our_queues); fi
    for name in "${queues[@]}"; do check_queue "$name"; done
    ((${#queues[@]} > 0)) || say "--    no queue prints with Wren; add one with: ./wren add-queue NAME URI [58|80|112]"
  fi
  ((findings == 0)) || exit "$STATUS_FAILED"
}

good() { say "ok    $*"; }

# finding WORDS COMMAND
finding() {
  say "BAD   $1"
  say "      fix: $2"
  findings=$((findings + 1))
}

check_filter() {
  local filter status=0 before=$findings
  filter=$(installed_filter)
  if [[ ! -e $filter ]]; then
    finding "the filter is not installed as $filter" "$REINSTALL"
    return
  fi
  check_owner_and_mode "$filter"
  check_owner_and_mode "$(dirname "$filter")"
  # A file that others can write to is not executed, least of all as root.
  ((findings == before)) || return 0
  "$filter" >/dev/null 2>&1 || status=$?
  if ((status == 1)); then
    good "the filter runs on this machine ($(uname -m))"
  else
    finding "the filter does not run on this machine ($(uname -m), status $status)" "$REINSTALL"
  fi
}

# CUPS refuses a filter that is not owned by root or that others can write to.
check_owner_and_mode() {
  local owner mode
  read -r owner mode < <(stat -L -c '%u %a' "$1")
  if ((owner == 0 && (8#$mode & 8#022) == 0 && (8#$mode & 8#555) == 8#555)); then
    good "$1 belongs to root and only root may change it"
  else
    finding "$1 has owner $owner and mode $mode; CUPS refuses it" "sudo chown root: $1 && sudo chmod 755 $1"
  fi
}

check_ppds() {
  local paper ppd
  for paper in 58 80 112; do
    ppd=$INSTALLED_PPDS/wren$paper.ppd
    if [[ ! -r $ppd ]]; then
      finding "the PPD $ppd is missing" "$REINSTALL"
    elif ! cupstestppd -q -I filters "$ppd" 2>/dev/null; then
      finding "the PPD $ppd is damaged (cupstestppd -I filters $ppd)" "$REINSTALL"
    else
      good "$ppd is sound"
    fi
  done
}

check_scheduler() {
  if scheduler_runs; then
    good "the scheduler runs"
  else
    finding "the scheduler does not run" "sudo $(start_scheduler_hint)"
    return 1
  fi
}

# Only debug images need this folder: a page prints without them.
check_spool_folder() {
  local spool=$SYSTEM_ROOT/var/spool/cups kilobytes
  local folder=$spool/tmp
  if [[ -d $spool && ! -x $spool ]]; then
    say "--    $spool may not be looked into; for the debug images call sudo ./wren doctor"
    return
  fi
  if [[ ! -d $folder ]]; then
    finding "there is no $folder, so no debug images are written" "sudo install -d -o root -g lp -m 1770 $folder"
    return
  fi
  kilobytes=$(find "$folder" -maxdepth 1 \( -name 'origin_*.bmp' -o -name 'dithered_*.bmp' \) -printf '%k\n' |
    awk '{ sum += $1 } END { print sum + 0 }')
  if ((kilobytes > 200000)); then
    finding "$folder holds $((kilobytes / 1000)) MB of debug images" \
      "sudo find $folder -maxdepth 1 \\( -name 'origin_*.bmp' -o -name 'dithered_*.bmp' \\) -delete"
  else
    good "$folder holds $((kilobytes / 1000)) MB of debug images"
  fi
}

check_queue() {
  local name=$1
  if ! lpstat -p "$name" >/dev/null 2>&1; then
    finding "there is no queue '$name'" "./wren add-queue $name URI"
    return
  fi
  if ! is_ours "$name"; then
    finding "the queue '$name' does not print with a PPD of Wren's" "sudo lpadmin -p $name -P $INSTALLED_PPDS/wren80.ppd"
    return
  fi
  check_queue_ppd "$name"
  check_queue_defaults "$name"
  check_queue_is_open "$name"
  check_device "$name"
}

# A queue keeps a copy of the PPD it was created with. Only root can read the copy.
# The lines *Default... hold the queue's own defaults and may differ.
check_queue_ppd() {
  local copy=$SYSTEM_ROOT/etc/cups/ppd/$1.ppd paper
  [[ -r $copy ]] || return 0
  paper=$(sed -n 's/^\*cupsModelNumber: *\([0-9]*\).*/\1/p' "$copy")
  [[ -r $INSTALLED_PPDS/wren$paper.ppd ]] || return 0
  if diff -q <(grep -v '^\*Default' "$copy") <(grep -v '^\*Default' "$INSTALLED_PPDS/wren$paper.ppd") >/dev/null; then
    good "the queue '$1' has the PPD for $paper mm of this version"
  else
    finding "the queue '$1' has the PPD of another version" "sudo lpadmin -p $1 -P $INSTALLED_PPDS/wren$paper.ppd"
  fi
}

check_queue_defaults() {
  local setting missing=() options
  options=" $(lpoptions -p "$1") "
  for setting in "${QUEUE_DEFAULTS[@]}"; do
    [[ $options == *" $setting "* ]] || missing+=(-o "${setting/=/-default=}")
  done
  if ((${#missing[@]} == 0)); then
    good "the queue '$1' keeps receipts upright and at the top"
  else
    finding "the queue '$1' lets CUPS centre or turn receipts" "sudo lpadmin -p $1 ${missing[*]}"
  fi
}

check_queue_is_open() {
  if LC_ALL=C lpstat -p "$1" | grep -q disabled; then
    finding "the queue '$1' is stopped" "sudo cupsenable $1"
  elif LC_ALL=C lpstat -a "$1" | grep -q 'not accepting'; then
    finding "the queue '$1' takes no jobs" "sudo cupsaccept $1"
  else
    good "the queue '$1' takes and prints jobs"
  fi
}

check_device() {
  local uri host port
  uri=$(LC_ALL=C lpstat -v "$1" | sed -n 's/^device for [^:]*: //p')
  case $uri in
    socket://* | lpd://* | ipp://* | ipps://* | http://* | https://*)
      read -r host port < <(host_and_port "$uri")
      # shellcheck disable=SC2016
      if timeout 5 bash -c ': >"/dev/tcp/$0/$1"' "$host" "$port" 2>/dev/null; then
        good "the printer of '$1' answers at $host port $port"
      else
        finding "the printer of '$1' does not answer at $host port $port" "ping $host   # then its cable, its power and its address"
      fi
      ;;
    usb://*) check_usb "$1" "$uri" ;;
    *) say "--    whether $uri (queue '$1') can be reached is not known here" ;;
  esac
}

check_usb() {
  if as_root lpinfo --include-schemes usb -v 2>/dev/null | grep -qF "$2"; then
    good "the printer of '$1' is plugged in"
  else
    finding "the printer of '$1' is not found at $2" "sudo lpinfo --include-schemes usb -v   # shows what is plugged in; then sudo lpadmin -p $1 -v URI"
  fi
}

host_and_port() {
  local scheme=${1%%:*} rest=${1#*://} port
  rest=${rest%%[/?]*}
  rest=${rest##*@}
  case $scheme in
    socket) port=9100 ;;
    lpd) port=515 ;;
    http) port=80 ;;
    https) port=443 ;;
    *) port=631 ;;
  esac
  # An IPv6 address is written in brackets because it contains colons.
  [[ $rest =~ ^(\[([^]]*)\]|[^:]*)(:([0-9]+))?$ ]] || return 0
  echo "${BASH_REMATCH[2]:-${BASH_REMATCH[1]}} ${BASH_REMATCH[4]:-$port}"
}
