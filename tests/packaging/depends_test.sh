#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# depends_test.sh SOURCE_DIR: the package depends on what a document passes on its way, which is
# what a checkout installs before it prints, and on what the program names as missing.
set -euo pipefail

root=$1
# shellcheck source=tools/packages.sh
source "$root/tools/packages.sh"

depends() {
  sed -n '/^Package: printer-driver-wren$/,/^$/p' "$root/debian/control" | sed -n '/^Depends:/,/^[A-Z]/p' | sed -n 's/^ \([a-z][a-z0-9+.-]*\).*/\1/p' | sort
}

read -r -a chain <<<"${DEBIAN_PACKAGES[chain]}"
((${#chain[@]} >= 6)) || { echo "the list of the chain is too short: ${chain[*]}"; exit 1; }
diff <(printf '%s\n' "${chain[@]}" | sort) <(depends)

# "sudo apt install NAME" in the words of the program; fonts for more scripts are advice.
named=$(grep -rhoE 'apt install [a-z-]+' "$root"/cli/*.cpp | sed 's/.* //' | grep -v '^--' | sort -u)
[[ -n $named ]] || { echo "the program names no package"; exit 1; }
while IFS= read -r package; do
  depends | grep -qxF -- "$package" || { echo "the program asks for $package, the package does not"; exit 1; }
done <<<"$named"
