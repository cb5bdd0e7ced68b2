#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# run_queue_test.sh root|user|no-mount PROGRAM FILTER COMMAND-FILTER WREN PPD-FOLDER ROOT [GTEST-ARGUMENT...]
#
# Prepares a folder for a private scheduler and runs the test program there. "user"
# drops root first; "no-mount" also behaves as if mounting were not allowed. The
# debug images of the filter go to a private spool folder.
set -euo pipefail

mode=$1 program=$2 filter=$3 command_filter=$4 wren=$5 ppds=$6 root=$7
shift 7
if [[ $mode == root ]] && ((EUID != 0)); then
  echo "not root: the scheduler cannot be run as root"
  exit 77
fi

if [[ $mode == no-mount ]]; then
  mode=user
  unshare() { return 1; }
fi

# As root, CUPS requires that all users can enter the folders of its filters.
work=$(mktemp -d /tmp/wren-queue.XXXXXX)
trap 'rm -rf "$work"' EXIT
chmod 0755 "$work"
serverbin=$(cups-config --serverbin 2>/dev/null || echo /usr/lib/cups)

prepare_programs() {
  local name
  mkdir -p "$work"/bin/{backend,cgi-bin,daemon,filter,notifier,monitor}
  for name in backend cgi-bin daemon filter notifier monitor; do
    find "$serverbin/$name" -mindepth 1 -maxdepth 1 -exec ln -s -t "$work/bin/$name" {} +
  done
  install -m 0755 "$filter" "$(relocated_filter)" "$work/bin"
  install -m 0755 "$command_filter" "$work/bin"
  install -m 0755 "$program" "$work/bin/queue_test"
  # Only these backends are used; some of the others require root.
  find "$work/bin/backend" -type l ! -name socket ! -name ipp -delete
  # A stand-in that lists one USB printer as connected.
  printf '#!/bin/sh\necho %s\n' "'direct usb://Wren/80?serial=here \"Wren 80\" \"Wren 80\" \"\" \"\"'" >"$work/bin/backend/usb"
  chmod 0755 "$work/bin/backend/usb"
}

# The second build of the filter (tests/relocated_filter).
relocated_filter() { echo "$(dirname "$(dirname "$filter")")/tests/relocated_filter/rastertowren_relocated"; }

# An installed system for wren add-queue and doctor, and the program wren as in a build
# tree: the user of the test may have no access to the real one.
prepare_system() {
  mkdir -p "$work"/system/{etc,var,usr/share/ppd/wren} "$work/system$serverbin/filter" "$work"/program/{cli,ppd}
  install -m 0755 "$filter" "$work/system$serverbin/filter/rastertowren"
  install -m 0755 "$command_filter" "$work/system$serverbin/filter/commandtowren"
  cp "$ppds"/*.ppd "$work/system/usr/share/ppd/wren"
  ln -s "$work/root" "$work/system/etc/cups"
  ln -s "$work/spool" "$work/system/var/spool"
  install -m 0755 "$wren" "$work/program/cli/wren"
  cp "$ppds"/*.ppd "$work/program/ppd"
  cp "$root/tests/queue/wren_queues_test.sh" "$work"
}

prepare_documents() {
  mkdir -p "$work/ppd" "$work/documents"
  cp "$ppds"/*.ppd "$work/ppd"
  find "$root/examples" -maxdepth 1 -type f -exec cp -t "$work/documents" {} +
  (cd "$work/documents" && pdfunite receipt.pdf receipt-58mm.pdf two-pages.pdf)
  PATH=$PATH:/usr/sbin cupsfilter -p "$ppds/wren80.ppd" -i image/png -m application/pdf \
    "$work/documents/photo.png" >"$work/documents/photo.pdf" 2>/dev/null
  page 595 842 "$work/documents/a4.pdf"
  page 500 200 "$work/documents/wide.pdf"
  page 200 14000 "$work/documents/endless.pdf"
  page 200 60 "$work/documents/short.pdf"
}

# page WIDTH LENGTH FILE: a PDF page in points with a frame and a diagonal.
page() {
  gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -dAutoRotatePages=/None -o "$3" -c \
    "<</PageSize [$1 $2]>> setpagedevice 4 setlinewidth 20 20 moveto $1 20 sub 20 lineto
     $1 20 sub $2 20 sub lineto 20 $2 20 sub lineto closepath stroke
     20 20 moveto $1 20 sub $2 20 sub lineto stroke showpage" >/dev/null
}

prepare_folders() {
  mkdir -p "$work"/{root/ppd,cache,state/certs,requests/tmp,temp,keys,log,runs,spool/cups/tmp,home}
  chmod 1777 "$work/runs" "$work/temp" "$work/spool/cups/tmp"
  # Working folder of the relocated filter, which writes its images to "spool" there.
  mkdir "$work/start"
  ln -s "$work/spool/cups/tmp" "$work/start/spool"
  : >"$work/printcap"
}

# A wrapper that stores the input of each run and then executes the real filter in
# the same process, so that the signals of the scheduler reach it.
write_filter() {
  # CUPS leaks an option when it turns print-color-mode or print-quality into a
  # preset; in a build with sanitizers this would end the job.
  local leak_check="export ASAN_OPTIONS=fast_unwind_on_malloc=0 LSAN_OPTIONS=suppressions=$work/leaks:print_suppressions=0"
  echo 'leak:cupsMarkOptions' >"$work/leaks"
  local become="$work/bin/rastertowren"
  case $1 in
    unshare) become="unshare -rm sh -c 'mount --bind $work/spool /var/spool && exec \"\$0\" \"\$@\"' $become" ;;
    relocated) become="env -C $work/start ${become}_relocated" ;;
  esac
  cat >"$work/bin/filter/rastertowren" <<SCRIPT
#!/usr/bin/env bash
$leak_check
run=\$(mktemp -d "$work/runs/\$(date +%s.%N).XXXXXX")
cp "\$PPD" "\$run/ppd"
printf '%s' "\$4" >"\$run/copies"
printf '%s' "\$5" >"\$run/options"
chmod -R a+rwX "\$run"
exec $become "\$@" < <(umask 0 && exec tee "\$run/raster")
SCRIPT
  printf '#!/usr/bin/env bash\n%s\nexec %s "$@"\n' "$leak_check" "$become" >"$work/bin/direct_run"
  printf '#!/usr/bin/env bash\n%s\nexec %s "$@"\n' "$leak_check" "$work/bin/commandtowren" \
    >"$work/bin/filter/commandtowren"
  chmod 0755 "$work/bin/filter/rastertowren" "$work/bin/filter/commandtowren" "$work/bin/direct_run"
}

prepare_programs
prepare_documents
prepare_folders
prepare_system
export HOME=$work/home PATH=$PATH:/usr/sbin LC_ALL=C DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nowhere
unset CUPS_SERVER LPDEST PRINTER

run=("$work/bin/queue_test" "$work" "$mode" "$@")
if ((EUID == 0)) && [[ $mode == user ]]; then
  chown -R nobody "$work"
  run=(setpriv --reuid nobody --regid nogroup --clear-groups "${run[@]}")
fi
if ((EUID == 0)) && unshare -m true 2>/dev/null; then
  write_filter plain
  # shellcheck disable=SC2016
  run=(unshare -m sh -c 'mount --bind "$0" /var/spool && exec "$@"' "$work/spool" "${run[@]}")
elif unshare -rm true 2>/dev/null; then
  write_filter unshare
else
  write_filter relocated
fi
"${run[@]}"
