#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# packages_for_others_test.sh SOURCE_DIR
#
# ./wren package for another release and architecture, in a copy of the checkout with stand-ins for
# everything that makes systems, builds or emulates: the bare system, the build in it, the checks of
# the package, and how each of them ends the command when it fails.
set -euo pipefail

# shellcheck source=tests/support/stand_ins.sh
source "$1/tests/support/stand_ins.sh"
copy_checkout
mkdir -p tree/tests/print/rasters
echo raster | gzip >tree/tests/print/rasters/receipt-80mm.ras.gz

# noting PATH: a program. Its lines, on standard input, can note a call; it fails if the file "failing" holds
# a part of the call.
noting() {
  mkdir -p "$(dirname "$1")"
  {
    cat <<SCRIPT
#!/usr/bin/env bash
set -eu
log=$work/log tree=$tree name=${1##*/}
note() {
  printf '%s\n' "\$*" >>"\$log"
  ! grep -qF -- "\$(cat "$work/failing")" <<<"\$*" || { echo "words of \$name" >&2; exit 9; }
}
SCRIPT
    cat
  } >"$1"
  chmod +x "$1"
}

# The scripts below are expanded by the stand-ins.
# shellcheck disable=SC2016
{
  noting bin/sudo <<<'exec "$@"'
  noting bin/dpkg-query <<<'for package; do [[ $package == -* ]] || echo "installed $package" | tee -a asked; done'
  noting bin/dpkg <<<'echo amd64'
  noting bin/git <<<'find wren -print0'
  noting bin/apt-get <<<'printf "Debian http://mirror/debian/\nOther http://other/\n"'
  noting bin/apt-config <<<$'printf \'Acquire::http::Proxy "http://proxy";\nAcquire::Other "x";\n\''
  noting bin/cmake <<<'note "$name $*"'
  noting bin/lintian <<<'note "$name $*"'
  noting bin/dpkg-architecture <<<'echo "some-$2"'
  noting bin/readelf <<<'note "$name $*"; cat "'"$work"'/attributes"'
  noting bin/unshare <<'SCRIPT'
note "$name $*"
root=$tree/build/roots/trixie-package
case $* in
  *debootstrap*) mkdir -p "$root"/etc/{apt/apt.conf.d,dpkg/dpkg.cfg.d} "$root"/usr/lib/some-{arm64,armhf,amd64}
    touch "$root"/usr/lib/some-{arm64,armhf,amd64}/ld-linux-x.so.2 ;;
  *dpkg-buildpackage*) [[ -e $root/build/wren/wren ]]
    touch "$root"/build/{printer-driver-wren_1,wren-printer-app_1}.deb "$root"/build/wren.{changes,buildinfo} ;;
esac
SCRIPT
  noting bin/dpkg-deb <<'SCRIPT'
note "$name $*"
mkdir -p "$3"/usr/bin "$3"/usr/lib/cups/filter
for program in bin/wren-preview lib/cups/filter/rastertowren lib/cups/filter/commandtowren; do
  printf '#!/bin/sh\n' >"$3/usr/$program"
done
SCRIPT
  # As the emulator and as a loader: prints what the program would.
  for emulator in aarch64 arm; do
    noting "bin/qemu-$emulator-static" <<'SCRIPT'
note "$name $*"
case $4 in
  */commandtowren) printf '\033p\00022' ;;
  */wren-preview) echo picture >"$7" ;;
  *) cat ;;
esac
SCRIPT
  done
  noting tree/build/dev/tests/golden/golden_test <<'SCRIPT'
note "$name with $WREN_TEST_FILTER"
echo "[  PASSED  ] 163 tests."
SCRIPT
}
touch tree/build/dev/build.ninja
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$tree" >tree/build/dev/CMakeCache.txt
: >attributes
echo nothing >failing

# package STATUS ARGUMENT...
package() {
  local expected=$1 got=0
  shift
  : >log
  PATH=$work/bin:$PATH "$tree/wren" package "$@" >said 2>noted </dev/null || got=$?
  ((got == expected)) || die "package $* ended with $got, not $expected: $(cat said noted)"
}

# calls ARGUMENT...: the calls come on standard input.
calls() {
  package 0 "$@"
  diff <(sed "s#^IN #unshare --mount --pid --ipc --uts --fork --kill-child TREE/tools/enter_root TREE/build/roots/trixie-package #") \
    <(sed "s#$tree#TREE#g; s# -rm mount# --mount mount#" log)
}

quiet="apt-get -q -y"
install="env DEBIAN_FRONTEND=noninteractive $quiet --no-install-recommends -o Dpkg::Use-Pty=0 install"
files=TREE/build/packages/trixie/arm64
run="qemu-aarch64-static TREE/build/roots/trixie-package/usr/lib/some-arm64/ld-linux-x.so.2 --library-path TREE/build/roots/trixie-package/usr/lib/some-arm64 $files/files/usr"
build() {
  cat <<TABLE
IN dpkg --add-architecture arm64
IN $quiet update
IN $install crossbuild-essential-arm64 qemu-user debhelper
IN sh -c DEBIAN_FRONTEND=noninteractive $quiet --no-install-recommends     -o Dpkg::Use-Pty=0 build-dep --host-architecture arm64 /build/wren
IN sh -c cd /build/wren && DEB_BUILD_OPTIONS=noautodbgsym dpkg-buildpackage -a arm64 -b -us -uc
lintian --allow-root --fail-on error $files/wren.changes
dpkg-deb -x $files/printer-driver-wren_1.deb $files/files
unshare --mount mount --bind /tmp /var/spool/cups/tmp
cmake --build --preset dev --target golden_test
golden_test with $files/rastertowren
$run/lib/cups/filter/rastertowren 1 user title 1
$run/bin/wren-preview $files/receipt.prn --output $files/receipt.png
$run/lib/cups/filter/commandtowren 1 user title 1
TABLE
}
calls --release trixie --arch arm64 < <(
  echo "unshare --mount debootstrap --variant=minbase --cache-dir=TREE/build/roots/debs trixie TREE/build/roots/trixie-package http://mirror/debian/"
  echo "IN $quiet update"
  build | sed 's/ 1 user title 1$/& /'
)
diff <(printf '%s\n' "words" "golden jobs with the package under qemu-aarch64-static: 163 tests." \
  "$tree/build/packages/trixie/arm64/"{printer-driver-wren_1,wren-printer-app_1}.deb | tail -n +2) said
root=$tree/build/roots/trixie-package
for package in cmake debhelper debootstrap lintian libgtest-dev qemu-user-static; do
  grep -qx "installed $package" asked || die "it does not ask for $package"
done
diff <(cat /etc/resolv.conf) "$root/etc/resolv.conf"
[[ $(cat "$root/etc/apt/apt.conf.d/00wren") == 'Acquire::http::Proxy "http://proxy";' ]] || die "the way to the mirror: $(cat "$root/etc/apt/apt.conf.d/00wren")"
[[ $(cat "$root/etc/dpkg/dpkg.cfg.d/wren") == force-unsafe-io ]] || die "dpkg waits for the disk"
diff <(echo raster) "$tree/build/packages/trixie/arm64/receipt.prn"

# The system stays for the next package; the tree in it is the present one.
touch "$root/build/wren/stray"
calls --release trixie --arch arm64 < <(build | sed 's/ 1 user title 1$/& /')
[[ ! -e $root/build/wren/stray ]] || die "files of the last build are left"

# ends STATUS CALL WORDS: a call that fails.
ends() {
  echo "$2" >failing
  package "$1" --release trixie --arch arm64
  grep -qF -- "$3" noted || die "where '$2' fails it says: $(cat noted)"
  [[ $(tail -n 1 log) == *"$2"* ]] || die "it goes on after $2: $(tail -n 1 log)"
  echo nothing >failing
}
ends 4 "$quiet update" "wren: the package lists cannot be fetched; the whole log is in $root.log"
ends 4 "$install" "wren: the packages cannot be installed in $root; the whole log is in $root.log"
ends 4 "build-dep" "wren: what the build needs cannot be installed; the whole log is in $root.log"
ends 1 "dpkg-buildpackage" "wren: the package cannot be built; the whole log is in $tree/build/packages/trixie/arm64.log"
ends 1 "lintian" "wren: lintian finds errors in the package"
ends 4 "/var/spool/cups/tmp" "wren: the golden jobs need a private spool folder, and nothing can be mounted here"
ends 1 "golden_test with" "wren: the filter of the package prints other bytes; the whole log is in $tree/build/packages/trixie/arm64/golden.log"
ends 1 "filter/rastertowren" "wren: the filter of the package does not print with its PPD"
ends 1 "wren-preview" "wren: wren-preview of the package cannot draw the page"
rm -r "$root"
ends 4 "debootstrap" "wren: the system cannot be made; the whole log is in $root.log"

# No NEON on armhf.
package 0 --release trixie --arch armhf
grep -qF "readelf -A $tree/build/packages/trixie/armhf/files/usr/lib/cups/filter/commandtowren" log || die "armhf is not looked at: $(cat log)"
grep -q '^qemu-arm-static ' log || die "no emulator for armhf: $(cat log)"
echo "  Tag_Advanced_SIMD_arch: NEONv1" >attributes
package 1 --release trixie --arch armhf
grep -qx "wren: a filter has NEON instructions; armhf must run the scalar kernels" noted || die "NEON: $(cat noted)"
