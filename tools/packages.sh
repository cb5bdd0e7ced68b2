# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The packages that each command needs, and the only place that installs them.

# Debian packages by purpose. The keys are the arguments of need().
declare -rA DEBIAN_PACKAGES=(
  [build]="cmake ninja-build g++ libc6-dev libcups2-dev libcupsimage2-dev cups-ppdc pkg-config
           libpng-dev libcli11-dev libhwy-dev nlohmann-json3-dev qrencode zint
           libpappl-dev libpango1.0-dev libjpeg-dev libexif-dev libseccomp-dev"
  [chain]="cups cups-client cups-filters ghostscript poppler-utils fonts-dejavu-core"
  [test]="libgtest-dev libgmock-dev imagemagick zbar-tools locales git valgrind qemu-user-static
          cups-ipp-utils zsh avahi-daemon avahi-utils dbus iproute2 zlib1g-dev mkdocs"
  [browser]="chromium chromium-driver python3-selenium"
  [street]="python3 python3-pil qrencode zbar-tools"
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
  [build]="cmake ninja libpng cli11 pkg-config highway nlohmann-json qrencode zint"
  [chain]="ghostscript poppler"
  [test]="googletest imagemagick zbar git mkdocs"
  [browser]=""
  [street]="python pillow qrencode zbar"
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
  refuse_old_system /etc/os-release
  if command -v dpkg-query >/dev/null; then
    need_debian "$@"
  elif [[ $(uname) == Darwin ]]; then
    need_brew "$@"
  else
    note "this is neither Debian nor macOS: install what $* needs yourself (tools/packages.sh)"
  fi
}

# refuse_old_system FILE: ends here on a system whose compiler and CMake are too old. FILE names the
# system as os-release(5) does.
refuse_old_system() {
  local id version
  [[ -r $1 ]] || return 0
  id=$(sed -n 's/^ID="\{0,1\}\([a-z]*\).*/\1/p' "$1")
  version=$(sed -n 's/^VERSION_ID="\{0,1\}\([0-9]*\).*/\1/p' "$1")
  case $id in
    debian | raspbian) ((${version:-99} >= 12)) && return ;;
    ubuntu) ((${version:-99} >= 23)) && return ;;
    *) return 0 ;;
  esac
  fail "$STATUS_SETUP" "$id $version is too old: Wren needs CMake 3.25 and g++ 12, as in Debian 12 or Ubuntu 23.04 or newer"
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
  if ((EUID != 0)) && ! command -v sudo >/dev/null; then
    fail "$STATUS_SETUP" "packages are missing and there is no sudo; call as root: apt-get install --no-install-recommends $*"
  fi
  log=$(mktemp)
  note "installing Debian packages: $*"
  if ! have_package_lists || ! apt_get install "$@" 2>&1 | show_installing "$log"; then
    note "fetching the package lists"
    apt_get update >"$log" 2>&1 || fail_install "$log" "the package lists cannot be fetched" "$@"
    apt_get install "$@" 2>&1 | show_installing "$log" || fail_install "$log" "the packages cannot be installed" "$@"
  fi
  rm -f "$log"
}

# show_installing LOG: copies the output of apt-get to LOG and says which package it is at: in
# one line that is overwritten on a terminal, every 25th package elsewhere.
show_installing() {
  local line count=0
  while IFS= read -r line; do
    printf '%s\n' "$line" >>"$1"
    [[ $line =~ ^Setting\ up\ ([^ ]+) ]] || continue
    count=$((count + 1))
    if [[ -t 2 ]]; then
      printf '\r\033[Kwren: installing, %s: %s' "$count" "${BASH_REMATCH[1]}" >&2
    elif ((count % 25 == 0)); then
      note "installing, $count packages so far"
    fi
  done
  [[ ! -t 2 ]] || ((count == 0)) || printf '\r\033[K' >&2
}

# fail_install LOG WORDS [PACKAGE...]
fail_install() {
  local log=$1 words=$2
  shift 2
  tail -n 5 "$log" >&2
  (($# == 0)) || words+="; by hand: apt-get install --no-install-recommends $*"
  fail "$STATUS_SETUP" "$words; the whole log is in $log"
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
