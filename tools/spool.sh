# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# A spool folder of its own for a run of the filter, so that its debug images
# never reach the system's and two runs never meet there.

# private_spool FOLDER: prints the beginning of a command that runs what follows
# it with FOLDER in place of /var/spool (the whole of it, since a plain user may
# not look into /var/spool/cups). Prints nothing where that is not possible.
private_spool() {
  local flags=-m
  ((EUID == 0)) || flags=-rm
  # shellcheck disable=SC2016
  local mount_it='mount --bind "$1" /var/spool && shift && exec "$@"'
  if unshare "$flags" sh -c "$mount_it" sh "$1" true 2>/dev/null; then
    printf "unshare %s sh -c '%s' sh %q " "$flags" "$mount_it" "$1"
  elif [[ $(uname) == Linux ]]; then
    note "no private spool folder possible here: debug images, if any, go to /var/spool/cups/tmp"
  fi
}
