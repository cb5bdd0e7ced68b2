#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# builds_and_hands_over_test.sh SOURCE_DIR
#
# ./wren in a copy of the checkout, with stand-ins for cmake, dpkg-query, apt-get and
# sudo: what it installs and says, when it builds, and what it calls the program with.
set -euo pipefail

# shellcheck source=tests/support/stand_ins.sh
source "$1/tests/support/stand_ins.sh"
copy_checkout
mkdir elsewhere
ln -s "$tree/wren" "$work/elsewhere/wren"
ln -s ../elsewhere/wren "$work/bin/shop"

# A build leaves a program that prints its arguments, one a line.
stand_in cmake <<SCRIPT
#!/usr/bin/env bash
echo "cmake \$*" >>"$work/log"
case \$1 in
  --preset)
    mkdir -p "$tree/build/release/cli"
    : >"$tree/build/release/build.ninja"
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=$tree" >"$tree/build/release/CMakeCache.txt"
    printf '#!/bin/sh\nprintf "%%s\\\\n" "\$@"\n' >"$tree/build/release/cli/wren"
    chmod +x "$tree/build/release/cli/wren"
    mkdir -p "$tree/build/release/app"
    cp "$tree/build/release/cli/wren" "$tree/build/release/app/wren-printer-app"
    ;;
esac
SCRIPT
# All packages are installed, but for those in the file "missing".
stand_in dpkg-query <<SCRIPT
#!/usr/bin/env bash
for package; do
  [[ \$package == -* ]] || grep -qxF -- "\$package" "$work/missing" || echo "installed \$package"
done
SCRIPT
: >missing

PATH=$work/bin:$PATH

# calls EXPECTED-ARGUMENTS ARGUMENTS...: EXPECTED-ARGUMENTS has one argument a line.
calls() {
  local expected=$1
  shift
  "$@" >said 2>noted || die "$* ended with $?: $(cat noted)"
  diff <(printf '%s\n' "$expected") said >/dev/null || die "$* called the program with: $(cat said)"
}

into=$'--into\n'$tree/build

calls $'print\n'"$into/print"$'\na b.pdf\n-oX=Y\n--paper=80' "$tree/wren" print "a b.pdf" -oX=Y --paper=80
grep -qx 'cmake --preset release' log || die "it was not configured"
grep -qx 'cmake --build --preset release --target wren rastertowren commandtowren wren_ppds wren-preview' log || die "not built: $(cat log)"
[[ ! -s noted ]] || die "a call without a terminal says: $(cat noted)"

# Through links, from another folder.
for link in elsewhere/wren bin/shop; do
  calls $'halftones\n'"$into/halftones"$'\nx.png' "$work/$link" halftones x.png
done
(cd elsewhere && ../bin/shop doctor --json) | diff <(printf 'doctor\n--json\n') - || die "not from another folder"
calls $'preview\nx.prn\n--marks' "$tree/wren" preview x.prn --marks
calls $'devices' "$tree/wren" devices
DESTDIR=$work/system calls $'doctor\n--root\n'"$work/system"$'\ntill' "$tree/wren" doctor till

# The printer application keeps its state below build/, unless told otherwise.
calls $'trial\n--directory\n'"$tree"$'/build/app\n--paper\n58' "$tree/wren" app --paper 58
grep -qx 'cmake --build --preset release --target wren-printer-app' log || die "not built: $(cat log)"
calls $'trial\n--port\n0\n--directory\na b' "$tree/wren" app --port 0 --directory "a b"
calls $'trial\n--directory=x' "$tree/wren" app --directory=x

# Configured once; again where the checkout was moved.
[[ $(grep -c -- '--preset release$' log) -eq 1 ]] || die "configured more than once: $(cat log)"
mkdir other
sed -i "s#$tree#$work/other#" "$tree/build/release/CMakeCache.txt"
touch "$tree/build/release/old"
calls $'devices' "$tree/wren" devices
grep -qx "wren: this checkout was at $work/other before; building again" noted || die "said: $(cat noted)"
[[ ! -e $tree/build/release/old ]] || die "the old build is still there"

# Help of each command, the first time before anything is built.
rm -r "$tree/build/release" log
for command in print preview halftones devices add-queue remove-queue drawer beep cut feed selftest doctor uninstall app test bench package lint fuzz mutate; do
  "$tree/wren" "$command" --help >said 2>/dev/null || die "$command --help ended with $?"
  grep -q "^  $command" said || die "$command --help says: $(cat said)"
  grep -q "Example: ./wren $command" said || die "$command --help has no example: $(cat said)"
done
[[ ! -e log ]] || die "help has built something: $(cat log)"

# Packages: what is missing is named before it is installed; without sudo, the exact line.
printf 'cmake\nghostscript\n' >missing
stand_in apt-get <<SCRIPT
#!/usr/bin/env bash
echo "apt-get \$*" >>"$work/log"
echo "Setting up \${*: -1} (1.0) ..."
SCRIPT
stand_in sudo <<'SCRIPT'
#!/usr/bin/env bash
exec "$@"
SCRIPT
"$tree/wren" devices >said 2>noted
grep -qx 'wren: installing Debian packages: cmake ghostscript' noted || die "said: $(cat noted)"
grep -qx 'apt-get -q -y --no-install-recommends -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=300 install cmake ghostscript' log || die "asked for: $(cat log)"
stand_in apt-get <<'SCRIPT'
#!/usr/bin/env bash
echo "E: no such package"
exit 100
SCRIPT
status=0
"$tree/wren" devices >said 2>noted || status=$?
((status == 4)) || die "status $status"
grep -q 'E: ' noted || die "the reason is missing: $(cat noted)"
# A PATH without sudo: of everything but it.
user=()
((EUID != 0)) || user=(setpriv --reuid 65534 --regid 65534 --clear-groups)
if [[ -z ${user[*]} ]] || command -v setpriv >/dev/null; then
  mkdir tools
  for program in bash env dirname readlink sed awk sort comm grep cat mktemp; do
    ln -s "$(command -v "$program")" tools/
  done
  rm bin/sudo
  chmod 0755 "$work"
  status=0
  "${user[@]}" env "PATH=$work/bin:$work/tools" "$tree/wren" devices >said 2>noted || status=$?
  ((status == 4)) || die "status $status without sudo"
  grep -qF 'call as root: apt-get install --no-install-recommends cmake ghostscript' noted || die "said: $(cat noted)"
fi

# On a terminal the counter of ninja is shown where there is something to build.
has_work_in() {
  WREN_ROOT=$tree
  # shellcheck source=tools/build.sh
  source "$source_dir/tools/build.sh"
  cd "$tree"
  has_work release wren
}
stand_in ninja <<SCRIPT
#!/bin/sh
[ "\$*" = "-C build/release -n wren" ] || exit 1
cat "$work/work"
SCRIPT
echo "[0/1] Linking" >work
(has_work_in) || die "no counter is shown"
echo "ninja: no work to do." >work
! (has_work_in) || die "a counter is shown for nothing"

# The test command says which test it is at, and keeps the whole output.
counts_tests() {
  # shellcheck source=tools/say.sh
  source "$source_dir/tools/say.sh"
  # shellcheck source=tools/test.sh
  source "$source_dir/tools/test.sh"
  show_tests tests.log
}
for n in $(seq 205); do printf '%3d/205 Test #%d: Some.Test ....   Passed    0.01 sec\n' "$n" "$n"; done >ctest
(counts_tests) <ctest >said 2>noted
diff <(printf 'wren: test %s of 205\n' 100 200) noted || die "the counter says: $(cat noted)"
cmp ctest tests.log

# Tests that fail are a failure of the command, and what they said is shown.
: >missing
for status in 0 8; do
  stand_in ctest <<SCRIPT
#!/usr/bin/env bash
echo "1/1 Test #1: Some.Test ...."
echo "100% tests passed, so it says"
exit $status
SCRIPT
  stand_in ninja </dev/null
  got=0
  "$tree/wren" test --preset release >said 2>noted || got=$?
  ((got == (status == 0 ? 0 : 1))) || die "test ended with $got where ctest ended with $status: $(cat noted)"
  cat said noted | grep -q '100% tests passed' || die "the output of ctest is not shown: $(cat said noted)"
done
grep -qF "wren: tests failed; the whole log is in $tree/build/release-tests.log" noted || die "said: $(cat noted)"

# A system that is too old is refused before anything is installed.
old_system() {
  # shellcheck source=tools/say.sh
  source "$source_dir/tools/say.sh"
  # shellcheck source=tools/packages.sh
  source "$source_dir/tools/packages.sh"
  refuse_old_system "$work/os-release"
}
for system in 'ID=debian VERSION_ID="11"' 'ID=raspbian VERSION_ID="10"' 'ID=ubuntu VERSION_ID="22.04"'; do
  tr ' ' '\n' <<<"$system" >os-release
  status=0
  (old_system) 2>noted || status=$?
  ((status == 4)) || die "$system ended with $status"
  grep -q 'is too old: Wren needs CMake 3.25' noted || die "said: $(cat noted)"
done
for system in 'ID=debian VERSION_ID="12"' 'ID=debian' 'ID=ubuntu VERSION_ID="24.04"' 'ID=fedora VERSION_ID=9'; do
  tr ' ' '\n' <<<"$system" >os-release
  (old_system) || die "$system is refused"
done
