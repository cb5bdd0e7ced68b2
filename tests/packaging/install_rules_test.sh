#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# install_rules_test.sh BUILD_DIR CMAKE: the paths and modes of what is installed. CUPS refuses a
# filter that others can write to or that not everybody can run, and finds PPDs below
# /usr/share/ppd alone.
set -euo pipefail

build=$1 cmake=$2
serverbin=$(cups-config --serverbin 2>/dev/null || echo /usr/lib/cups)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The modes have to come from the rules.
umask 077
for folder in filter ppd cli preview; do
  DESTDIR=$work/root "$cmake" -DCMAKE_INSTALL_PREFIX=/usr -P "$build/$folder/cmake_install.cmake" >"$work/log"
done

LC_ALL=C sort >"$work/expected" <<TABLE
755 /usr/bin/wren
755 /usr/bin/wren-preview
755 $serverbin/filter/commandtowren
755 $serverbin/filter/rastertowren
644 /usr/share/bash-completion/completions/wren
644 /usr/share/man/man1/wren-preview.1
644 /usr/share/man/man1/wren.1
644 /usr/share/man/man8/commandtowren.8
644 /usr/share/man/man8/rastertowren.8
644 /usr/share/ppd/wren/wren112.ppd
644 /usr/share/ppd/wren/wren58.ppd
644 /usr/share/ppd/wren/wren80.ppd
644 /usr/share/zsh/vendor-completions/_wren
TABLE
find "$work/root" -type f -printf '%m /%P\n' | LC_ALL=C sort | diff "$work/expected" -
