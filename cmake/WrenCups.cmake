# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Finds CUPS and defines the target wren::cups (libcups and libcupsimage) and
# WREN_CUPS_SERVERBIN, the folder below which CUPS looks for filter/.
# Debian 12 has no cups.pc and newer versions of CUPS have no cups-config, so both
# are tried.

find_path(WREN_CUPS_INCLUDE_DIR cups/raster.h REQUIRED)
find_library(WREN_CUPS_LIBRARY cups REQUIRED)
find_library(WREN_CUPSIMAGE_LIBRARY cupsimage REQUIRED)

add_library(wren_cups INTERFACE)
add_library(wren::cups ALIAS wren_cups)
target_include_directories(wren_cups SYSTEM INTERFACE ${WREN_CUPS_INCLUDE_DIR})
target_link_libraries(wren_cups INTERFACE ${WREN_CUPSIMAGE_LIBRARY} ${WREN_CUPS_LIBRARY})

if(NOT WREN_CUPS_SERVERBIN)
  set(serverbin "")
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    execute_process(COMMAND ${PKG_CONFIG_EXECUTABLE} --variable=cups_serverbin cups
                    OUTPUT_VARIABLE serverbin OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  find_program(WREN_CUPS_CONFIG cups-config)
  if(NOT serverbin AND WREN_CUPS_CONFIG)
    execute_process(COMMAND ${WREN_CUPS_CONFIG} --serverbin
                    OUTPUT_VARIABLE serverbin OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(NOT serverbin)
    set(serverbin /usr/lib/cups)
  endif()
  set(WREN_CUPS_SERVERBIN ${serverbin} CACHE PATH "CUPS folder that holds filter/ and backend/")
endif()
