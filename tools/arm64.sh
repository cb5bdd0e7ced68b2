# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren test --arm64: the tests that compare bytes, cross-built for 64-bit ARM
# and run under qemu's user mode.

readonly ARM64_PACKAGES="libcups2-dev:arm64 libcupsimage2-dev:arm64 libpng-dev:arm64
                         g++-aarch64-linux-gnu qemu-user-static googletest"

test_arm64() {
  need build chain test
  need_arm64
  test_preset arm64
}

need_arm64() {
  command -v dpkg >/dev/null || fail "$STATUS_SETUP" "the cross build needs Debian's multiarch packages"
  local missing
  mapfile -t missing < <(missing_arm64)
  ((${#missing[@]} > 0)) || return 0
  if ! dpkg --print-foreign-architectures | grep -qx arm64; then
    note "letting dpkg install arm64 packages beside those of this machine"
    as_root dpkg --add-architecture arm64
  fi
  # A library must have the same version for both architectures, so the package lists must be current.
  apt_get update >/dev/null || fail "$STATUS_SETUP" "the package lists cannot be fetched"
  install_debian "${missing[@]}"
}

# Prints the packages that are not installed. A name without an architecture is
# satisfied by any architecture.
missing_arm64() {
  local package
  for package in $ARM64_PACKAGES; do
    dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
      printf '%s\n' "$package"
  done
}
