# One target a folder. Every folder lists its own sources; nothing is globbed.

find_package(PkgConfig REQUIRED)
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)

add_library(multiscene_settings INTERFACE)
target_compile_features(multiscene_settings INTERFACE cxx_std_20)
target_compile_options(multiscene_settings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wnon-virtual-dtor -Wshadow
  # GCC 12 takes the inactive members of a moved std::variant for uninitialised ones.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
  # Single- and double-precision formulas give the same bits everywhere.
  -ffp-contract=off)
target_include_directories(multiscene_settings INTERFACE
  ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/RenderingEngine/3DRender)

set_property(GLOBAL PROPERTY MULTISCENE_OBJECTS "")

# multiscene_folder(SOURCES <files...> [PACKAGES <imported targets...>])
# An object library for one folder, named after it: multiscene_platform_net, multiscene_engine_core_Material. What it
# may include is not said here: scripts/check-layers reads the includes.
function(multiscene_folder)
  cmake_parse_arguments(FOLDER "" "" "SOURCES;PACKAGES" ${ARGN})
  file(RELATIVE_PATH target ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE "RenderingEngine/3DRender" "engine" target ${target})
  string(MAKE_C_IDENTIFIER "multiscene_${target}" target)
  add_library(${target} OBJECT ${FOLDER_SOURCES})
  target_link_libraries(${target} PUBLIC multiscene_settings PRIVATE ${FOLDER_PACKAGES})
  set_property(GLOBAL APPEND PROPERTY MULTISCENE_OBJECTS ${target})
  set_property(GLOBAL APPEND PROPERTY MULTISCENE_PACKAGES ${FOLDER_PACKAGES})
endfunction()

# All folders as one library: the program, the tests and the benchmarks link it.
function(multiscene_engine_library)
  get_property(objects GLOBAL PROPERTY MULTISCENE_OBJECTS)
  get_property(packages GLOBAL PROPERTY MULTISCENE_PACKAGES)
  list(REMOVE_DUPLICATES packages)
  add_library(multiscene_all SHARED)
  foreach(object ${objects})
    target_sources(multiscene_all PRIVATE $<TARGET_OBJECTS:${object}>)
  endforeach()
  add_library(multiscene::all ALIAS multiscene_all)
  target_link_libraries(multiscene_all PUBLIC multiscene_settings PRIVATE ${packages})
  set_target_properties(multiscene_all PROPERTIES OUTPUT_NAME multiscene)
  get_property(modules GLOBAL PROPERTY MULTISCENE_MODULES)
  add_dependencies(multiscene_all ${modules})
  install(TARGETS multiscene_all LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  # The library calls its own inline functions, never a test's copy of them, which is not optimised.
  target_link_options(multiscene_all PRIVATE -Wl,-Bsymbolic-functions)
endfunction()

# multiscene_module(<name> SOURCES <files...> PACKAGES <imported targets...>)
# A part of the program that is loaded when it is wanted (platform/base/Module.h), so that its libraries cost no other
# command time and need not be installed. It lies beside the program's library.
function(multiscene_module name)
  cmake_parse_arguments(MODULE "" "" "SOURCES;PACKAGES" ${ARGN})
  add_library(${name} MODULE ${MODULE_SOURCES})
  target_link_libraries(${name} PRIVATE multiscene_settings ${MODULE_PACKAGES} ${CMAKE_DL_LIBS})
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  set_property(GLOBAL APPEND PROPERTY MULTISCENE_MODULES ${name})
endfunction()

# multiscene_test_limits(<test> <seconds>)
# How long a test may take. With a sanitizer it takes several times as long, and whatever that says is a failure, also
# where it is said by a process whose end nobody looks at.
function(multiscene_test_limits name seconds)
  if(CMAKE_CXX_FLAGS MATCHES "sanitize")
    math(EXPR seconds "${seconds} * 6")
    set_tests_properties(${name} PROPERTIES FAIL_REGULAR_EXPRESSION "Sanitizer: ;runtime error: ")
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${seconds})
endfunction()

# multiscene_test(<name> SOURCES <files...> [PACKAGES <imported targets...>])
function(multiscene_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;PACKAGES" ${ARGN})
  multiscene_test_headers()
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE multiscene::all multiscene_test_settings ${TEST_PACKAGES} GTest::gtest_main)
  target_precompile_headers(${name} REUSE_FROM multiscene_test_headers)
  add_test(NAME ${name} COMMAND ${name})
  multiscene_test_limits(${name} 600)
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "MULTISCENE_RESOURCES=${CMAKE_BINARY_DIR}/share/multiscene")
endfunction()

# The settings of all tests, and the headers they share, compiled once. No header of the project is among them, as each
# edit would compile every test anew. In a release build a test's own code is not optimised, which takes a third off the
# time to compile it: what takes time in a test is the engine.
function(multiscene_test_headers)
  if(TARGET multiscene_test_headers)
    return()
  endif()
  add_library(multiscene_test_settings INTERFACE)
  target_link_libraries(multiscene_test_settings INTERFACE multiscene_settings GTest::gtest GTest::gmock)
  target_compile_options(multiscene_test_settings INTERFACE
    $<$<CONFIG:Release>:-O0>
    # Some libraries ask for it, and precompiled headers want it everywhere or nowhere.
    -pthread
    # Lets a compiler cache see which precompiled header a file was compiled with.
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)

  add_library(multiscene_test_headers OBJECT ${PROJECT_SOURCE_DIR}/cmake/TestHeaders.cpp)
  target_link_libraries(multiscene_test_headers PRIVATE multiscene_test_settings)
  # Compiled as the tests are, which are programs.
  set_target_properties(multiscene_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_compile_options(multiscene_test_headers PRIVATE -fPIE)
  target_precompile_headers(multiscene_test_headers PRIVATE
    <gmock/gmock.h> <gtest/gtest.h>
    <algorithm> <array> <cmath> <filesystem> <fstream> <functional> <memory> <string> <thread> <vector>)
endfunction()
