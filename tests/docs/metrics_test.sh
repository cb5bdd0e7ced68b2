#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# metrics_test.sh ROOT: what examples/monitoring/wren-metrics makes of a report with a finding, and
# that it keeps the last one when there is no report.
set -euo pipefail

root=$1
command -v jq >/dev/null || {
  echo "skipped: there is no jq"
  exit 77
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# pretend STATUS REPORT: the program wren of this test.
pretend() {
  printf '#!/bin/sh\ncat <<"REPORT"\n%s\nREPORT\nexit %s\n' "$2" "$1" >"$work/wren"
  chmod +x "$work/wren"
}

metrics() { PATH=$work:$PATH "$root/examples/monitoring/wren-metrics" "$work"; }

expected='# HELP wren_faults Findings of wren doctor that keep something from printing.
# TYPE wren_faults gauge
wren_faults 1
# HELP wren_queue_findings Findings at a queue, by their state.
# TYPE wren_queue_findings gauge
wren_queue_findings{queue="till",state="ok"} 2
wren_queue_findings{queue="till",state="note"} 0
wren_queue_findings{queue="till",state="bad"} 1
wren_queue_findings{queue="a\"b",state="ok"} 0
wren_queue_findings{queue="a\"b",state="note"} 1
wren_queue_findings{queue="a\"b",state="bad"} 0'

pretend 1 '{"schema": 1, "faults": 1, "checks": [{"state": "ok", "text": "x"}], "queues": [
  {"name": "till", "checks": [{"state": "ok", "text": "a"}, {"state": "ok", "text": "b"}, {"state": "bad", "text": "c"}]},
  {"name": "a\"b", "checks": [{"state": "note", "text": "d"}]}]}'
metrics
diff <(echo "$expected") "$work/wren.prom"

pretend 4 'not a report'
status=0
metrics || status=$?
((status != 0))
diff <(echo "$expected") "$work/wren.prom"
