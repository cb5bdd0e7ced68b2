# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# Builds result_hash_main.cpp and the stencil sources with one compiler and one
# optimisation level, runs it, and compares its output with that of the build under
# test.
#   cmake -D COMPILER=g++ -D FLAGS=-O3 -D SOURCE_DIR=... -D WORK_DIR=... -D EXPECTED=<program>
#         -P compare_result_hash.cmake
# Debian may install clang++ only under its versioned name, clang++-14.
find_program(compiler_path NAMES ${COMPILER} ${COMPILER}-14 NO_CACHE)
if(NOT compiler_path)
  message("SKIPPED: ${COMPILER} is not installed")
  return()
endif()

file(GLOB sources ${SOURCE_DIR}/stencil/*.cpp)
list(APPEND sources ${SOURCE_DIR}/common/vector_level.cpp
     ${SOURCE_DIR}/tests/stencil/result_hash_main.cpp)
file(MAKE_DIRECTORY ${WORK_DIR})
set(objects)
foreach(source ${sources})
  get_filename_component(name ${source} NAME_WE)
  set(options ${FLAGS})
  # Without optimisation Highway's headers need its library.
  file(STRINGS ${source} kernel REGEX "foreach_target")
  if(kernel AND FLAGS STREQUAL "-O0")
    set(options -O1)
  endif()
  execute_process(
    COMMAND ${compiler_path} -std=c++20 -ffp-contract=off ${options} -I${SOURCE_DIR}
            -c ${source} -o ${WORK_DIR}/${name}.o
    COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND objects ${WORK_DIR}/${name}.o)
endforeach()
execute_process(COMMAND ${compiler_path} ${objects} -o ${WORK_DIR}/result_hash
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${WORK_DIR}/result_hash OUTPUT_VARIABLE actual COMMAND_ERROR_IS_FATAL ANY)
# In a cross build this compares two processors: ${COMPILER} compiles for the build machine.
execute_process(COMMAND ${EMULATOR} ${EXPECTED} OUTPUT_VARIABLE expected COMMAND_ERROR_IS_FATAL ANY)
if(NOT actual MATCHES "^[0-9a-f]+\n$" OR NOT actual STREQUAL expected)
  message(FATAL_ERROR "${COMPILER} ${FLAGS} gives ${actual}instead of ${expected}")
endif()
