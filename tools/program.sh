# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The commands of the program wren (cli/), from a checkout: builds the program and
# replaces this process by it.

# Replaces the root folder for add-queue, doctor and uninstall, as for cmake --install.
readonly SYSTEM_ROOT=${DESTDIR:-}

# hand_over COMMAND [ARGUMENT...]: does not return.
hand_over() {
  local command=$1 program=$WREN_ROOT/build/release/cli/wren places=()
  shift
  if [[ ! -x $program && " $* " == *" --help "* ]]; then
    usage_of "$command"
    note "its options are shown once it is built; any other call builds it"
    exit 0
  fi
  # The renderers are needed where something is printed, the scheduler where there is a queue.
  case $command in
    preview | --version) need build ;;
    *) need build chain ;;
  esac
  build release wren rastertowren commandtowren wren_ppds wren-preview
  case $command in
    print | halftones) places=(--into "$WREN_ROOT/build/$command") ;;
    add-queue | doctor | uninstall) [[ -z $SYSTEM_ROOT ]] || places=(--root "$SYSTEM_ROOT") ;;
  esac
  if [[ $command == add-queue && " $* " != *" --help "* && " $* " != *" --dry-run "* ]]; then
    is_installed || install_here
  fi
  case $command in
    # Their requests and files are for root; print and the others need nobody.
    add-queue | remove-queue | uninstall) run_as_root "$program" "$command" "${places[@]}" "$@" ;;
    *) exec "$program" "$command" "${places[@]}" "$@" ;;
  esac
}

run_as_root() {
  if ((EUID == 0)) || [[ " $* " == *" --help "* || " $* " == *" --dry-run "* ]]; then
    exec "$@"
  fi
  command -v sudo >/dev/null || exec "$@"
  note "calling sudo for: wren ${*:2}"
  exec sudo ${CUPS_SERVER:+"CUPS_SERVER=$CUPS_SERVER"} "$@"
}

cups_serverbin() { cups-config --serverbin 2>/dev/null || echo /usr/lib/cups; }

is_installed() {
  local filters
  filters=$SYSTEM_ROOT$(cups_serverbin)/filter
  [[ -x $filters/rastertowren && -x $filters/commandtowren && -r $SYSTEM_ROOT/usr/share/ppd/wren/wren80.ppd ]]
}

# No package manager knows these files; ./wren uninstall finds them in the list that is left.
install_here() {
  local release=$WREN_ROOT/build/release manifest
  build release
  note "installing Wren without a package (cmake --install build/release); ./wren uninstall removes it"
  as_root env ${DESTDIR:+"DESTDIR=$DESTDIR"} cmake --install "$release" >/dev/null ||
    fail "$STATUS_SETUP" "the installation failed"
  manifest=$SYSTEM_ROOT$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$release/CMakeCache.txt")/share/wren/install_manifest.txt
  as_root mkdir -p "$(dirname "$manifest")"
  as_root install -m 0644 "$release/install_manifest.txt" "$manifest"
}
