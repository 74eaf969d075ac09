# SPDX-License-Identifier: Apache-2.0

# trovik_add_subdirectories(<dir>...) Adds the given folders that contain a CMakeLists.txt, so that
# a partial checkout, for example one without the command's tests, can still be configured.
function(trovik_add_subdirectories)
    foreach(directory IN LISTS ARGN)
        if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${directory}/CMakeLists.txt")
            add_subdirectory(${directory})
        endif()
    endforeach()
endfunction()
