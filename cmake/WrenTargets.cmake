# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers

# wren_library(<folder> SOURCES <files> [LINKS <targets>])
#
# The one library of a folder, as target wren_<folder> with alias wren::<folder>.
# LINKS are the arrows between folders; they are PUBLIC, so that a header may
# include what its folder links and nothing else. Every header of the folder is
# also compiled alone.
function(wren_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_library(wren_${folder} STATIC ${arg_SOURCES})
  add_library(wren::${folder} ALIAS wren_${folder})
  target_include_directories(wren_${folder} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(wren_${folder} PUBLIC ${arg_LINKS})
  wren_check_headers(${folder} wren_${folder})
endfunction()

# Compiles each header of a folder as a unit of its own.
function(wren_check_headers folder library)
  if(NOT WREN_TESTS)
    return()
  endif()
  file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
       ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  set(units "")
  foreach(header IN LISTS headers)
    string(MAKE_C_IDENTIFIER ${header} stem)
    set(unit ${CMAKE_CURRENT_BINARY_DIR}/header_check/${stem}.cpp)
    file(CONFIGURE OUTPUT ${unit} CONTENT "#include \"${header}\"\n")
    list(APPEND units ${unit})
  endforeach()
  if(units)
    add_library(wren_${folder}_header_check OBJECT ${units})
    target_link_libraries(wren_${folder}_header_check PRIVATE ${library})
  endif()
endfunction()
