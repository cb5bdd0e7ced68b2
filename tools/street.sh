# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren street: tills that print on one machine while things break (tools/street/).

# Does not return.
street_command() {
  need build chain street
  build release
  PYTHONPATH=$WREN_ROOT/tools exec /usr/bin/python3 -B -m street --build "$WREN_ROOT/build/release" "$@"
}
