# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The packages that each command needs, and the only place that installs them.

# Debian packages by purpose. The keys are the arguments of need().
declare -rA DEBIAN_PACKAGES=(
  [build]="cmake ninja-build g++ libc6-dev libcups2-dev libcupsimage2-dev cups-ppdc pkg-config
           libpng-dev libcli11-dev libhwy-dev nlohmann-json3-dev"
  [chain]="cups cups-client cups-filters ghostscript poppler-utils fonts-dejavu-core"
  [picture]="imagemagick fonts-dejavu-core"
  [test]="libgtest-dev libgmock-dev imagemagick zbar-tools locales git valgrind qemu-user-static"
  [libcxx]="clang libc++-dev libc++abi-dev googletest"
  [coverage]="gcovr"
  [bench]="libbenchmark-dev"
  [lint]="clang-tidy cppcheck shellcheck"
  [fuzz]="clang"
  [package]="build-essential debhelper lintian git"
  [root]="debootstrap util-linux"
  [emulator]="qemu-user-static"
)

# The same by Homebrew's names. macOS already has CUPS.
declare -rA BREW_PACKAGES=(
  [build]="cmake ninja libpng cli11 pkg-config highway nlohmann-json"
  [chain]="ghostscript poppler"
  [picture]="imagemagick"
  [test]="googletest imagemagick zbar git"
  [libcxx]=""
  [coverage]="gcovr"
  [bench]="google-benchmark"
  [lint]="llvm cppcheck shellcheck"
  [fuzz]="llvm"
  [package]=""
  [root]=""
  [emulator]=""
)

# need PURPOSE...: installs the packages for these purposes that are missing.
# Costs one query when none is.
need() {
  if command -v dpkg-query >/dev/null; then
    need_debian "$@"
  elif [[ $(uname) == Darwin ]]; then
    need_brew "$@"
  else
    note "this is neither Debian nor macOS: install what $* needs yourself (tools/packages.sh)"
  fi
}

need_debian() {
  local purpose wanted=() missing=()
  for purpose in "$@"; do
    read -r -d '' -a wanted < <(printf '%s %s\0' "${wanted[*]}" "${DEBIAN_PACKAGES[$purpose]}") || true
  done
  mapfile -t missing < <(missing_debian "${wanted[@]}")
  ((${#missing[@]} == 0)) || install_debian "${missing[@]}"
}

# Prints the named packages that are not installed.
missing_debian() {
  local installed
  installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null |
    sed -n 's/^installed //p') || true
  comm -23 <(printf '%s\n' "$@" | sort -u) <(sort -u <<<"$installed")
}

install_debian() {
  local log
  log=$(mktemp)
  note "installing Debian packages: $*"
  if ! have_package_lists || ! apt_get install "$@" >"$log" 2>&1; then
    note "fetching the package lists"
    apt_get update >"$log" 2>&1 || fail_install "$log" "the package lists cannot be fetched"
    apt_get install "$@" >"$log" 2>&1 || fail_install "$log" "the packages cannot be installed"
  fi
  rm -f "$log"
}

fail_install() {
  tail -n 5 "$1" >&2
  fail "$STATUS_SETUP" "$2; the whole log is in $1"
}

have_package_lists() { compgen -G '/var/lib/apt/lists/*Packages*' >/dev/null; }

# apt_get VERB [PACKAGE...]: runs as root, without questions.
apt_get() {
  local verb=$1
  shift
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends \
    -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=300 "$verb" "$@" </dev/null
}

as_root() {
  if ((EUID == 0)); then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    fail "$STATUS_SETUP" "this needs root, and there is no sudo: $*"
  fi
}

need_brew() {
  command -v brew >/dev/null || fail "$STATUS_SETUP" "Homebrew is missing: install it first"
  local purpose package missing=()
  for purpose in "$@"; do
    for package in ${BREW_PACKAGES[$purpose]}; do
      brew list --versions "$package" >/dev/null || missing+=("$package")
    done
  done
  ((${#missing[@]} == 0)) && return
  note "installing with Homebrew: ${missing[*]}"
  brew install -q "${missing[@]}" >&2 || fail "$STATUS_SETUP" "Homebrew could not install them"
}
