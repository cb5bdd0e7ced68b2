#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# sources_test.sh SOURCE_DIR: what Debian's tools read beside the rules: the version, the oldest
# tools that the build is promised to work with, the pages, the licences, the tests.
set -euo pipefail

root=$1
debian=$root/debian

die() {
  echo "$*" >&2
  exit 1
}

# paragraph FIRST-LINE: of debian/control.
paragraph() { sed -n "/^$1\$/,/^\$/p" "$debian/control"; }

# A package of another version than the program's would not be installed over the older one.
version=$(sed -n 's/^project(wren VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
[[ -n $version ]] || die "CMakeLists.txt names no version"
head -n 1 "$debian/changelog" | grep -qxF "wren ($version) unstable; urgency=medium" || die "debian/changelog begins with another version"
grep -qxF '3.0 (native)' "$debian/source/format" || die "there is no tarball of others"

# Section, priority and who is root while a package is built.
diff - <(paragraph "Source: wren" | grep -vE '^( |#|Build-Depends:)') <<'TABLE'
Source: wren
Section: text
Priority: optional
Maintainer: Wren developers <developers@example.org>
Standards-Version: 4.6.2
Rules-Requires-Root: no

TABLE

# The versions of CMake and PAPPL that the build is promised to work with. zint draws a picture
# while it is built, so it runs on the machine that builds.
minimum=$(sed -n 's/^cmake_minimum_required(VERSION \(.*\))$/\1/p' "$root/CMakeLists.txt")
diff <(LC_ALL=C sort <<TABLE
 cmake (>= $minimum),
 debhelper-compat (= 13),
 libpappl-dev (>= 1.3),
 zint:native
TABLE
) <(paragraph "Source: wren" | grep -E '^ .*[(:]' | LC_ALL=C sort)

# Both packages carry what README.md lists for those who do not change the code.
pages=$(sed -n '/^| somebody with a shop/,/^| changing the code/{/^| changing the code/d;p}' "$root/README.md" |
  grep -oE '\(docs/[A-Z]+\.md\)' | tr -d '()')
(($(wc -l <<<"$pages") >= 9)) || die "README.md names too few pages: $pages"
for package in printer-driver-wren wren-printer-app; do
  diff <(printf '%s\n' README.md SECURITY.md docs/pictures "$pages" | LC_ALL=C sort) <(LC_ALL=C sort "$debian/$package.docs")
done
while IFS= read -r page; do [[ -e $root/$page ]] || die "there is no $page"; done <"$debian/printer-driver-wren.docs"

# The licences of what others wrote are kept, and stand in debian/copyright.
for file in "$root/common/font_12x24.LICENSE" "$root/tests/third_party/axe/LICENSE"; do
  [[ -s $file ]] || die "there is no $file"
done
diff - <(grep -E '^(Files|License):' "$debian/copyright") <<'TABLE'
Files: *
License: Expat
Files: common/font_12x24.h
License: BSD-2-clause
Files: tests/third_party/axe/*
License: MPL-2.0
License: MPL-2.0
License: Expat
License: BSD-2-clause
TABLE

# Every test of an installed package can be run, needs the package and tools that it names, and says
# what it does to the machine.
diff - <(grep -v '^$' "$debian/tests/control") <<'TABLE'
Tests: queue
Depends: printer-driver-wren, zbar-tools
Restrictions: needs-root, isolation-container, allow-stderr
Tests: shop
Depends: printer-driver-wren
Restrictions: needs-root, isolation-container, breaks-testbed, allow-stderr
TABLE
for name in queue shop; do [[ -x $debian/tests/$name ]] || die "debian/tests/$name cannot be run"; done
[[ -x $debian/rules ]] || die "debian/rules cannot be run"
