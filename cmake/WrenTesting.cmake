# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers

# Debian's GoogleTest is linked with libstdc++. For libc++ and for cross builds it is
# built from source, with the same C++ library as the code under test.
if(WREN_GTEST_FROM_SOURCE)
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK ON)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  foreach(target gtest gtest_main gmock gmock_main)
    target_compile_options(${target} PRIVATE -w)
  endforeach()
  if(NOT TARGET GTest::gmock_main)
    add_library(GTest::gmock_main ALIAS gmock_main)
  endif()
else()
  find_package(GTest REQUIRED)
endif()

include(GoogleTest)

# wren_test(<name> SOURCES <files> [LINKS <targets>] [TIMEOUT <seconds>])
#
# Adds one test program; ctest lists each TEST in it separately.
function(wren_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LINKS")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 5")
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT ${arg_TIMEOUT})
  # At the end of the folder's CMakeLists.txt, when all sources of the target are known.
  cmake_language(EVAL CODE "cmake_language(DEFER CALL wren_add_to_thread_tests ${name})")
endfunction()

# The test programs that start threads. The tsan preset builds these alone.
add_custom_target(wren_thread_tests)

# Adds a test program to wren_thread_tests if one of its sources starts threads.
function(wren_add_to_thread_tests name)
  get_target_property(sources ${name} SOURCES)
  get_target_property(folder ${name} SOURCE_DIR)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${folder})
    file(STRINGS ${source} found REGEX "std::(thread|jthread|async)" LIMIT_COUNT 1)
    if(found)
      add_dependencies(wren_thread_tests ${name})
      return()
    endif()
  endforeach()
endfunction()
