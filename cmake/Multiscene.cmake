# One target a folder. Every folder lists its own sources; nothing is globbed.

find_package(PkgConfig REQUIRED)
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)

add_library(multiscene_settings INTERFACE)
target_compile_features(multiscene_settings INTERFACE cxx_std_20)
target_compile_options(multiscene_settings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wnon-virtual-dtor -Wshadow
  # GCC 12 takes the inactive members of a moved std::variant for uninitialised ones.
  -Wno-maybe-uninitialized
  # Single- and double-precision formulas give the same bits everywhere.
  -ffp-contract=off)
target_include_directories(multiscene_settings INTERFACE
  ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/RenderingEngine/3DRender)

set_property(GLOBAL PROPERTY MULTISCENE_OBJECTS "")

# multiscene_folder(<alias> SOURCES <files...> [PACKAGES <imported targets...>])
# An object library for one folder, with the alias multiscene::<alias>.
function(multiscene_folder alias)
  cmake_parse_arguments(FOLDER "" "" "SOURCES;PACKAGES" ${ARGN})
  set(target "multiscene_${alias}")
  add_library(${target} OBJECT ${FOLDER_SOURCES})
  add_library(multiscene::${alias} ALIAS ${target})
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
endfunction()

# multiscene_test(<name> SOURCES <files...> [PACKAGES <imported targets...>])
function(multiscene_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;PACKAGES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE multiscene::all ${TEST_PACKAGES} GTest::gtest GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600
    ENVIRONMENT "MULTISCENE_RESOURCES=${CMAKE_BINARY_DIR}/share/multiscene")
endfunction()
