#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# depends_test.sh SOURCE_DIR: the packages depend on what a document passes on its way and on what
# the programs name as missing, and are built with what a checkout is built with.
set -euo pipefail

root=$1
# shellcheck source=tools/packages.sh
source "$root/tools/packages.sh"

# paragraph FIRST-LINE: of debian/control.
paragraph() { sed -n "/^$1\$/,/^\$/p" "$root/debian/control"; }

# list FIELD: of the paragraph on standard input, without versions.
list() { sed -n "/^$1:/,/^[A-Z]/p" | sed -n 's/^ \([a-z][a-z0-9+.-]*\).*/\1/p' | LC_ALL=C sort; }

depends() { paragraph "Package: $1" | list Depends; }

read -r -a chain <<<"${DEBIAN_PACKAGES[chain]}"
((${#chain[@]} >= 6)) || { echo "the list of the chain is too short: ${chain[*]}"; exit 1; }
diff <(printf '%s\n' "${chain[@]}" | LC_ALL=C sort) <(depends printer-driver-wren)

# "sudo apt install NAME" in the words of the program; fonts for more scripts are advice.
named=$(grep -rhoE 'apt install [a-z-]+' "$root"/cli/*.cpp | sed 's/.* //' | grep -v '^--' | sort -u)
[[ -n $named ]] || { echo "the program names no package"; exit 1; }
while IFS= read -r package; do
  depends printer-driver-wren | grep -qxF -- "$package" || { echo "the program asks for $package, the package does not"; exit 1; }
done <<<"$named"

# The application draws text with the first and PDF with the second; it works without the others.
diff <(printf 'fonts-dejavu-core\npoppler-utils\n') <(depends wren-printer-app)
diff <(printf 'Recommends: avahi-daemon\nSuggests: fonts-noto-cjk\n') \
  <(paragraph "Package: wren-printer-app" | grep -E '^(Recommends|Suggests):')

# The libraries that the programs are linked with are known to the build alone.
for package in printer-driver-wren wren-printer-app; do
  for variable in misc shlibs; do
    # shellcheck disable=SC2016 # a variable of dpkg
    paragraph "Package: $package" | grep -qF ' ${'"$variable"':Depends}' || { echo "$package has no $variable:Depends"; exit 1; }
  done
  paragraph "Package: $package" | grep -qx 'Architecture: any' || { echo "$package is not for any processor"; exit 1; }
done

# g++ and the C library are in every build of a package, which debhelper makes.
read -r -d '' -a build <<<"${DEBIAN_PACKAGES[build]}" || true
diff <(printf '%s\n' debhelper-compat "${build[@]}" | grep -vE '^(g\+\+|libc6-dev)$' | LC_ALL=C sort) \
  <(paragraph "Source: wren" | list Build-Depends)
