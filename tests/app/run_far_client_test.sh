#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# run_far_client_test.sh PROGRAM: runs it in a network namespace of its own, where 192.0.2.1 is an
# address of this machine that is not loopback.
set -euo pipefail

prepare='ip link set lo up && ip address add 192.0.2.1/24 dev lo'
if ! unshare -rn sh -c "$prepare" 2>/dev/null; then
  echo "network namespaces are not allowed here"
  exit 77
fi
# shellcheck disable=SC2016
exec unshare -rn sh -c "$prepare"' && exec "$1"' sh "$1"
