# SPDX-License-Identifier: Apache-2.0

# Headers that nearly every test includes are precompiled once: parsing them takes more than half of
# a test's compile time. Only headers that rarely change are listed.
# Tests spend little time in their own code, so -O1 is sufficient; it saves a third of their compile
# time.
set(trovikTestOptions "$<$<CONFIG:Release>:-O1>")
if(TROVIK_PRECOMPILE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Required for ccache to cache files with precompiled headers.
    list(APPEND trovikTestOptions -fpch-preprocess)
endif()
function(trovik_make_test_headers)
    if(NOT TROVIK_PRECOMPILE OR TARGET TrovikTestHeaders)
        return()
    endif()
    file(WRITE "${PROJECT_BINARY_DIR}/tests/TestHeaders.cpp" "")
    add_library(TrovikTestHeaders OBJECT "${PROJECT_BINARY_DIR}/tests/TestHeaders.cpp")
    # Flags and definitions must match those of the tests.
    target_link_libraries(
        TrovikTestHeaders
        PRIVATE Trovik::Framework
                Trovik::Warnings
                Trovik::Numbers
                GTest::gmock
                GTest::gtest_main)
    target_compile_options(TrovikTestHeaders PRIVATE ${trovikTestOptions})
    target_precompile_headers(
        TrovikTestHeaders
        PRIVATE <QString>
                <gmock/gmock.h>
                <gtest/gtest.h>
                <algorithm>
                <cmath>
                <cstring>
                <filesystem>
                <fstream>
                <functional>
                <map>
                <memory>
                <random>
                <sstream>
                <string>
                <vector>)
endfunction()

# The path of the source tree is compiled into a single object. If it were a definition for every
# test, every compiler command would depend on the checkout, and ccache could not share results.
function(trovik_make_source_folder)
    if(TARGET TrovikTestSourceFolder)
        return()
    endif()
    add_library(TrovikTestSourceFolder STATIC "${PROJECT_SOURCE_DIR}/tests/SourceFolder.cpp")
    target_compile_definitions(
        TrovikTestSourceFolder PRIVATE TROVIK_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    target_include_directories(TrovikTestSourceFolder PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(TrovikTestSourceFolder PRIVATE Trovik::Warnings)
endfunction()

# trovik_add_test(NAME <name> SOURCES <file>... [LIBRARIES <target>...] [LABELS <label>...])
#
# Builds the GoogleTest executable <name> and registers it with ctest.
#
# It runs with TROVIK_PLUGIN_PATH set to the built plug-ins and TROVIK_DATA to the examples
# folder; tests/SourceFolder.h returns the source tree. Label: `unit` if none is given.
function(trovik_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME" "SOURCES;LIBRARIES;LABELS")
    if(NOT arg_NAME OR NOT arg_SOURCES)
        message(FATAL_ERROR "trovik_add_test needs NAME and SOURCES")
    endif()
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "trovik_add_test(${arg_NAME}): unknown ${arg_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT arg_LABELS)
        set(arg_LABELS unit)
    endif()

    add_executable(${arg_NAME} ${arg_SOURCES})
    trovik_make_source_folder()
    target_link_libraries(
        ${arg_NAME}
        PRIVATE ${arg_LIBRARIES}
                TrovikTestSourceFolder
                Trovik::Framework
                Trovik::Warnings
                Trovik::Numbers
                GTest::gmock
                GTest::gtest_main)
    target_compile_options(${arg_NAME} PRIVATE ${trovikTestOptions})
    trovik_make_test_headers()
    if(TARGET TrovikTestHeaders)
        target_precompile_headers(${arg_NAME} REUSE_FROM TrovikTestHeaders)
    endif()
    add_dependencies(${arg_NAME} TrovikModules)
    # Tests do not link the plug-in, but many load it.
    if(TARGET SwiftStroke)
        add_dependencies(${arg_NAME} SwiftStroke)
    endif()

    # One ctest entry per executable, because starting a process costs more than most tests. The
    # output lists failed tests; `--gtest_filter` runs a single test.
    add_test(NAME ${arg_NAME} COMMAND ${arg_NAME})
    set_tests_properties(
        ${arg_NAME}
        PROPERTIES
            LABELS "${arg_LABELS}"
            ENVIRONMENT
            "TROVIK_PLUGIN_PATH=${TROVIK_BUILD_PLUGIN_DIR};TROVIK_DATA=${PROJECT_SOURCE_DIR}/examples")
endfunction()
