# SPDX-License-Identifier: Apache-2.0

# The test of the built plug-in file. It is a separate executable, since it neither loads the plug-in
# nor links any part of it.
if(TARGET SwiftStroke)
    trovik_add_test(NAME plugin-file-tests SOURCES plugin/BuiltFileTest.cpp LABELS codegen)
    target_compile_definitions(
        plugin-file-tests
        PRIVATE TROVIK_MODULE_FILE="$<TARGET_FILE:SwiftStroke>"
                TROVIK_FRAMEWORK_FILE="$<TARGET_FILE:TrovikFramework>"
                TROVIK_DETAIL_BRUSH_FILE="$<TARGET_FILE:DetailBrush>"
                TROVIK_NM="${CMAKE_NM}"
                TROVIK_READELF="${CMAKE_READELF}")
endif()
