# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers

# wren_library(<folder> SOURCES <files> [LINKS <targets>] [EXCLUDE_HEADERS <files>])
#
# The library of a folder: target wren_<folder>, alias wren::<folder>. LINKS are the
# folders that its headers may include; they are PUBLIC, so that a header compiles with these
# and nothing else. Every header of the folder is also compiled alone, except EXCLUDE_HEADERS
# (headers of another target of the folder).
function(wren_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;EXCLUDE_HEADERS")
  add_library(wren_${folder} STATIC ${arg_SOURCES})
  add_library(wren::${folder} ALIAS wren_${folder})
  target_include_directories(wren_${folder} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(wren_${folder} PUBLIC ${arg_LINKS})
  wren_check_headers(${folder} wren_${folder} ${arg_EXCLUDE_HEADERS})
endfunction()

# wren_vector_kernels(<files>)
#
# Sources of the current folder that use Highway. Without optimisation its headers need its
# library, which no program links.
function(wren_vector_kernels)
  set_source_files_properties(${ARGV} PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Debug>:-O1>)
endfunction()

# wren_check_headers(<folder> <library> [<file to leave out>...])
#
# Compiles each header of the current folder as a unit of its own.
function(wren_check_headers folder library)
  # Without tests there is nothing to look for, and ninja has nothing to check in each build.
  if(NOT WREN_TESTS)
    return()
  endif()
  file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
       ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(ARGN)
    list(REMOVE_ITEM headers ${ARGN})
  endif()
  foreach(header IN LISTS headers)
    wren_check_header(${header} ${library})
  endforeach()
endfunction()

# wren_check_header(<file> <library>)
#
# Compiles one header of the current folder as a unit of its own.
function(wren_check_header header library)
  if(NOT WREN_TESTS)
    return()
  endif()
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
             OUTPUT_VARIABLE folder)
  string(MAKE_C_IDENTIFIER ${folder}/${header} stem)
  set(unit ${CMAKE_CURRENT_BINARY_DIR}/header_check/${stem}.cpp)
  file(CONFIGURE OUTPUT ${unit} CONTENT "#include \"${folder}/${header}\"\n")
  set(target ${library}_header_check)
  if(NOT TARGET ${target})
    add_library(${target} OBJECT)
    target_link_libraries(${target} PRIVATE ${library})
  endif()
  target_sources(${target} PRIVATE ${unit})
endfunction()
