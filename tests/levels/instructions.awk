# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# awk -f instructions.awk -v build=NAME -v wanted=COUNT LIMITS COUNTS
# awk -f instructions.awk -v build=NAME -v wanted=COUNT -v margin=1.25 /dev/null COUNTS
#
# LIMITS: for each build a line "build NAME", a line "step LEVEL..." and lines "STEP LIMIT...":
# the largest share of the scalar kernel's instructions at each level. COUNTS: lines "LEVEL STEP
# INSTRUCTIONS-PER-PIXEL", `wanted` of them. Prints the shares; exit status 1 if one is above its
# limit or anything is missing, 77 without limits for the build. With a margin it prints limits
# that are so many times the shares.

/^#/ || NF == 0 { next }

FILENAME == ARGV[1] && $1 == "build" {
  isBuild = $2 == build
  hasLimits = hasLimits || isBuild
  next
}

FILENAME == ARGV[1] && $1 == "step" {
  for (i = 2; i <= NF; i++) column[i] = $i
  next
}

FILENAME == ARGV[1] {
  if (isBuild) for (i = 2; i <= NF; i++) limit[$1, column[i]] = $i
  next
}

{
  perPixel[$1, $2] = $3
  if (!($1 in isLevel)) level[++levels] = $1
  if (!($2 in isStep)) step[++steps] = $2
  isLevel[$1] = isStep[$2] = 1
  counted++
}

function fault(text) {
  print "FAILED: " text
  failed = 1
}

function compare(s, l, share) {
  share = perPixel[l, s] / perPixel["scalar", s]
  printf "%-20s %-8s %8.3f of %8.3f per pixel: %.3f", s, l, perPixel[l, s], perPixel["scalar", s], share
  if (!hasLimits) {
    print ""
  } else if (!((s, l) in limit)) {
    print ""
    fault("no limit for " s " at " l)
  } else {
    print ", limit " limit[s, l]
    if (share > limit[s, l]) fault(s " at " l " is above its limit")
  }
}

function check(s, l) {
  if (perPixel[l, s] > 0 && perPixel["scalar", s] > 0) {
    compare(s, l)
  } else {
    fault("no count for " s " at " l)
  }
}

function printLimits() {
  printf "build %s\n%-20s", build, "step"
  for (l = 1; l <= levels; l++) if (level[l] != "scalar") printf " %-6s", level[l]
  for (s = 1; s <= steps; s++) {
    printf "\n%-20s", step[s]
    for (l = 1; l <= levels; l++) {
      if (level[l] != "scalar") {
        printf " %.3f ", margin * perPixel[level[l], step[s]] / perPixel["scalar", step[s]]
      }
    }
  }
  print ""
}

END {
  if (counted != wanted) fault(counted + 0 " of " wanted " counts")
  if (margin > 0 && !failed) {
    printLimits()
    exit
  }
  for (s = 1; s <= steps; s++) {
    for (l = 1; l <= levels; l++) if (level[l] != "scalar") check(step[s], level[l])
  }
  if (!failed && !hasLimits) {
    print "SKIPPED: no limits for " build
    exit 77
  }
  exit failed
}
