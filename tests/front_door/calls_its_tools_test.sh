#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# calls_its_tools_test.sh SOURCE_DIR
#
# What the commands of a checkout call, in a copy of it with stand-ins for every program: the
# packages that they ask for, the builds, the programs with their arguments; and how they end when
# one of these fails.
set -euo pipefail

# shellcheck source=tests/support/stand_ins.sh
source "$1/tests/support/stand_ins.sh"
copy_checkout
# shellcheck source=tools/packages.sh
source "$source_dir/tools/packages.sh"
# shellcheck source=tools/package.sh
source "$source_dir/tools/package.sh"

# note_calls PATH [LINE...]: a program that notes how it was called and fails if the file "failing"
# has its name.
note_calls() {
  local path=$1
  shift
  mkdir -p "$(dirname "$path")"
  {
    printf '%s\n' '#!/usr/bin/env bash' "name=${path##*/}" "log=$work/log" "failing=$work/failing"
    # shellcheck disable=SC2016 # of the stand-in
    printf '%s\n' 'note() { printf "%s\n" "$name${*:+ $*}" >>"$log"; }' "${@:-note \"\$@\"}"
    # shellcheck disable=SC2016
    printf '%s\n' 'grep -qxF -- "$name" "$failing" || exit 0' 'echo "words of $name" >&2' 'exit 9'
  } >"$path"
  chmod +x "$path"
}

for program in cmake ctest apt-get; do note_calls "bin/$program"; done
note_calls bin/gcovr
# All packages are installed; those that are asked for are noted in one line.
# shellcheck disable=SC2016
note_calls bin/dpkg-query 'args=(); for arg; do [[ $arg == -* ]] || { args+=("$arg"); echo "installed $arg"; }; done' \
  'echo installed' '((${#args[@]} == 1)) || note "${args[@]}"'
note_calls bin/dpkg 'echo amd64'
# shellcheck disable=SC2016
note_calls bin/sudo 'exec "$@"'
# The first call only asks whether it may.
# shellcheck disable=SC2016
note_calls bin/setarch 'shift 2; [[ $1 == true ]] || { note "$@"; "$@" || exit; }'
# shellcheck disable=SC2016
note_calls bin/ppdc 'note "$@"; touch "$2/epson9.ppd" "$2/escpx.ppd"'
# shellcheck disable=SC2016
note_calls bin/cups-config 'echo "'"$work"'/cups"'
note_calls cups/filter/rastertoepson
note_calls tree/dev/lint
note_calls tree/dev/mutate
note_calls tree/dev/bare_root
note_calls bin/unshare
note_calls tree/tests/queue/run_queue_test.sh
for program in rasters compare kernels print; do note_calls "tree/build/bench/bench/wren-bench-$program"; done
for program in one two; do note_calls "tree/build/fuzz/fuzz/fuzz_$program" 'note "$@"' 'echo "stat::number_of_executed_units: 7" >&2' 'echo "stat::peak_rss_mb: 8" >&2'; done
folders=(common dither bitmap stencil printer job filter app cli escpos preview)
mkdir -p tree/fuzz tree/tests/browser "${folders[@]/#/tree/}"
printf 'wren_fuzz_target(one LINKS x)\nif(WREN_X)\n  wren_fuzz_target(two)\nendif()\n' >tree/fuzz/CMakeLists.txt
cat >tree/tests/browser/pages_test.py <<PYTHON
import sys
open("$work/log", "a").write("pages_test.py " + " ".join(sys.argv[1:]) + "\n")
sys.exit("words of pages_test" if "pages_test.py" in open("$work/failing").read().split() else 0)
PYTHON
for preset in dev asan tsan clang coverage fuzz bench release arm64; do
  mkdir -p "tree/build/$preset"
  touch "tree/build/$preset/build.ninja"
  echo "CMAKE_HOME_DIRECTORY:INTERNAL=$tree" >"tree/build/$preset/CMakeCache.txt"
done
: >failing

# wren STATUS ARGUMENT...
wren() {
  local expected=$1 got=0
  shift
  : >log
  PATH=$work/bin:$PATH "$tree/wren" "$@" >said 2>noted </dev/null || got=$?
  ((got == expected)) || die "wren $* ended with $got, not $expected: $(cat said noted)"
}

# calls ARGUMENT...: the calls come on standard input. TREE is the checkout, need PURPOSE... the
# question for its packages.
calls() {
  wren 0 "$@"
  while read -r word rest; do
    if [[ $word == need ]]; then
      # shellcheck disable=SC2086 # purposes
      printf 'dpkg-query%s\n' "$(for purpose in $rest; do for package in ${DEBIAN_PACKAGES[$purpose]}; do printf ' %s' "$package"; done; done)"
    else
      printf '%s\n' "$word${rest:+ $rest}" | sed "s#TREE#$tree#g"
    fi
  done | diff - log || die "wren $* calls other programs"
}

# fails STATUS PROGRAM WORDS ARGUMENT...: when PROGRAM fails, so does the command.
fails() {
  local status=$1 program=$2 words=$3
  shift 3
  echo "$program" >failing
  wren "$status" "$@"
  : >failing
  grep -qF -- "$words" noted || die "wren $* says: $(cat noted)"
  last=$(tail -n 1 log)
  [[ $last == "$program"* ]] || die "wren $* goes on after $program: $last"
}

calls test <<TABLE
need build chain test street lint
cmake --build --preset dev
ctest --preset dev
lint
TABLE
fails 4 cmake "wren: the build failed; the whole log is in $tree/build/dev.log" test
fails 1 ctest "wren: tests failed; the whole log is in $tree/build/dev-tests.log" test
fails 9 lint "words of lint" test

package="unshare --mount --pid --fork true
bare_root $(this_release) --as root -- dev/package_trial --throwaway"
calls test --package <<TABLE
need root
$package
TABLE
fails 4 unshare "wren: a bare system needs namespaces of its own, and there are none here" test --package
fails 9 bare_root "wren: the trial of the packages failed; the whole log is in build/roots/$(this_release)-root-run.log" test --package

fuzz_call="-print_final_stats=1 -timeout=20 -rss_limit_mb=2048 -close_fd_mask=3"
calls test --all <<TABLE
need build chain test lint libcxx coverage street fuzz root
cmake --build --preset dev
ctest --preset dev
cmake --build --preset asan
ctest --preset asan
cmake --build --preset tsan
setarch ctest --preset tsan
ctest --preset tsan
cmake --build --preset clang
ctest --preset clang
cmake --build --preset coverage
ctest --preset coverage
gcovr --root . --print-summary --exclude-throw-branches --exclude-unreachable-branches build/coverage$(printf ' --filter=%s/' "${folders[@]}")
need root
$package
ctest --test-dir TREE/build/dev --build-config street-long --tests-regex ^street_long\. --output-on-failure
cmake --build --preset fuzz --target fuzz_one fuzz_two
fuzz_one -max_total_time=300 $fuzz_call -artifact_prefix=one- TREE/build/fuzz/found/one TREE/fuzz/corpus/one
fuzz_two -max_total_time=300 $fuzz_call -artifact_prefix=two- TREE/build/fuzz/found/two TREE/fuzz/corpus/two
mutate --own --count 2
lint
TABLE
grep -qxF "== two, 300 s" said || die "test --all does not say which fuzzer runs: $(cat said)"
fails 1 fuzz_one "wren: one found something; the whole log is in $tree/build/fuzz/one.log" test --all

calls test --preset asan <<TABLE
need build chain test
cmake --build --preset asan
ctest --preset asan
TABLE
calls test --preset clang <<TABLE
need build chain test libcxx
cmake --build --preset clang
ctest --preset clang
TABLE
calls test --preset coverage <<TABLE
need build chain test coverage
cmake --build --preset coverage
ctest --preset coverage
TABLE
for argument in "--arm64" "--preset arm64"; do
  # shellcheck disable=SC2086 # two words
  calls test $argument <<TABLE
need build chain test
cmake --build --preset arm64
ctest --preset arm64
TABLE
done
if [[ -x /usr/bin/python3 ]]; then
  programs="TREE/build/release/app/wren-printer-app TREE/build/release/preview/wren-preview TREE"
  calls test --browser <<TABLE
need build chain browser
cmake --build --preset release --target wren-printer-app wren-preview
pages_test.py $programs
TABLE
  calls test --browser --pictures <<TABLE
need build chain browser
cmake --build --preset release --target wren-printer-app wren-preview
pages_test.py $programs --pictures TREE/docs/pictures
TABLE
  fails 1 pages_test.py "wren: the pages failed in the browser" test --browser
  fails 1 pages_test.py "wren: no pictures were taken" test --browser --pictures
fi

calls lint <<TABLE
need build lint
lint
TABLE
fails 9 mutate "words of mutate" test --all
calls mutate --list job <<TABLE
need build chain test
mutate --list job
TABLE
fails 9 mutate "words of mutate" mutate

calls fuzz two 5 <<TABLE
need build fuzz
cmake --build --preset fuzz --target fuzz_two
fuzz_two -max_total_time=5 $fuzz_call -artifact_prefix=two- TREE/build/fuzz/found/two TREE/fuzz/corpus/two
TABLE
[[ $(head -n 3 said) == $'== two, 5 s\nexecutions: 7\npeak MiB: 8' ]] || die "fuzz says: $(cat said)"
calls fuzz <<TABLE
need build fuzz
cmake --build --preset fuzz --target fuzz_one fuzz_two
fuzz_one -max_total_time=60 $fuzz_call -artifact_prefix=one- TREE/build/fuzz/found/one TREE/fuzz/corpus/one
fuzz_two -max_total_time=60 $fuzz_call -artifact_prefix=two- TREE/build/fuzz/found/two TREE/fuzz/corpus/two
TABLE
fails 1 fuzz_one "wren: one found something; the whole log is in $tree/build/fuzz/one.log" fuzz
[[ -d tree/build/fuzz/found/two ]] || die "what the fuzzer finds has no place"

# What the inputs reach: those of the corpus, and for "two" those that its fuzzer has found.
for program in one two; do note_calls "tree/build/coverage/fuzz/replay_$program"; done
printf 'one job/a.cpp\ntwo printer job/b.cpp job/c.cpp\n' >tree/build/coverage/fuzz/entry_points
# shellcheck disable=SC2016
note_calls bin/gcovr 'note "$@"' 'echo "lines: 91.7% (11 out of 12)"' 'echo "branches: 5.0% (1 out of 20)"'
rm -rf tree/build/fuzz/found/one
touch tree/build/coverage/job.gcda
summary="--root . --print-summary --output TREE/build/reach"
calls fuzz --reach <<TABLE
need build coverage
cmake --build --preset coverage --target replay_one replay_two
replay_one TREE/fuzz/corpus/one
gcovr $summary/one.txt --filter=job/a.cpp build/coverage/job
replay_two TREE/fuzz/corpus/two TREE/build/fuzz/found/two
gcovr $summary/two.txt --filter=printer --filter=job/b.cpp --filter=job/c.cpp build/coverage/job build/coverage/printer
TABLE
diff - said <<'TABLE'
target                  lines     of       %  entry point
one                        11     12    91.7  job/a.cpp
two                        11     12    91.7  printer job/b.cpp job/c.cpp
TABLE
[[ ! -e tree/build/coverage/job.gcda ]] || die "what other programs reached counts"
calls fuzz --reach one <<TABLE
need build coverage
cmake --build --preset coverage --target replay_one
replay_one TREE/fuzz/corpus/one
gcovr $summary/one.txt --filter=job/a.cpp build/coverage/job
TABLE
fails 1 replay_one "wren: one stopped at an input; the whole log is in $tree/build/reach/one.log" fuzz --reach
fails 1 gcovr "wren: gcovr failed; the whole log is in $tree/build/reach/one.log" fuzz --reach

bin=TREE/build/bench data=TREE/build/bench/data
relocated="--relocated-filter $bin/bench/wren-bench-relocated-filter --relocated-floor $bin/bench/wren-bench-relocated-floor"
compared="--filter $bin/filter/rastertowren --floor $bin/bench/wren-bench-floor $relocated --ppd $bin/ppd/wren112.ppd --data $data"
calls bench <<TABLE
need build chain bench
cmake --build --preset bench
wren-bench-rasters $data
ppdc -d $data /usr/share/cups/drv/sample.drv
wren-bench-compare $compared --pairs 25 --peer rastertoepson $work/cups/filter/rastertoepson $data/epson9.ppd 1
TABLE
diff <(echo "wren: without rastertoescpx: $work/cups/filter/rastertoescpx is not installed") noted
calls bench --levels --pairs 3 --against "$tree/wren" <<TABLE
need build chain bench
cmake --build --preset bench
wren-bench-rasters $data
wren-bench-compare $compared --pairs 3 --at-level $bin/bench/rastertowren_at_level --relocated-at-level $bin/bench/rastertowren_at_level_relocated --against TREE/wren
TABLE
mode=user
((EUID != 0)) || mode=root
printed="$bin/bench/wren-bench-print $bin/filter/rastertowren $bin/filter/commandtowren $bin/cli/wren $bin/ppd TREE"
calls bench --print --pairs 2 <<TABLE
need build chain bench
cmake --build --preset bench --target wren-bench-print
run_queue_test.sh $mode $printed 2
TABLE
note_calls tree/build/bench/app/wren-printer-app
calls bench --print <<TABLE
need build chain bench
cmake --build --preset bench --target wren-bench-print
run_queue_test.sh $mode $printed 25 $bin/app/wren-printer-app
TABLE
calls bench --kernels --some <<TABLE
need build bench
cmake --build --preset bench --target wren-bench-kernels
wren-bench-kernels --some
TABLE
fails 1 wren-bench-compare "wren: the comparison failed" bench
fails 1 wren-bench-rasters "wren: the rasters cannot be written" bench
fails 1 run_queue_test.sh "wren: the print time was not measured" bench --print
fails 9 wren-bench-kernels "words of wren-bench-kernels" bench --kernels

# add-queue installs Wren where it is missing, and leaves the list of its files.
note_calls tree/build/release/cli/wren
echo "CMAKE_INSTALL_PREFIX:PATH=/usr/local" >>tree/build/release/CMakeCache.txt
(umask 077 && echo "/usr/local/bin/wren" >tree/build/release/install_manifest.txt)
export DESTDIR=$work/system
program="need build chain
cmake --build --preset release --target wren rastertowren commandtowren wren_ppds wren-preview"
calls add-queue till usb://x 80 <<TABLE
$program
cmake --build --preset release
cmake --install TREE/build/release
wren add-queue --root $DESTDIR till usb://x 80
TABLE
manifest=$DESTDIR/usr/local/share/wren/install_manifest.txt
diff <(echo "/usr/local/bin/wren") "$manifest"
[[ $(find "$manifest" -perm 644) == "$manifest" ]] || die "not everybody can read the list: $(ls -l "$manifest")"
for argument in --dry-run --help; do
  calls add-queue till usb://x $argument <<TABLE
$program
wren add-queue --root $DESTDIR till usb://x $argument
TABLE
done
mkdir -p "$DESTDIR$work/cups/filter" "$DESTDIR/usr/share/ppd/wren"
for filter in rastertowren commandtowren; do note_calls "$DESTDIR$work/cups/filter/$filter"; done
touch "$DESTDIR/usr/share/ppd/wren/wren80.ppd"
calls add-queue till usb://x 80 <<TABLE
$program
wren add-queue --root $DESTDIR till usb://x 80
TABLE
chmod -x "$DESTDIR$work/cups/filter/commandtowren"
echo cmake >failing
wren 4 add-queue till usb://x 80
