# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# For tests of scripts: a folder of the test, which goes with it, and programs in it that stand in
# for those of the system. Sourced with the source folder as the first argument.

source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
work=$(cd "$work" && pwd -P)
# Where a copy of the checkout belongs.
# shellcheck disable=SC2034 # used by those who source this
tree=$work/tree
mkdir -p "$work/bin" "$work/tree"
cd "$work" || exit

die() {
  echo "$*" >&2
  exit 1
}

# stand_in NAME: the script on standard input, in bin/.
stand_in() {
  cat >"$work/bin/$1"
  chmod +x "$work/bin/$1"
}

# copy_checkout: what ./wren needs to start.
copy_checkout() { cp -r "$source_dir/wren" "$source_dir/tools" "$work/tree"; }
