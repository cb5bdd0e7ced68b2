# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# A scheduler and a printer for the tests of the installed package. The printer is
# wren-preview, listening on a loopback port.

scheduler="" printer=""

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

is_running() { LC_ALL=C lpstat -r 2>/dev/null | grep -q 'is running'; }

# wait_for SECONDS COMMAND...
wait_for() {
  local tenths=$(($1 * 10))
  shift
  for ((; tenths > 0; --tenths)); do
    if "$@"; then return; fi
    sleep 0.1
  done
  return 1
}

# Where nothing starts services, as in a chroot, the scheduler is started here.
start_scheduler() {
  if is_running; then return; fi
  cupsd -f &
  scheduler=$!
  wait_for 20 is_running || die "the scheduler does not start"
}

# start_printer FOLDER: keeps jobs in FOLDER/received. Sets port: wren-preview prints the address
# that it listens on.
start_printer() {
  received=$1/received
  mkdir "$received"
  wren-preview --listen 0 --directory "$received" >"$1/printer" 2>&1 &
  printer=$!
  wait_for 20 grep -qsE '127\.0\.0\.1:[0-9]+' "$1/printer" || die "wren-preview does not listen"
  # shellcheck disable=SC2034 # used by those who source this
  port=$(sed -n 's/.*127\.0\.0\.1:\([0-9]*\).*/\1/p' "$1/printer" | head -n 1)
}

stop_print_system() {
  [[ -z $printer ]] || kill "$printer" 2>/dev/null || true
  [[ -z $scheduler ]] || kill "$scheduler" 2>/dev/null || true
}

received_jobs() { find "$received" -name "*.$1" | LC_ALL=C sort; }

# A job is complete when its picture is there.
has_received() { [[ $(received_jobs png | wc -l) -ge $1 ]]; }
