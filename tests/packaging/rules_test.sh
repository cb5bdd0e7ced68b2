#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# rules_test.sh SOURCE_DIR: what debian/rules runs, without running it. Ends with 77 where the tools
# of Debian packages are missing.
set -euo pipefail

rules=$1/debian/rules
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A folder named like a target would be up to date.
cd "$work"
[[ -e /usr/share/dpkg/architecture.mk ]] || exit 77
command -v make >/dev/null || exit 77

# expect TARGET LINE [MAKE-ARGUMENT...]
expect() {
  local target=$1 line=$2 said
  shift 2
  said=$(make --no-print-directory -n -f "$rules" "$target" "$@" 2>&1 | sed 's/ *$//')
  [[ $said == "$line" ]] || { echo "$target: it says '$said', not '$line'"; exit 1; }
}

# value SHELL-WORD: as the commands of the rules see it.
value() { make --no-print-directory -f "$rules" --eval="value: ; @echo \"$1\"" value; }

expect build "dh build --buildsystem=cmake+ninja --builddirectory=build/debian"
expect binary "dh binary --buildsystem=cmake+ninja --builddirectory=build/debian"
# With the address of every function random and every buffer guarded.
# shellcheck disable=SC2016 # a variable of make
hardening=$(value '$$DEB_BUILD_MAINT_OPTIONS')
[[ $hardening == hardening=+all ]] || { echo "the compiler gets '$hardening'"; exit 1; }
# The tests need more than what the package is built with.
expect override_dh_auto_configure "dh_auto_configure -- -DWREN_TESTS=OFF"
# dh runs nothing for an override without a command; make itself would use the rule for all targets.
[[ $(grep -A1 -x 'override_dh_auto_test:' "$rules" | tail -n +2) != $'\t'* ]] || { echo "tests run in the build"; exit 1; }
grep -qx 'override_dh_auto_test:' "$rules" || { echo "nothing keeps dh from running tests"; exit 1; }
# Where another processor is built for, what is built runs under an emulator.
# shellcheck disable=SC2016 # a variable of make
architecture=$(value '$(DEB_HOST_ARCH)')
[[ -n $architecture ]] || { echo "it does not know what it builds for"; exit 1; }
expect override_dh_auto_configure "dh_auto_configure -- -DWREN_TESTS=OFF -DCMAKE_CROSSCOMPILING_EMULATOR=/bin/sh" emulator=/bin/sh
# The emulator is called by the name that the GNU tools give the processor, not by Debian's.
mkdir bin
touch bin/qemu-aarch64 bin/qemu-arm bin/qemu-arm64 bin/qemu-armhf
sed "s#/usr/bin/qemu#$work/bin/qemu#" "$rules" >changed_rules
for pair in arm64:aarch64 armhf:arm; do
  # shellcheck disable=SC2016 # a variable of make
  emulator=$(dpkg-architecture -a"${pair%:*}" -c make --no-print-directory -f changed_rules --eval='value: ; @echo "$(emulator)"' value 2>/dev/null)
  [[ $emulator == "$work/bin/qemu-${pair#*:}" ]] || { echo "for ${pair%:*} it runs '$emulator'"; exit 1; }
done
