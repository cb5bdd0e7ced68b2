#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# service_test.sh SOURCE_DIR: the service of the printer application: what it may do, how it is
# started, and that its files agree with each other.
set -euo pipefail

debian=$1/debian
service=$debian/wren-printer-app.service

die() {
  echo "$*" >&2
  exit 1
}

settings() { grep -vE '^(#|;|$)' "$1"; }

value() { sed -n "s/^$1=//p" "$service"; }

# A job from the network reaches the parsers of documents, so the service has no more than it needs:
# no file of users, no device but USB printers, no network but IP, no new privileges, bounded memory.
diff <(LC_ALL=C sort <<'TABLE'
[Install]
[Service]
[Unit]
After=network.target avahi-daemon.service
CapabilityBoundingSet=
Description=Wren printer application
DeviceAllow=char-usb_device rw
DevicePolicy=closed
Documentation=man:wren-printer-app(1)
DynamicUser=yes
Environment=WREN_LISTEN=localhost TMPDIR=/run/wren-printer-app
EnvironmentFile=-/etc/default/wren-printer-app
ExecStart=/usr/bin/wren-printer-app server -o server-port=8631 -o listen-hostname=${WREN_LISTEN}
LockPersonality=yes
MemoryDenyWriteExecute=yes
MemoryMax=512M
NoNewPrivileges=yes
PrivateTmp=yes
ProcSubset=pid
ProtectClock=yes
ProtectControlGroups=yes
ProtectHome=yes
ProtectHostname=yes
ProtectKernelLogs=yes
ProtectKernelModules=yes
ProtectKernelTunables=yes
ProtectProc=invisible
ProtectSystem=strict
Restart=on-failure
RestrictAddressFamilies=AF_UNIX AF_INET AF_INET6 AF_NETLINK
RestrictNamespaces=yes
RestrictRealtime=yes
RestrictSUIDSGID=yes
RuntimeDirectory=wren-printer-app
StateDirectory=wren-printer-app
StateDirectoryMode=0700
SupplementaryGroups=lp
SystemCallArchitectures=native
SystemCallErrorNumber=EPERM
SystemCallFilter=@system-service seccomp
TasksMax=256
TimeoutStopSec=70
Type=exec
WantedBy=multi-user.target
TABLE
) <(settings "$service" | LC_ALL=C sort)

# The program is in the package, and its man page is the one that is named.
read -r program _ <<<"$(value ExecStart)"
grep -qxF -- "${program#/}" "$debian/wren-printer-app.install" || die "$program is not in the package"
page=$(value Documentation)
[[ $page =~ ^man:(.*)\((.)\)$ ]] || die "Documentation=$page"
grep -qxF "usr/share/man/man${BASH_REMATCH[2]}/${BASH_REMATCH[1]}.${BASH_REMATCH[2]}" "$debian/wren-printer-app.install" ||
  die "$page is not in the package"

# This machine alone, until somebody says otherwise in the file that the service reads.
[[ $(settings "$debian/wren-printer-app.default") == WREN_LISTEN=localhost ]] || die "the default listens elsewhere"
[[ " $(value Environment) " == *" WREN_LISTEN=localhost "* ]] || die "without that file it listens elsewhere"

# The sub-commands look for the socket in /run; the service has a folder of its own there.
folder=$(value RuntimeDirectory)
[[ " $(value Environment) " == *" TMPDIR=/run/$folder "* ]] || die "the socket is not in /run/$folder"
[[ $(settings "$debian/wren-printer-app.tmpfiles") == "L+ /run/wren-printer-app.sock - - - - $folder/wren-printer-app.sock" ]] ||
  die "the link leads elsewhere"
