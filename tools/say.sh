# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Messages and exit statuses of ./wren.

# shellcheck disable=SC2034 # used by those who source this
readonly STATUS_FAILED=1 STATUS_USAGE=2 STATUS_DOCUMENT=3 STATUS_SETUP=4

say() { printf '%s\n' "$*"; }

note() { printf 'wren: %s\n' "$*" >&2; }

# fail STATUS TEXT: prints one line and exits.
fail() {
  local status=$1
  shift
  note "$*"
  exit "$status"
}

fail_usage() { fail "$STATUS_USAGE" "$*"; }

# want_value OPTION [VALUE]: refuses an option at the end of the arguments.
want_value() { (($# >= 2)) || fail_usage "$1 wants a value"; }
