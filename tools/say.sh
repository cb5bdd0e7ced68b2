# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Messages and exit statuses of ./wren and of the scripts in dev/.

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

# answer_help SCRIPT [ARGUMENT...]: if the first argument asks for help, prints the comment
# at the head of a script of dev/, from its usage line on, and exits.
answer_help() {
  [[ ${2:-} == -h || ${2:-} == --help ]] || return 0
  awk '/^# dev\// { shown = 1 } shown && !/^#/ { exit } shown { sub(/^# ?/, ""); print }' "$1"
  exit 0
}

# want_value OPTION [VALUE]: refuses an option at the end of the arguments.
want_value() { (($# >= 2)) || fail_usage "$1 wants a value"; }
