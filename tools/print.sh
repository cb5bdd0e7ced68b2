# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren print: reads the arguments, checks them before anything is installed or
# built, and calls tools/chain.

print_command() {
  local verb=print file="" copies=1 paper=80 out="" raster="" job_options=()
  read_print_arguments "$@"
  check_document "$file"
  local stem ppd="$WREN_ROOT/build/release/ppd/wren$paper.ppd" option
  stem=$(basename -- "$file")
  stem=$WREN_ROOT/build/print/${stem%.*}
  out=${out:-$stem.prn}
  keep_document "$file" "$out" "$(picture_of "$out")" "$raster"
  need build chain
  build_for_printing

  mkdir -p "$WREN_ROOT/build/print"
  check_job_options "$ppd"
  want_debug_images
  local arguments=(--filter "$WREN_ROOT/build/release/filter/rastertowren" --ppd "$ppd"
    --type "$(document_type "$file")" --copies "$copies"
    --out "$out" --images "$stem.images")
  [[ -z $raster ]] || arguments+=(--raster "$raster")
  for option in "${job_options[@]}"; do arguments+=(-o "$option"); done
  "$WREN_ROOT/tools/chain" "${arguments[@]}" -- "$file"
  draw_paper "$out"
}

# The PPDs leave the debug images off; a trial print shows them unless told otherwise.
want_debug_images() {
  printf '%s\n' "${job_options[@]%%=*}" | grep -qix DebugImages || job_options+=(DebugImages=On)
}

# keep_document DOCUMENT PATH...: refuses an output path that is the document itself.
keep_document() {
  local document=$1 path
  shift
  for path in "$@"; do
    [[ ! $path -ef $document ]] || fail_usage "'$path' is the document itself; nothing may be written there"
  done
}

# Builds the filter, its PPDs and the preview; where nothing can be mounted also the
# filter with a relocated spool folder (tools/spool.sh).
build_for_printing() {
  local relocated=()
  can_mount || relocated=(rastertowren_relocated)
  build release rastertowren wren_ppds wren-preview "${relocated[@]}"
}

# Draws the printed paper from the printer bytes, as a picture next to them.
draw_paper() {
  local picture
  picture=$(picture_of "$1")
  "$WREN_ROOT/build/release/preview/wren-preview" "$1" --marks -o "$picture" >/dev/null ||
    fail "$STATUS_FAILED" "the printer bytes cannot be read back whole: $1"
  say "picture: $picture"
}

picture_of() { printf '%s' "${1%.prn}.png"; }

# Sets the local variables of its caller: file, copies, paper, out, raster, job_options.
read_print_arguments() {
  while (($#)); do
    case $1 in
      -n) want_value "$@" && copies=$2 && shift ;;
      -o) want_value "$@" && job_options+=("$2") && shift ;;
      --paper) want_value "$@" && paper=$2 && shift ;;
      --out) want_value "$@" && out=$2 && shift ;;
      --raster) want_value "$@" && raster=$2 && shift ;;
      --) shift && set_document "$@" && return ;;
      -?*) fail_usage "$verb has no option '$1'" ;;
      *) set_document "$1" ;;
    esac
    shift
  done
  [[ -n $file ]] || fail_usage "$verb wants a FILE"
  [[ $copies =~ ^[1-9][0-9]{0,3}$ ]] || fail_usage "-n wants a number of copies from 1 to 9999, not '$copies'"
  [[ $paper =~ ^(58|80|112)$ ]] || fail_usage "--paper wants 58, 80 or 112, not '$paper'"
}

want_value() { (($# >= 2)) || fail_usage "$1 wants a value"; }

set_document() {
  if (($# != 1)) || [[ -n $file ]]; then fail_usage "$verb wants one FILE"; fi
  file=$1
}

check_document() {
  [[ -e $1 ]] || fail "$STATUS_DOCUMENT" "there is no file '$1'"
  [[ -f $1 ]] || fail "$STATUS_DOCUMENT" "'$1' is not a file"
  [[ -r $1 ]] || fail "$STATUS_DOCUMENT" "'$1' cannot be read"
  [[ -s $1 ]] || fail "$STATUS_DOCUMENT" "'$1' is empty"
  document_type "$1" >/dev/null ||
    fail "$STATUS_DOCUMENT" "'$1' is neither PDF, PNG, JPEG nor text"
}

# The MIME type, from the first bytes. A file without control characters is text.
document_type() {
  local head
  head=$(od -An -tx1 -N8 -v -- "$1" | tr -d ' \n')
  case $head in
    25504446*) echo application/pdf ;;
    89504e470d0a1a0a) echo image/png ;;
    ffd8ff*) echo image/jpeg ;;
    *)
      [[ $(LC_ALL=C tr -d '\t\n\v\f\r\040-\176\200-\377' <"$1" | wc -c) -eq 0 ]] || return
      echo text/plain
      ;;
  esac
}

# CUPS silently ignores an unknown option and silently replaces an unknown choice
# by the default, so a typing error would go unnoticed.
check_job_options() {
  local ppd=$1 option name value keyword
  for option in "${job_options[@]}"; do
    [[ $option == ?*=* ]] || fail_usage "-o wants NAME=VALUE, not '$option'"
    name=${option%%=*} value=${option#*=}
    keyword=$(sed -n 's/^\*OpenUI \*\([A-Za-z0-9]*\)[/:].*/\1/p' "$ppd" | grep -ixF -- "$name") || {
      note "'$name' is not an option of this printer; it is passed on to CUPS as it is"
      continue
    }
    [[ $value == Custom.* ]] || check_choice "$ppd" "$keyword" "$value"
  done
}

check_choice() {
  local choices
  choices=$(sed -n "s/^\*$2 \([^/:]*\)[/:].*/\1/p" "$1")
  grep -qixF -- "$3" <<<"$choices" ||
    fail_usage "$2 has no choice '$3'; it has $(paste -sd' ' <<<"$choices")"
}
