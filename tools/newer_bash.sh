# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# macOS ships bash 3.2, which has neither mapfile nor associative arrays and
# treats an empty array as unset. There ./wren restarts in Homebrew's bash. This
# file is read by the old bash, so it uses only what bash 3.2 has.

# is_too_old MAJOR MINOR
is_too_old() { (($1 < 4 || ($1 == 4 && $2 < 4))); }

# restart_in_newer_bash SCRIPT [ARGUMENT...]: does not return.
restart_in_newer_bash() {
  local bin
  if ! command -v brew >/dev/null; then
    printf 'wren: this is bash %s, and ./wren needs 4.4 or newer; on a Mac install Homebrew first\n' "$BASH_VERSION" >&2
    exit 4
  fi
  bin=$(brew --prefix)/bin
  if [[ ! -x $bin/bash ]]; then
    echo 'wren: installing with Homebrew: bash (that of the system is too old)' >&2
    if ! brew install -q bash >&2 || [[ ! -x $bin/bash ]]; then
      echo 'wren: Homebrew could not install bash' >&2
      exit 4
    fi
  fi
  # Scripts that start with "env bash" must find the newer one as well.
  PATH=$bin:$PATH
  export PATH
  exec "$bin/bash" "$@"
}

if is_too_old "${BASH_VERSINFO[0]}" "${BASH_VERSINFO[1]}"; then
  restart_in_newer_bash "$0" ${1+"$@"}
fi
