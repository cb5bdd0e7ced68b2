# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# A Mac's own bash is 3.2, which has neither mapfile nor arrays by name and takes
# an empty array for an unset one. There ./wren goes on in Homebrew's bash. This
# file is read by the old bash, so it keeps to what that one knows.

# is_too_old MAJOR MINOR
is_too_old() { (($1 < 4 || ($1 == 4 && $2 < 4))); }

# go_on_in_newer_bash SCRIPT [ARGUMENT...]: does not come back.
go_on_in_newer_bash() {
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
  # The tools call bash by its name, too.
  PATH=$bin:$PATH
  export PATH
  exec "$bin/bash" "$@"
}

if is_too_old "${BASH_VERSINFO[0]}" "${BASH_VERSINFO[1]}"; then
  go_on_in_newer_bash "$0" ${1+"$@"}
fi
