# SPDX-License-Identifier: Apache-2.0
include(TrovikTest)

# trovik_add_studio_test(NAME <name> SOURCES <file>... [DISPLAY])
#
# Makes a GoogleTest executable that links trovik-studio's library and creates a QApplication before
# the tests. With DISPLAY, it runs under Xvfb, which QOpenGLWidget needs; otherwise, on Qt's
# platform `offscreen`. The user's settings and data are read from an empty folder.
function(trovik_add_studio_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "DISPLAY" "NAME" "SOURCES")
    add_executable(${arg_NAME} ${arg_SOURCES} "${PROJECT_SOURCE_DIR}/tests/studio/StudioTestMain.cpp")
    trovik_make_source_folder()
    target_link_libraries(
        ${arg_NAME} PRIVATE TrovikStudio TrovikTestSourceFolder Trovik::Warnings GTest::gmock
                            GTest::gtest)
    target_include_directories(${arg_NAME} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_compile_options(${arg_NAME} PRIVATE "$<$<CONFIG:Release>:-O1>")
    add_dependencies(${arg_NAME} TrovikModules SwiftStroke)
    set(environment
        "TROVIK_PLUGIN_PATH=${TROVIK_BUILD_PLUGIN_DIR}" "TROVIK_DATA=${PROJECT_SOURCE_DIR}/examples"
        "LIBGL_ALWAYS_SOFTWARE=1" "QT_SCALE_FACTOR=1" "QT_STYLE_OVERRIDE=Fusion")
    if(arg_DISPLAY)
        add_test(NAME ${arg_NAME}
                 COMMAND xvfb-run -a -s "-screen 0 1280x960x24" "$<TARGET_FILE:${arg_NAME}>")
        list(APPEND environment "QT_QPA_PLATFORM=xcb")
    else()
        add_test(NAME ${arg_NAME} COMMAND ${arg_NAME})
        list(APPEND environment "QT_QPA_PLATFORM=offscreen")
    endif()
    set_tests_properties(${arg_NAME} PROPERTIES LABELS studio ENVIRONMENT "${environment}")
endfunction()
