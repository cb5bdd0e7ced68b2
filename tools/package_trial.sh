#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# package_trial.sh --throwaway: the whole life of the Debian package on a bare
# system, as root: build it, install it, add a queue on the system's own
# scheduler, print with plain lp, compare the bytes, remove everything, and see
# that nothing is left. It changes the system it runs on and leaves CUPS
# installed: run it in a container or a chroot that is thrown away afterwards.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
queue=till port=19100
work=$(mktemp -d /tmp/wren-trial.XXXXXX)
cd "$root"

step() { printf '\n== %s\n' "$*"; }

die() {
  printf 'package trial: %s\n' "$*" >&2
  exit 1
}

# expect_status STATUS COMMAND...
expect_status() {
  local expected=$1 got=0
  shift
  printf '+ %s\n' "$*"
  "$@" || got=$?
  ((got == expected)) || die "'$*' ended with $got, expected $expected"
}

# Every file of the system that a package or a queue could leave behind.
files_of_system() {
  find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /run \
    -o -path "$root" -o -path /var/log -o -path /var/cache -o -path /var/lib/apt \
    -o -path /var/lib/dpkg -o -path '/var/lib/systemd' -o -path /root/.ccache \) -prune -o -print | sort
}

# A printer that takes one job after the other and keeps the last.
start_printer() {
  perl -MIO::Socket::INET -e '
    my ($port, $file) = @ARGV;
    my $l = IO::Socket::INET->new(LocalAddr => "127.0.0.1", LocalPort => $port, Listen => 4, ReuseAddr => 1) or die;
    while (my $c = $l->accept) {
      my ($all, $part) = ("", "");
      $all .= $part while sysread($c, $part, 65536);
      next if $all eq "";
      open(my $out, ">", "$file.part") or die; binmode $out; print $out $all; close $out;
      rename("$file.part", $file);
    }' "$port" "$work/printed" &
  printer=$!
}

stop_all() {
  [[ -z ${printer:-} ]] || kill "$printer" 2>/dev/null || true
  [[ -z ${scheduler:-} ]] || kill "$scheduler" 2>/dev/null || true
  rm -rf "$work"
}

start_scheduler() {
  if LC_ALL=C lpstat -r 2>/dev/null | grep -q 'is running'; then return; fi
  cupsd -f &
  scheduler=$!
  for _ in $(seq 100); do
    if LC_ALL=C lpstat -r 2>/dev/null | grep -q 'is running'; then return; fi
    sleep 0.1
  done
  die "the scheduler does not start"
}

print_and_compare() {
  rm -f "$work/printed"
  lp -d "$queue" "$1"
  for _ in $(seq 200); do
    [[ ! -e $work/printed ]] || break
    sleep 0.1
  done
  [[ -e $work/printed ]] || die "nothing reached the printer"
  ./wren print "$1" --out "$work/by-hand" >/dev/null
  cmp "$work/printed" "$work/by-hand" || die "$1: the queue prints other bytes than ./wren print"
  echo "$1: $(wc -c <"$work/printed") bytes, equal to those of ./wren print, $(md5sum <"$work/printed" | cut -c1-32)"
}

[[ ${1:-} == --throwaway ]] || die "this changes the system; say --throwaway if it may"
((EUID == 0)) || die "this needs root"
trap stop_all EXIT

step "what the package is built with, and CUPS"
./wren package
package=$(compgen -G "$root/build/package/printer-driver-wren_*.deb")
./wren print examples/receipt.pdf
start_scheduler
files_of_system >"$work/before"

step "install"
apt-get install -y -q --no-install-recommends "$package" >"$work/apt" || die "it cannot be installed"
dpkg -L printer-driver-wren | while read -r path; do
  [[ -d $path ]] || stat -c '%U:%G %a %n' "$path"
done

step "a queue, and plain lp"
start_printer
expect_status 0 ./wren add-queue "$queue" "socket://127.0.0.1:$port" 80
expect_status 0 ./wren doctor "$queue"
for document in receipt.pdf photo.png order.txt; do print_and_compare "examples/$document"; done

step "what doctor finds, mended by what it says"
chmod g+w /usr/lib/cups/filter/rastertowren
lpadmin -p "$queue" -o pdfAutoRotate-default=yes
cupsdisable "$queue"
expect_status 1 ./wren doctor "$queue" | tee "$work/findings"
sed -n 's/^      mend: sudo //p' "$work/findings" | sed 's/&& sudo/\&\&/' >"$work/mend"
[[ $(grep -c '^BAD' "$work/findings") -eq 3 && $(wc -l <"$work/mend") -eq 3 ]] || die "three findings were expected"
sh -ex "$work/mend"
expect_status 0 ./wren doctor "$queue" >/dev/null
print_and_compare examples/receipt.pdf

step "remove"
expect_status 0 ./wren remove-queue "$queue"
expect_status 1 ./wren remove-queue "$queue"
apt-get purge -y -q printer-driver-wren >"$work/apt" || die "it cannot be removed"
files_of_system >"$work/after"
# CUPS keeps its own records of jobs and queues and the cache of its fonts. What
# its list of queues was before the last change (printers.conf.O) may name ours.
comm -13 "$work/before" "$work/after" |
  grep -vE '^/(etc/cups/(printers|subscriptions|classes)\.conf(\.O)?|etc/printcap|var/spool/cups/([cd][0-9-]+|tmp/\.cache.*))$' >"$work/left" || true
if [[ -s $work/left ]]; then
  cat "$work/left"
  die "these files are left"
fi
knows_wren() { grep -rli wren /etc/cups/printers.conf /etc/cups/ppd 2>/dev/null; }
# CUPS writes its list of queues half a minute after a change.
for _ in $(seq 60); do
  knows_wren >/dev/null || break
  sleep 1
done
! knows_wren || die "CUPS still knows Wren"
echo "nothing is left"
