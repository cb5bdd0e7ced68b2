# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# ./wren halftones: prints one document with every halftone type and several
# brightness values, and arranges the results on one contact sheet. The pictures
# are drawn from the printer bytes, one pixel per dot.

readonly LABEL_WIDTH=240 # pixels, left of the pictures

halftones_command() {
  # shellcheck disable=SC2034 # read_print_arguments sets them; not used here
  local verb=halftones file="" paper=80 out="" crop="" raster="" copies=1 job_options=()
  local brightness=(-20 -10 0 10 20)
  read_halftones_arguments "$@"
  check_document "$file"
  local ppd="$WREN_ROOT/build/release/ppd/wren$paper.ppd" stem work
  stem=$(basename -- "$file")
  out=${out:-$WREN_ROOT/build/halftones/${stem%.*}.png}
  keep_document "$file" "$out"
  need build chain picture
  build_for_printing

  mkdir -p "$(dirname -- "$out")"
  check_job_options "$ppd"
  check_brightness "$ppd"
  work=$(mktemp -d "${TMPDIR:-/tmp}/wren-halftones.XXXXXX")
  # shellcheck disable=SC2064
  trap "rm -rf $(printf %q "$work")" EXIT
  make_pages "$work/pages.ras"
  draw_cells
  lay_out_sheet
  say "sheet: $out"
}

# Reads its own options and passes all others to read_print_arguments.
read_halftones_arguments() {
  local others=()
  while (($#)); do
    case $1 in
      --brightness) want_value "$@" && read -r -a brightness <<<"$2" && shift ;;
      --crop) want_value "$@" && crop=$2 && shift ;;
      -n | --raster) fail_usage "halftones has no option '$1'" ;;
      *) others+=("$1") ;;
    esac
    shift
  done
  [[ -z $crop || $crop =~ ^[0-9]+x[0-9]+\+[0-9]+\+[0-9]+$ ]] ||
    fail_usage "--crop wants WIDTHxHEIGHT+X+Y in dots, not '$crop'"
  ((${#brightness[@]} > 0)) || fail_usage "--brightness wants one number or several in quotes"
  read_print_arguments "${others[@]}"
}

check_brightness() {
  local value
  for value in "${brightness[@]}"; do check_choice "$1" Brightness "$value"; done
}

# CUPS renders the pages once: the halftone type concerns the filter alone.
make_pages() {
  local arguments=(--filter "$WREN_ROOT/build/release/filter/rastertowren" --ppd "$ppd" --quiet
    --type "$(document_type "$file")" --out "$work/chain.prn" --raster "$1") option
  for option in "${job_options[@]}"; do arguments+=(-o "$option"); done
  "$WREN_ROOT/tools/chain" "${arguments[@]}" -- "$file"
}

# The names of all types in the PPD, and the text of a type, which says what it
# prints. The names do not tell.
halftone_types() { sed -n 's/^\*HalftoneType \([A-Za-z]*\)\/.*/\1/p' "$ppd"; }
halftone_text() { sed -n "s/^\*HalftoneType $1\/\([^:]*\):.*/\1/p" "$ppd"; }

draw_cells() {
  local type value
  mkdir -p "$work/spool/cups/tmp"
  printf '%s "$@"\n' "$(spool_command "$WREN_ROOT/build/release/filter/rastertowren" "$work/spool")" \
    >"$work/run"
  for type in $(halftone_types); do
    note "$type: $(halftone_text "$type")"
    for value in "${brightness[@]}"; do draw_cell "$type" "$value"; done
  done
}

draw_cell() {
  local cell="$work/$1_$2" window=() settings="HalftoneType=$1 Brightness=$2"
  PPD=$ppd sh "$work/run" 1 user halftones 1 "${job_options[*]} $settings" "$work/pages.ras" >"$cell.prn" 2>"$cell.log" ||
    fail "$STATUS_FAILED" "the filter failed with $settings: $(tail -n 1 "$cell.log")"
  "$WREN_ROOT/build/release/preview/wren-preview" "$cell.prn" -o "$cell.png" >/dev/null ||
    fail "$STATUS_FAILED" "the printer bytes of $settings cannot be read back whole"
  [[ -z $crop ]] || window=(-crop "$crop" +repage)
  convert "$cell.png" "${window[@]}" -bordercolor '#c8ccd4' -border 1 "$cell.png"
}

lay_out_sheet() {
  local type value rows=() cells height
  label "" "$LABEL_WIDTH" 40 "$work/head_corner.png"
  cells=("$work/head_corner.png")
  for value in "${brightness[@]}"; do
    label "Brightness=$value" "$(cell_size %w "$(halftone_types | head -n 1)" "$value")" 40 "$work/head_$value.png"
    cells+=("$work/head_$value.png")
  done
  add_row head
  for type in $(halftone_types); do
    height=$(cell_size %h "$type" "${brightness[0]}")
    label "$(halftone_text "$type")\n\nHalftoneType=$type" "$LABEL_WIDTH" "$height" "$work/label_$type.png"
    cells=("$work/label_$type.png")
    for value in "${brightness[@]}"; do cells+=("$work/${type}_$value.png"); done
    add_row "$type"
  done
  convert "${rows[@]}" -background white -append -bordercolor white -border 8 -strip \
    -colors 16 PNG8:"$out"
}

cell_size() { identify -format "$1" "$work/$2_$3.png"; }

# label TEXT WIDTH HEIGHT FILE: wrapped text, left-aligned and vertically centred.
label() {
  convert -size "$(($2 - 12))x$3" -background white -fill '#20242c' -font DejaVu-Sans -pointsize 14 \
    -gravity West "caption:${1:- }" -splice 12x0 "$4"
}

add_row() {
  convert "${cells[@]}" -background white -gravity NorthWest -splice 8x0 +append -splice 0x8 "$work/row_$1.png"
  rows+=("$work/row_$1.png")
}
