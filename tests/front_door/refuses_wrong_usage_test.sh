#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# refuses_wrong_usage_test.sh ROOT: messages and exit statuses of ./wren for usage errors
# of the commands of a checkout. Each message is one line on standard error and comes
# before anything is built.
set -euo pipefail

wren=$1/wren
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
printf 'text\n' >good.txt
failed=0

# refuses STATUS WORDS ARGUMENTS...
refuses() {
  local status=$1 words=$2 got=0
  shift 2
  "$wren" "$@" >out 2>err </dev/null || got=$?
  if ((got != status)) || [[ -s out ]] || (($(wc -l <err) != 1)) || ! grep -qF -- "$words" err; then
    echo "wren $*: status $got, expected $status and '$words'; said:" && cat out err
    failed=1
  fi
}

refuses 2 "unknown command 'prnt'" prnt good.txt
refuses 2 "bench has no argument '-x'" bench -x
refuses 2 "--pairs wants a number from 1 to 999, not '0'" bench --pairs 0
refuses 2 "--against wants a value" bench --against
refuses 2 "--against: there is no file 'gone'" bench --against gone
refuses 2 "--against: 'good.txt' is not an executable program" bench --against good.txt
refuses 2 "--against: '.' is not an executable program" bench --against . --pairs 1
refuses 2 "package has no argument 'x'" package x
refuses 2 "--arch wants a value" package --arch
refuses 2 "--arch wants one of amd64 arm64 armhf, not 'mips'" package --arch mips
refuses 2 "--release wants one of bookworm trixie sid, not 'bullseye'" package --release bullseye
refuses 2 "test has no argument 'x'" test x
refuses 2 "--preset wants a name" test --preset
refuses 2 "lint has no argument 'x'" lint x
refuses 2 "fuzz has no target 'x'" fuzz x
refuses 2 "fuzz wants a number of seconds, not '--reach'" fuzz all --reach
refuses 2 "fuzz has no target 'x'" fuzz --reach x
refuses 2 "fuzz --reach has no argument '60'" fuzz --reach all 60
refuses 2 "fuzz wants a number of seconds, not '0'" fuzz all 0
exit $failed
