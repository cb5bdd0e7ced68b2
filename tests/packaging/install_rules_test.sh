#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# install_rules_test.sh SOURCE_DIR BUILD_DIR CMAKE: the paths and modes of what is installed, and
# the package that each file is in. CUPS refuses a filter that others can write to or that not
# everybody can run, and finds PPDs below /usr/share/ppd alone.
set -euo pipefail

source_dir=$1 build=$2 cmake=$3
serverbin=$(cups-config --serverbin 2>/dev/null || echo /usr/lib/cups)
folders=(filter ppd cli preview)
packages=(printer-driver-wren)
if [[ -e $build/app/cmake_install.cmake ]]; then
  folders+=(app)
  packages+=(wren-printer-app)
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# install_into FOLDER [CMAKE-ARGUMENT...]. The modes have to come from the rules.
install_into() {
  local to=$1 folder
  shift
  for folder in "${folders[@]}"; do
    (umask 077 && DESTDIR=$to "$cmake" -DCMAKE_INSTALL_PREFIX=/usr "$@" -P "$build/$folder/cmake_install.cmake") >"$work/log"
  done
}

# files_of PACKAGE
files_of() {
  if [[ $1 == wren-printer-app ]]; then
    cat <<TABLE
755 /usr/bin/wren-printer-app
644 /usr/share/man/man1/wren-printer-app.1
TABLE
  else
    cat <<TABLE
755 /usr/bin/wren
755 /usr/bin/wren-preview
755 $serverbin/filter/commandtowren
755 $serverbin/filter/rastertowren
644 /usr/share/bash-completion/completions/wren
644 /usr/share/man/man1/wren-preview.1
644 /usr/share/man/man1/wren.1
644 /usr/share/man/man8/commandtowren.8
644 /usr/share/man/man8/rastertowren.8
644 /usr/share/ppd/wren/wren112.ppd
644 /usr/share/ppd/wren/wren58.ppd
644 /usr/share/ppd/wren/wren80.ppd
644 /usr/share/zsh/vendor-completions/_wren
TABLE
  fi
}

all_files() {
  local package
  for package in "${packages[@]}"; do files_of "$package"; done
}

list() { find "$1" -type f -printf '%m /%P\n' | LC_ALL=C sort; }

install_into "$work/root"
diff <(all_files | LC_ALL=C sort) <(list "$work/root")

# The printer application can be installed alone, or left out.
for package in "${packages[@]}"; do
  component=Unspecified
  [[ $package != wren-printer-app ]] || component=app
  install_into "$work/$component" -DCMAKE_INSTALL_COMPONENT=$component
  diff <(files_of "$package" | LC_ALL=C sort) <(list "$work/$component")
done

# As dh_install: each line names a file or a folder, and perhaps another folder for it.
for package in "${packages[@]}"; do
  mkdir "$work/$package"
  while read -r path to; do
    [[ -e $work/root/$path ]] || { echo "$package.install: there is no $path"; exit 1; }
    folder=$work/$package/${to:-$(dirname "$path")}
    mkdir -p "$folder"
    cp -rp "$work/root/$path" "$folder"
  done <"$source_dir/debian/$package.install"
  diff <(files_of "$package" | LC_ALL=C sort) <(list "$work/$package")
done
