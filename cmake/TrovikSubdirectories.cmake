# SPDX-License-Identifier: Apache-2.0

# trovik_add_subdirectories(<dir>...)
#
# Adds those of the named folders that hold a CMakeLists.txt. A trimmed checkout, say one without
# the tests of the command, so still configures.
function(trovik_add_subdirectories)
    foreach(directory IN LISTS ARGN)
        if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${directory}/CMakeLists.txt")
            add_subdirectory(${directory})
        endif()
    endforeach()
endfunction()
