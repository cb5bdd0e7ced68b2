#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# leaves_an_old_bash_test.sh SOURCE_DIR
#
# How ./wren starts in the old bash of a Mac. Homebrew and its bash are stand-ins.
set -euo pipefail

tools=$1/tools
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

die() {
  echo "$*" >&2
  exit 1
}

# shellcheck source=tools/newer_bash.sh
source "$tools/newer_bash.sh"
for version in "3 2" "4 3"; do
  # shellcheck disable=SC2086
  is_too_old $version || die "$version is not too old"
done
for version in "4 4" "5 0" "5 2"; do
  # shellcheck disable=SC2086
  ! is_too_old $version || die "$version is too old"
done

# Without Homebrew: one line of error message.
status=0
(PATH=$work restart_in_newer_bash wren help) 2>said || status=$?
((status == 4)) || die "status $status without Homebrew"
grep -q 'needs 4.4 or newer; on a Mac install Homebrew first' said || die "said: $(cat said)"

# A Homebrew that cannot install it.
mkdir -p broken
# shellcheck disable=SC2016 # of the script
printf '#!/bin/sh\n[ "$1" = --prefix ] && echo %s/broken\n' "$work" >broken/brew
chmod +x broken/brew
status=0
(PATH=$work/broken:$PATH restart_in_newer_bash wren help) 2>said || status=$?
((status == 4)) || die "status $status with a Homebrew that fails"
diff <(printf '%s\n' 'wren: installing with Homebrew: bash (that of the system is too old)' 'wren: Homebrew could not install bash') said

# With Homebrew: bash is installed once and continues with the same arguments.
mkdir -p bin brewed/bin
cat >bin/brew <<SCRIPT
#!/bin/sh
echo "\$*" >>$work/asked
case \$1 in
  --prefix) echo $work/brewed ;;
  install)
    printf '#!/bin/sh\nprintf "%%s\\\\n" "\$@" >$work/went-on\n' >$work/brewed/bin/bash
    chmod +x $work/brewed/bin/bash ;;
esac
SCRIPT
chmod +x bin/brew
for _ in first second; do
  (PATH=$work/bin:$PATH restart_in_newer_bash ./wren print "a b.pdf" -n 2) 2>>said
  printf '%s\n' ./wren print "a b.pdf" -n 2 | cmp - went-on
done
[[ $(grep -c '^install -q bash$' asked) -eq 1 ]] || die "asked Homebrew: $(cat asked)"

# The old bash parses the start of wren and this one file, so they must not use newer syntax.
newer='declare -[a-z]*[An]|local -[a-z]*[An]|mapfile|readarray|\$\{[a-z_]+(,|\^)|wait -n|&>>|\|&|coproc|printf -v|\[\[ -v|@[A-Z]\}'
! sed -n '1,/newer_bash.sh"/p' "$1/wren" | cat - "$tools/newer_bash.sh" | grep -v '^#' | grep -nE "$newer" ||
  die "these forms are newer than bash 3.2"
