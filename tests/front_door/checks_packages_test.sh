#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# checks_packages_test.sh SOURCE_DIR
#
# ./wren package in a copy of the checkout, with stand-ins for dpkg-buildpackage and lintian: it
# builds what git knows, ends with the verdict of lintian and names the packages.
set -euo pipefail

# shellcheck source=tests/support/stand_ins.sh
source "$1/tests/support/stand_ins.sh"
copy_checkout

# All packages are installed.
stand_in dpkg-query <<SCRIPT
#!/usr/bin/env bash
for package; do [[ \$package == -* ]] || echo "installed \$package"; done
printf '%s\n' "\$@" >>"$work/asked"
SCRIPT
# All but "stray" belongs to the tree.
stand_in git <<'SCRIPT'
#!/usr/bin/env bash
find . -path ./build -prune -o -type f ! -name stray -print0
SCRIPT
stand_in dpkg-buildpackage <<SCRIPT
#!/usr/bin/env bash
printf '%s\n' "\$* in \$PWD" >"$work/built"
find . -type f | LC_ALL=C sort >"$work/copied"
echo "words of the build"
touch ../wren_1.changes ../one.deb ../two.deb
exit \$(cat "$work/build-status")
SCRIPT
stand_in lintian <<SCRIPT
#!/usr/bin/env bash
printf '%s\n' "\$*" >"$work/checked"
echo "words of lintian"
exit \$(cat "$work/lintian-status")
SCRIPT

# package STATUS BUILD-STATUS LINTIAN-STATUS
package() {
  local got=0
  echo "$2" >build-status
  echo "$3" >lintian-status
  rm -f built checked copied
  PATH=$work/bin:$PATH "$tree/wren" package >said 2>noted || got=$?
  ((got == $1)) || die "it ended with $got, not $1: $(cat said noted)"
}

folder=$tree/build/package
mkdir -p "$folder"
touch "$folder/old.deb" "$tree/stray"
package 0 0 0
[[ $(cat built) == "-b -us -uc in $folder/wren" ]] || die "it builds with: $(cat built)"
diff <(cd "$tree" && find . -path ./build -prune -o -type f ! -name stray -print | LC_ALL=C sort) copied
[[ $(cat checked) == "--allow-root --fail-on error $folder/wren_1.changes" ]] || die "lintian was asked: $(cat checked)"
for package in cmake debhelper lintian; do grep -qx "$package" asked || die "it does not ask for $package"; done
diff <(printf '%s\n' "words of lintian" "$folder/one.deb" "$folder/two.deb") said
[[ ! -s noted ]] || die "it says: $(cat noted)"

package 1 0 2
diff <(echo "words of lintian") said
diff <(echo "wren: lintian finds errors in the package") noted

package 1 2 0
[[ ! -e checked ]] || die "lintian was asked about a package that is not built"
diff <(printf '%s\n' "words of the build" "wren: the package cannot be built; the whole log is in $tree/build/package.log") noted
[[ ! -s said ]] || die "packages are named that are not built: $(cat said)"
