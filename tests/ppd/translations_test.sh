#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# translations_test.sh FOLDER: checks that every text of the sources in FOLDER is
# translated into every language, except numbers with a unit.
set -euo pipefail

folder=$1
texts=$(sed -nE 's@^ *\*?(Option|Choice|Group|#media|ColorModel) "?[^/"]+/([^"]*)".*@\2@p;
                 s@^ColorModel [^/]+/([A-Za-z]+) .*@\1@p' "$folder"/*.drv "$folder"/*.defs |
  grep -vE '^[0-9]+( mm| ms)?$' | sort -u)
(($(wc -l <<<"$texts") > 60))

failed=0
for language in de es fr ja zh_CN; do
  while IFS= read -r text; do
    grep -A1 -xF "msgid \"$text\"" "$folder/po/$language.po" | grep -qE '^msgstr ".+"' || {
      echo "$language: no translation of '$text'"
      failed=1
    }
  done <<<"$texts"
done
exit $failed
