# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# cmake -DFILES=<name>=<path>,... -DOUTPUT=... -P embed_files.cmake
#
# Writes a header with the bytes of each file as an array of that name.

set(arrays "")
string(REPLACE "," ";" FILES "${FILES}")
foreach(file IN LISTS FILES)
  string(REGEX MATCH "^([A-Za-z]+)=(.*)$" matched "${file}")
  set(name ${CMAKE_MATCH_1})
  file(READ ${CMAKE_MATCH_2} bytes HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "inline constexpr unsigned char ${name}[] = {${bytes}};\n")
endforeach()

file(WRITE ${OUTPUT} "// Written by app/web/embed_files.cmake.

#pragma once

namespace wren::app::web {

${arrays}
}  // namespace wren::app::web
")
