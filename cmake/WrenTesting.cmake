# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers

# Debian's GoogleTest is built against libstdc++. With libc++ it has to be built
# from its sources, with the same library as the code under test.
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
# One test program; every TEST in it is a test of ctest.
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
endfunction()
