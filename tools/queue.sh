# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren add-queue and remove-queue: queues on the system's own scheduler.

# DESTDIR replaces the root folder, as for cmake --install.
readonly SYSTEM_ROOT=${DESTDIR:-}
readonly INSTALLED_PPDS=$SYSTEM_ROOT/usr/share/ppd/wren

# Keep a receipt upright and at the top of the page; without them CUPS centres a
# short page and rotates a wide one. Spelt as lpadmin and lpoptions print them.
# shellcheck disable=SC2034 # doctor reads it too
readonly QUEUE_DEFAULTS=(position=top pdfAutoRotate=no orientation-requested=3)

add_queue_command() {
  (($# == 2 || $# == 3)) || fail_usage "add-queue wants NAME URI [58|80|112]"
  local name=$1 uri=$2 paper=${3:-80} setting answer taken=yes arguments=()
  [[ $name =~ ^[A-Za-z0-9_][A-Za-z0-9_-]*$ ]] || fail_usage "a queue name has letters, digits, _ and -, unlike '$name'"
  [[ $uri =~ ^[a-z][a-z0-9]*: ]] || fail_usage "a device URI begins with its scheme, such as usb: or socket:, unlike '$uri'"
  [[ $paper =~ ^(58|80|112)$ ]] || fail_usage "the paper is 58, 80 or 112 mm wide, not '$paper'"
  need chain
  is_installed || install_here
  scheduler_runs || fail "$STATUS_FAILED" "the scheduler does not run; start it with: $(start_scheduler_hint)"
  ! lpstat -p "$name" >/dev/null 2>&1 || is_ours "$name" ||
    fail "$STATUS_FAILED" "there is a queue '$name' already, not one of Wren's; take another name, or remove it with: lpadmin -x $name"
  for setting in "${QUEUE_DEFAULTS[@]}"; do
    arguments+=(-o "${setting/=/-default=}")
  done
  answer=$(as_root lpadmin -p "$name" -E -v "$uri" -P "$INSTALLED_PPDS/wren$paper.ppd" "${arguments[@]}" 2>&1) || taken=no
  grep -vE '^$|drivers are deprecated' <<<"$answer" >&2 || true
  [[ $taken == yes ]] || fail "$STATUS_FAILED" "the scheduler did not take the queue '$name'"
}

remove_queue_command() {
  (($# == 1)) || fail_usage "remove-queue wants NAME"
  need chain
  lpstat -p "$1" >/dev/null 2>&1 || fail "$STATUS_FAILED" "there is no queue '$1'"
  is_ours "$1" || fail "$STATUS_FAILED" "the queue '$1' is not one of Wren's; remove it with: lpadmin -x $1"
  as_root lpadmin -x "$1" || fail "$STATUS_FAILED" "the queue '$1' cannot be removed"
}

cups_serverbin() { cups-config --serverbin 2>/dev/null || echo /usr/lib/cups; }

installed_filter() { echo "$SYSTEM_ROOT$(cups_serverbin)/filter/rastertowren"; }

is_installed() { [[ -x $(installed_filter) && -r $INSTALLED_PPDS/wren80.ppd ]]; }

# No package manager knows these files: to be able to remove them again, install the package.
install_here() {
  need build
  build release
  note "installing the filter and its PPDs (cmake --install build/release)"
  as_root env ${DESTDIR:+"DESTDIR=$DESTDIR"} cmake --install "$WREN_ROOT/build/release" >/dev/null ||
    fail "$STATUS_SETUP" "the installation failed"
}

scheduler_runs() { LC_ALL=C lpstat -r 2>/dev/null | grep -q 'is running'; }

start_scheduler_hint() {
  if [[ -d /run/systemd/system ]]; then echo "systemctl start cups"; else echo "service cups start"; fi
}

# The queues that print with a PPD of ours, one per line.
our_queues() {
  local name
  for name in $(LC_ALL=C lpstat -e 2>/dev/null); do
    if is_ours "$name"; then echo "$name"; fi
  done
}

is_ours() { lpoptions -p "$1" 2>/dev/null | grep -q "printer-make-and-model='Wren "; }
