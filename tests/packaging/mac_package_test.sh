#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# mac_package_test.sh SOURCE_DIR BUILD_DIR CMAKE: the script of the Mac package, with stand-ins for
# the Mac and its tools. The package holds the filters and the PPDs that the install rules have,
# and each PPD names filters that the package holds.
set -euo pipefail

# shellcheck source=tests/support/stand_ins.sh
source "$1/tests/support/stand_ins.sh"
build=$2 cmake=$3
mkdir -p "$tree/packaging/macos"
cp "$source_dir/packaging/macos/build_package.sh" "$tree/packaging/macos"
cp "$source_dir/CMakeLists.txt" "$tree"

stand_in uname <<'SCRIPT'
#!/bin/sh
echo "${SYSTEM:-Darwin}"
SCRIPT
# A build leaves the programs and PPDs of the targets that it is asked for.
stand_in cmake <<SCRIPT
#!/usr/bin/env bash
printf '%s\n' "\$*" >>"$work/cmake.log"
[[ \$1 == --build ]] || exit 0
for target in "\${@:4}"; do
  if [[ \$target == wren_ppds ]]; then
    mkdir -p "\$2/ppd" && cp "$build"/ppd/*.ppd "\$2/ppd"
  else
    mkdir -p "\$2/filter" && (umask 077 && echo "\$target" >"\$2/filter/\$target")
  fi
done
SCRIPT
for tool in pkgbuild codesign; do
  stand_in "$tool" <<SCRIPT
#!/usr/bin/env bash
printf '%s\n' "\$@" >"$work/$tool.arguments"
SCRIPT
done

# build_it: prints what the script prints.
build_it() { PATH=$work/bin:$PATH "$tree/packaging/macos/build_package.sh"; }

# The stem of the PPD's file and the model in the name that a Mac shows.
installed_files() {
  local folder
  for folder in filter ppd; do
    DESTDIR=$work/root "$cmake" -DCMAKE_INSTALL_PREFIX=/usr -P "$build/$folder/cmake_install.cmake" >"$work/log"
  done
  find "$work/root" -path '*/filter/*' -type f -printf '/Library/Printers/Wren/filter/%f\n'
  find "$work/root" -name '*.ppd' -printf '%f\n' |
    sed -E 's#^wren([0-9]+)\.ppd$#/Library/Printers/PPDs/Contents/Resources/Wren \1 mm.gz#'
}

version=$(sed -n 's/^project(wren VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt")
package=$tree/build/macos/wren-$version.pkg
payload=$tree/build/macos/payload
# Files of an earlier build do not get into the package.
mkdir -p "$payload"
touch "$payload/old"
said=$(build_it)
[[ $said == "$package" ]] || die "it says: $said"
diff <(installed_files | LC_ALL=C sort) <(find "$payload" -type f -printf '/%P\n' | LC_ALL=C sort)
others=$(find "$payload" -type f ! -perm 755 -o -type d -path '*/Library*/*' ! -perm 755)
[[ -z $others ]] || die "not for everybody: $others"

for ppd in "$payload"/Library/Printers/PPDs/Contents/Resources/*; do
  filters=$(gzip -dc "$ppd" | sed -nE 's/^\*cupsFilter2:.* ([^ ]*)"$/\1/p')
  [[ $(wc -l <<<"$filters") -eq 2 ]] || die "$ppd names these filters: $filters"
  while read -r filter; do [[ -x $payload$filter ]] || die "$ppd names $filter"; done <<<"$filters"
  stem=$(basename "$ppd" " mm.gz")
  gzip -dc "$ppd" | sed "s#/Library/Printers/Wren/filter/##" | diff - "$build/ppd/wren${stem#Wren }.ppd"
done

# For both processors, without the tests, for the oldest system that is promised.
grep -qxF -- "-S $tree -B $tree/build/macos/tree -G Ninja -DCMAKE_BUILD_TYPE=Release -DWREN_TESTS=OFF -DCMAKE_OSX_ARCHITECTURES=arm64;x86_64 -DCMAKE_OSX_DEPLOYMENT_TARGET=11.0" "$work/cmake.log" ||
  die "it configures with: $(cat "$work/cmake.log")"
unsigned=(--root "$payload" --identifier org.example.wren --version "$version" --ownership recommended)
diff <(printf '%s\n' "${unsigned[@]}" "$package") "$work/pkgbuild.arguments"
[[ ! -e $work/codesign.arguments ]] || die "it signs without an identity"

WREN_SIGN_APPLICATION="A. Developer" WREN_SIGN_INSTALLER="An Installer" build_it >/dev/null
diff <(printf '%s\n' "${unsigned[@]}" --sign "An Installer" "$package") "$work/pkgbuild.arguments"
diff <(printf '%s\n' --force --options runtime --timestamp --sign "A. Developer" \
  "$payload"/Library/Printers/Wren/filter/{commandtowren,rastertowren}) "$work/codesign.arguments"

# Elsewhere it says so and does nothing; a tool that fails is a failure.
rm "$work/cmake.log"
status=0
SYSTEM=Linux build_it >"$work/out" 2>"$work/err" || status=$?
((status == 1)) || die "status $status on another system"
[[ ! -s $work/out && $(cat "$work/err") == "this builds on a Mac only" ]] || die "it says: $(cat "$work/out" "$work/err")"
[[ ! -e $work/cmake.log ]] || die "it builds on another system"
stand_in pkgbuild <<<$'#!/bin/sh\nexit 1'
! build_it >"$work/out" 2>&1 || die "a package that cannot be built is a success"
