# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Bare Debian systems below build/roots: for packages of another release or
# architecture, and for trials on a system that has nothing yet.

# shellcheck disable=SC2034 # used by those who source this
readonly ROOT_RELEASES="bookworm trixie sid"

# make_root RELEASE FOLDER: a minbase system of this release in a new folder.
make_root() {
  local release=$1 folder=$2 log=$2.log mirror
  need root
  mirror=$(debian_mirror)
  [[ -n $mirror ]] || fail "$STATUS_SETUP" "apt names no mirror of Debian here; is this Debian, and was apt-get update run?"
  remove_root "$folder"
  mkdir -p "$folder" "$WREN_ROOT/build/roots/debs"
  # debootstrap mounts /proc below the folder. In a namespace of its own it leaves no mount behind.
  as_root unshare --mount debootstrap --variant=minbase --cache-dir="$WREN_ROOT/build/roots/debs" \
    "$release" "$folder" "$mirror" >"$log" 2>&1 || fail_install "$log" "the system cannot be made"
  root_file "$folder" etc/resolv.conf </etc/resolv.conf
  root_file "$folder" etc/hosts <<<"127.0.0.1 localhost $(uname -n)"
  # These systems are not worth waiting for the disk.
  root_file "$folder" etc/dpkg/dpkg.cfg.d/wren <<<force-unsafe-io
  apt_transport | root_file "$folder" etc/apt/apt.conf.d/00wren
  in_root "$folder" apt-get -q -y update >>"$log" 2>&1 || fail_install "$log" "the package lists cannot be fetched"
}

# install_in_root FOLDER PACKAGE...
install_in_root() {
  local folder=$1
  shift
  in_root "$folder" env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends \
    -o Dpkg::Use-Pty=0 install "$@" >>"$folder.log" 2>&1 </dev/null ||
    fail_install "$folder.log" "the packages cannot be installed in $folder"
}

# in_root FOLDER [--bind OUTSIDE INSIDE] COMMAND...: as root, with FOLDER as the root of the
# file system.
in_root() {
  as_root unshare --mount --pid --ipc --uts --fork --kill-child "$WREN_ROOT/tools/enter_root" "$@"
}

# root_file FOLDER PATH: writes its input to this file of the system.
root_file() { as_root tee "$1/$2" >/dev/null; }

remove_root() { as_root rm -rf --one-file-system "$1"; }

# The mirror that this machine's apt uses for Debian itself.
debian_mirror() {
  # shellcheck disable=SC2016 # apt replaces the names
  apt-get indextargets --format '$(LABEL) $(REPO_URI)' 'Created-By: Packages' |
    sed -n 's/^Debian //p' | sort -u | sed 1q
}

# How this machine's apt reaches its mirrors: proxies, retries, checks of dates.
apt_transport() { apt-config dump Acquire | grep -iE '^Acquire::(https?|Retries|Check-)[^ ]* ".+";$' || true; }
