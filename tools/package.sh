# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren package: builds the Debian package from a copy of the tree, so that
# dpkg-buildpackage leaves no files in the tree itself. For a given release or
# architecture it builds in a bare system of that release (tools/root.sh) and then runs
# the golden jobs with the files of the package, under qemu where this machine
# cannot execute them.

readonly PACKAGE_ARCHITECTURES="amd64 arm64 armhf"

package_command() {
  local release="" arch=""
  read_package_arguments "$@"
  if [[ -z $release$arch ]]; then
    need build package
    package_here
    return
  fi
  release=${release:-$(this_release)} arch=${arch:-$(dpkg --print-architecture)}
  [[ " $ROOT_RELEASES " == *" $release "* ]] ||
    fail_usage "--release wants one of $ROOT_RELEASES, not '$release'"
  [[ " $PACKAGE_ARCHITECTURES " == *" $arch "* ]] ||
    fail_usage "--arch wants one of $PACKAGE_ARCHITECTURES, not '$arch'"
  need build package
  package_in_root "$release" "$arch"
}

# Sets the local variables of its caller: release, arch.
read_package_arguments() {
  while (($#)); do
    case $1 in
      --release) want_value "$@" && release=$2 && shift ;;
      --arch) want_value "$@" && arch=$2 && shift ;;
      *) fail_usage "package has no argument '$1'" ;;
    esac
    shift
  done
}

# Sid calls itself by the name of the next release, but has no version yet.
this_release() {
  if grep -q '^VERSION_ID=' /etc/os-release; then
    sed -n 's/^VERSION_CODENAME=//p' /etc/os-release
  else
    echo sid
  fi
}

package_here() {
  local folder=$WREN_ROOT/build/package log=$WREN_ROOT/build/package.log
  rm -rf "$folder"
  copy_tree "$folder/wren"
  if ! (cd "$folder/wren" && DEB_BUILD_OPTIONS=noautodbgsym dpkg-buildpackage -b -us -uc) >"$log" 2>&1; then
    fail_package "$log"
  fi
  check_package "$folder"
  say_packages "$folder"
}

# say_packages FOLDER: the paths of its packages, one a line.
say_packages() {
  local package
  for package in "$1"/*.deb; do say "$package"; done
}

fail_package() {
  tail -n 20 "$1" >&2
  fail "$STATUS_FAILED" "the package cannot be built; the whole log is in $1"
}

# copy_tree FOLDER: what git knows or would add.
copy_tree() {
  mkdir -p "$1"
  (cd "$WREN_ROOT" && git ls-files -z --cached --others --exclude-standard |
    tar -c --null --files-from=- --ignore-failed-read) | tar -x -C "$1"
}

check_package() {
  lintian --allow-root --fail-on error "$1"/*.changes ||
    fail "$STATUS_FAILED" "lintian finds errors in the package"
}

# package_in_root RELEASE ARCHITECTURE
package_in_root() {
  local release=$1 arch=$2
  local root=$WREN_ROOT/build/roots/$release-package
  local folder=$WREN_ROOT/build/packages/$release/$arch
  local log=$folder.log emulator=""
  rm -rf "$folder"
  mkdir -p "$folder"
  [[ -e $root/ready ]] || { make_root "$release" "$root" && root_file "$root" ready </dev/null; }
  prepare_build "$root" "$arch"
  if ! in_root "$root" sh -c "cd /build/wren && DEB_BUILD_OPTIONS=noautodbgsym dpkg-buildpackage -a $arch -b -us -uc" \
    >"$log" 2>&1 </dev/null; then
    fail_package "$log"
  fi
  cp "$root"/build/*.deb "$root"/build/*.changes "$root"/build/*.buildinfo "$folder"
  check_package "$folder"
  dpkg-deb -x "$folder"/printer-driver-wren_*.deb "$folder/files"
  [[ $arch != armhf ]] || check_no_neon "$folder"/files/usr/lib/cups/filter/*
  if [[ $arch != $(dpkg --print-architecture) ]]; then
    need emulator
    emulator=$(emulator_of "$arch")
  fi
  write_runners "$root" "$arch" "$folder"
  run_programs "$folder"
  say_packages "$folder"
}

# Copies the tree into the system and installs what its debian/control asks for.
prepare_build() {
  local root=$1 arch=$2 own compiler=build-essential
  own=$(dpkg --print-architecture)
  if [[ $arch != "$own" ]]; then
    compiler="crossbuild-essential-$arch qemu-user"
    in_root "$root" dpkg --add-architecture "$arch"
    in_root "$root" apt-get -q -y update >>"$root.log" 2>&1 ||
      fail_install "$root.log" "the package lists cannot be fetched"
  fi
  remove_root "$root/build"
  copy_tree "$WREN_ROOT/build/packages/tree"
  as_root mkdir -p "$root/build"
  as_root mv "$WREN_ROOT/build/packages/tree" "$root/build/wren"
  # shellcheck disable=SC2086 # two names
  install_in_root "$root" $compiler debhelper
  in_root "$root" sh -c "DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends \
    -o Dpkg::Use-Pty=0 build-dep --host-architecture $arch /build/wren" >>"$root.log" 2>&1 </dev/null ||
    fail_install "$root.log" "what the build needs cannot be installed"
}

# Debian's armhf includes processors without NEON, and NEON of ARMv7 flushes small
# numbers to zero, which would change pages.
check_no_neon() {
  ! readelf -A "$@" | grep -q Tag_Advanced_SIMD_arch ||
    fail "$STATUS_FAILED" "a filter has NEON instructions; armhf must run the scalar kernels"
}

# write_runners ROOT ARCHITECTURE FOLDER: for each program of the package a script of
# the same name in FOLDER, which runs it with the libraries of ROOT.
write_runners() {
  local root=$1 arch=$2 folder=$3 libraries loader program
  libraries=$root/usr/lib/$(dpkg-architecture -a "$arch" -q DEB_HOST_MULTIARCH 2>/dev/null)
  loader=$(compgen -G "$libraries/ld-linux*.so.*") || fail "$STATUS_FAILED" "$libraries has no loader"
  for program in "$folder"/files/usr/bin/* "$folder"/files/usr/lib/cups/filter/*; do
    printf '#!/bin/sh\nexec %s%s --library-path %s %s "$@"\n' "${emulator:+$emulator }" "$loader" \
      "$libraries" "$program" >"$folder/${program##*/}"
    chmod +x "$folder/${program##*/}"
  done
}

# run_programs FOLDER: the golden jobs with the package's filter; and one page with its
# PPD, whose paper its wren-preview has to draw.
run_programs() {
  local folder=$1 log=$1/golden.log
  need chain test
  can_mount || fail "$STATUS_SETUP" "the golden jobs need a private spool folder, and nothing can be mounted here"
  build dev golden_test
  if ! WREN_TEST_FILTER=$folder/rastertowren "$WREN_ROOT/build/dev/tests/golden/golden_test" >"$log" 2>&1; then
    grep -E '^\[  FAILED' "$log" | tail -n 20 >&2 || true
    fail "$STATUS_FAILED" "the filter of the package prints other bytes; the whole log is in $log"
  fi
  say "golden jobs with the package${emulator:+ under ${emulator##*/}}: $(sed -n 's/^\[  PASSED  \] //p' "$log")"
  gzip -dc "$WREN_ROOT/tests/print/rasters/receipt-80mm.ras.gz" |
    PPD=$folder/files/usr/share/ppd/wren/wren80.ppd "$folder/rastertowren" 1 user title 1 "" \
      >"$folder/receipt.prn" 2>"$folder/receipt.log" ||
    fail "$STATUS_FAILED" "the filter of the package does not print with its PPD; the whole log is in $folder/receipt.log"
  "$folder/wren-preview" "$folder/receipt.prn" --output "$folder/receipt.png" ||
    fail "$STATUS_FAILED" "wren-preview of the package cannot draw the page"
  [[ $(printf '#CUPS-COMMAND\nOpenDrawer\n' | PPD=$folder/files/usr/share/ppd/wren/wren80.ppd \
    "$folder/commandtowren" 1 user title 1 "" 2>"$folder/command.log" | od -An -tx1) == ' 1b 70 00 32 32' ]] ||
    fail "$STATUS_FAILED" "the filter for commands of the package does not open the drawer; its messages are in $folder/command.log"
}

# Whether the golden jobs can mount a private folder over the spool of CUPS. Where they cannot, they
# would run another build of the filter than that of the package.
can_mount() {
  local as=--mount
  ((EUID == 0)) || as=-rm
  unshare "$as" mount --bind /tmp /var/spool/cups/tmp
}

emulator_of() {
  local cpu=aarch64
  [[ $1 != armhf ]] || cpu=arm
  command -v "qemu-$cpu-static" || command -v "qemu-$cpu" ||
    fail "$STATUS_SETUP" "there is no qemu-$cpu"
}
