# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren app: the printer application in the foreground, with a software printer behind it.

# Does not return.
app_command() {
  local program=$WREN_ROOT/build/release/app/wren-printer-app state=(--directory "$WREN_ROOT/build/app")
  [[ " $* " != *" --directory"* ]] || state=()
  need build chain
  build release wren-printer-app
  exec "$program" trial "${state[@]}" "$@"
}
