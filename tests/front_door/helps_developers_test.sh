#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# helps_developers_test.sh SOURCE_DIR
#
# Every program in dev/ answers --help with its usage and does nothing else. They run in a
# copy, so that one that goes to work instead changes nothing here.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/tree"
cp -R "$1/dev" "$1/tools" "$work/tree"
cd "$work/tree"
rm -rf dev/__pycache__

die() {
  echo "$*" >&2
  exit 1
}

state() { find . -type f -exec cksum {} + | LC_ALL=C sort; }

state >../before
programs=0
for program in dev/*; do
  [[ -x $program ]] || continue
  name=${program#dev/}
  "$program" --help >../said 2>../noted </dev/null || die "$name --help ended with $?: $(cat ../noted)"
  [[ ! -s ../noted ]] || die "$name --help says on standard error: $(cat ../noted)"
  head -n 1 ../said | grep -q "$name" || die "$name --help does not begin with its usage: $(cat ../said)"
  (($(wc -l <../said) > 1)) || die "$name --help says only: $(cat ../said)"
  ! grep -qE '^(#|set -)' ../said || die "$name --help shows its own code: $(cat ../said)"
  state | diff ../before - || die "$name --help has changed files"
  programs=$((programs + 1))
done
((programs >= 9)) || die "only $programs programs were found"
