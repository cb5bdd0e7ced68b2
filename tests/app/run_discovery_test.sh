#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# run_discovery_test.sh PROGRAM: a printer of the program as others on the network find it, by
# avahi on a private D-Bus. Two machines in namespaces of their own, so that nothing is announced to
# the real network: CUPS leaves out what its own machine announces.
set -euo pipefail

program=$1
backend=$(cups-config --serverbin 2>/dev/null || echo /usr/lib/cups)/backend/dnssd

skip() {
  echo "skipped: $*"
  exit 77
}

if [[ -z ${WREN_IN_NAMESPACE:-} ]]; then
  ((EUID == 0)) || skip "not root"
  for tool in avahi-daemon avahi-browse dbus-daemon ippfind ip nsenter; do
    PATH=$PATH:/usr/sbin command -v "$tool" >/dev/null || skip "$tool is not installed"
  done
  unshare -nm true 2>/dev/null || skip "namespaces are not allowed here"
  unshare -n ip link add far type veth peer name farther 2>/dev/null || skip "there are no veth interfaces here"
  WREN_IN_NAMESPACE=1 exec unshare -nm "$0" "$@"
fi

export PATH=$PATH:/usr/sbin LC_ALL=C
work=$(mktemp -d /tmp/wren-discovery.XXXXXX)
started=()
finish() {
  ((${#started[@]} == 0)) || kill "${started[@]}" 2>/dev/null || true
  wait
  rm -rf "$work"
}
trap finish EXIT

fail() {
  echo "failed: $*"
  cat "$work"/*.log
  exit 1
}

# wait_for WORDS COMMAND...: repeats the command for 20 seconds, until it succeeds.
wait_for() {
  local words=$1 until=$((SECONDS + 20))
  shift
  until "$@" >/dev/null 2>&1; do
    ((SECONDS < until)) || fail "no $words"
    sleep 0.1
  done
}

# enter MACHINE COMMAND...: becomes a command on one of the two machines, each with a network, a /run
# and a D-Bus of its own.
enter() {
  local machine=$1
  shift
  exec env DBUS_SYSTEM_BUS_ADDRESS="unix:path=$work/$machine.bus" \
    nsenter --net="/proc/${keeper[$machine]}/ns/net" --mount="/proc/${keeper[$machine]}/ns/mnt" "$@"
}
at() { (enter "$@"); }

declare -A keeper
# shellcheck disable=SC2016
start_machine() {
  unshare -nm sh -c 'mount -t tmpfs none /run && mkdir /run/avahi-daemon && ip link set lo up &&
    : >"$0" && exec sleep 600' "$work/$1.ready" &
  keeper[$1]=$!
  started+=($!)
  wait_for "namespaces" test -e "$work/$1.ready"
}

# connect MACHINE ADDRESS
connect() {
  ip link set "to-$1" netns "${keeper[$1]}"
  at "$1" ip address add "$2/24" dev "to-$1"
  at "$1" ip link set "to-$1" up
}

# start_avahi MACHINE
start_avahi() {
  cat >"$work/$1.conf" <<CONF
<busconfig>
  <type>system</type>
  <listen>unix:path=$work/$1.bus</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
CONF
  enter "$1" dbus-daemon --config-file="$work/$1.conf" --nofork --nopidfile >"$work/$1-bus.log" 2>&1 &
  started+=($!)
  wait_for "D-Bus" test -S "$work/$1.bus"
  printf '[server]\nhost-name=%s\nuse-ipv6=no\nallow-interfaces=to-%s\n' "$1" "$1" >"$work/$1-avahi.conf"
  enter "$1" avahi-daemon --no-drop-root --no-chroot --no-rlimits --file="$work/$1-avahi.conf" \
    >"$work/$1-avahi.log" 2>&1 &
  started+=($!)
  wait_for "avahi" at "$1" avahi-browse -t _ipp._tcp
}

# A server without a password is not shared.
start_printer() {
  mkdir "$work/state"
  echo 'Password 0123~0123' >"$work/state/state"
  enter till "$program" trial --listen '*' --directory "$work/state" >"$work/addresses" 2>"$work/program.log" &
  started+=($!)
  wait_for "printer" grep -q '^http:' "$work/addresses"
  port=$(sed -n 's|^http://localhost:\([0-9]*\)/$|\1|p' "$work/addresses")
}

# expect WORDS TEXT PATTERN
expect() {
  grep -Eq -- "$3" <<<"$2" || fail "$1: '$3' is not in: $2"
}

resolved() { at phone avahi-browse -rpt _ipp._tcp | grep '^=;to-phone;IPv4;'; }

# The till has the printer; the phone looks for it.
start_machine till
start_machine phone
ip link add to-till type veth peer name to-phone
connect till 192.0.2.1
connect phone 192.0.2.2
start_avahi till
start_avahi phone
start_printer
wait_for "record of the printer" resolved

record=$(resolved)
expect "address" "$record" ";$port;"
expect "TXT keys" "$record" '"rp=ipp/print/wren"'
expect "TXT keys" "$record" '"ty=Wren 80[^"]*"'
expect "TXT keys" "$record" '"pdl=[^"]*image/pwg-raster[^"]*"'
expect "TXT keys" "$record" '"pdl=[^"]*image/urf[^"]*"'
expect "TXT keys" "$record" '"pdl=[^"]*application/pdf[^"]*"'
expect "TXT keys" "$record" '"URF=[^"]*RS203[^"]*"'
expect "TXT keys" "$record" '"URF=[^"]*W8[^"]*"'
expect "TXT keys" "$record" '"Color=F"'
expect "TXT keys" "$record" '"Duplex=F"'
expect "TXT keys" "$record" '"kind=[^"]*receipt[^"]*"'
expect "TXT keys" "$record" '"PaperMax=<legal-A4"'

expect "ippfind" "$(at phone ippfind -T 5 _ipp._tcp || true)" "^ipp://till\.local:$port/ipp/print/wren$"
expect "the CUPS backend behind lpinfo -v" "$(at phone "$backend" 2>>"$work/backend.log")" \
  '^network dnssd://wren\._ipp\._tcp\.local/[^ ]* "[^"]*Wren 80 mm receipt printer"'
echo "found: $record"
