#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# build_package.sh: builds an installer package for the Mac below build/macos.
#
# Not yet tried on a Mac. It follows the documented folders: CUPS's own folder is
# read-only on macOS, so the filters are installed below /Library/Printers and the PPDs
# name them by their absolute paths.
#
# Set WREN_SIGN_APPLICATION and WREN_SIGN_INSTALLER to the names of the two
# identities to sign with; without them the package is not signed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
build=$root/build/macos
payload=$build/payload
filters=/Library/Printers/Wren/filter
ppds=/Library/Printers/PPDs/Contents/Resources
version=$(sed -n 's/^project(wren VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")

[[ $(uname) == Darwin ]] || { echo "this builds on a Mac only" >&2; exit 1; }

# A universal binary.
cmake -S "$root" -B "$build/tree" -G Ninja -DCMAKE_BUILD_TYPE=Release -DWREN_TESTS=OFF \
  "-DCMAKE_OSX_ARCHITECTURES=arm64;x86_64" -DCMAKE_OSX_DEPLOYMENT_TARGET=11.0
cmake --build "$build/tree" --target rastertowren commandtowren wren_ppds

rm -rf "$payload"
install -d -m 0755 "$payload$filters" "$payload$ppds"
install -m 0755 "$build"/tree/filter/{rastertowren,commandtowren} "$payload$filters"
for paper in 58 80 112; do
  sed "s#^\(\*cupsFilter2:.* \)\([a-z]*towren\)\"#\1$filters/\2\"#" "$build/tree/ppd/wren$paper.ppd" |
    gzip -9 >"$payload$ppds/Wren $paper mm.gz"
done
chmod 0755 "$payload$ppds"/*

if [[ -n ${WREN_SIGN_APPLICATION:-} ]]; then
  codesign --force --options runtime --timestamp --sign "$WREN_SIGN_APPLICATION" \
    "$payload$filters"/*
fi
# --ownership recommended makes everything root:wheel on installation.
pkgbuild --root "$payload" --identifier org.example.wren --version "$version" \
  --ownership recommended ${WREN_SIGN_INSTALLER:+--sign "$WREN_SIGN_INSTALLER"} \
  "$build/wren-$version.pkg"
echo "$build/wren-$version.pkg"
