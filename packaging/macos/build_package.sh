#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# build_package.sh: builds an installer package for the Mac below build/macos.
#
# Not yet tried on a Mac. It follows the documented folders: CUPS's own folder is
# read-only on macOS, so the filter is installed below /Library/Printers and the PPDs
# name it by its absolute path.
#
# Set WREN_SIGN_APPLICATION and WREN_SIGN_INSTALLER to the names of the two
# identities to sign with; without them the package is not signed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
build=$root/build/macos
payload=$build/payload
filter=/Library/Printers/Wren/filter/rastertowren
ppds=/Library/Printers/PPDs/Contents/Resources
version=$(sed -n 's/^project(wren VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")

[[ $(uname) == Darwin ]] || { echo "this builds on a Mac only" >&2; exit 1; }

# A universal binary.
cmake -S "$root" -B "$build/tree" -G Ninja -DCMAKE_BUILD_TYPE=Release -DWREN_TESTS=OFF \
  "-DCMAKE_OSX_ARCHITECTURES=arm64;x86_64" -DCMAKE_OSX_DEPLOYMENT_TARGET=11.0
cmake --build "$build/tree" --target rastertowren wren_ppds

rm -rf "$payload"
install -d -m 0755 "$payload$(dirname "$filter")" "$payload$ppds"
install -m 0755 "$build/tree/filter/rastertowren" "$payload$filter"
for paper in 58 80 112; do
  sed "s#^\(\*cupsFilter2:.* \)rastertowren\"#\1$filter\"#" "$build/tree/ppd/wren$paper.ppd" |
    gzip -9 >"$payload$ppds/Wren $paper mm.gz"
done
chmod 0755 "$payload$ppds"/*

if [[ -n ${WREN_SIGN_APPLICATION:-} ]]; then
  codesign --force --options runtime --timestamp --sign "$WREN_SIGN_APPLICATION" "$payload$filter"
fi
# --ownership recommended makes everything root:wheel on installation.
pkgbuild --root "$payload" --identifier org.example.wren --version "$version" \
  --ownership recommended ${WREN_SIGN_INSTALLER:+--sign "$WREN_SIGN_INSTALLER"} \
  "$build/wren-$version.pkg"
echo "$build/wren-$version.pkg"
