# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren package: builds the Debian package from a copy of the tree, so that
# dpkg-buildpackage leaves no files in the tree itself.

package_command() {
  (($# == 0)) || fail_usage "package has no argument '$1'"
  need build package
  local folder=$WREN_ROOT/build/package log=$WREN_ROOT/build/package.log
  rm -rf "$folder"
  mkdir -p "$folder/wren"
  (cd "$WREN_ROOT" && git ls-files -z --cached --others --exclude-standard |
    tar -c --null --files-from=- --ignore-failed-read) | tar -x -C "$folder/wren"
  if ! (cd "$folder/wren" && DEB_BUILD_OPTIONS=noautodbgsym dpkg-buildpackage -b -us -uc) >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    fail "$STATUS_FAILED" "the package cannot be built; the whole log is in $log"
  fi
  lintian --allow-root --fail-on error "$folder"/*.changes ||
    fail "$STATUS_FAILED" "lintian finds errors in the package"
  say "$(compgen -G "$folder/printer-driver-wren_*.deb")"
}
