# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# A private spool folder for a run of the filter: its debug images stay out of the
# system's spool folder, and parallel runs do not mix theirs.

# Whether this user can mount a folder over another one in a mount namespace. All of
# /var/spool is covered, because a plain user has no access to /var/spool/cups.
can_mount() { unshare "$(mount_flags)" mount --bind /tmp /var/spool 2>/dev/null; }

mount_flags() { if ((EUID == 0)); then echo -m; else echo -rm; fi; }

# spool_command FILTER FOLDER: prints the command that runs FILTER with its debug
# images in FOLDER/cups/tmp. Where mounting is not permitted, this is a second build of
# the filter, FILTER_relocated, which writes them to "spool" below its working folder.
spool_command() {
  # shellcheck disable=SC2016
  if can_mount; then
    printf "unshare %s sh -c '%s' sh %q %q" "$(mount_flags)" \
      'mount --bind "$1" /var/spool && shift && exec "$@"' "$2" "$1"
  elif [[ -x $1_relocated ]]; then
    ln -sfn cups/tmp "$2/spool"
    printf "sh -c '%s' sh %q %q" 'cd "$1" && shift && exec "$@"' "$2" "$1_relocated"
  else
    note "no private spool folder possible here: debug images, if any, go to /var/spool/cups/tmp"
    printf %q "$1"
  fi
}
