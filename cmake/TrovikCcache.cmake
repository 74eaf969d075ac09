# SPDX-License-Identifier: Apache-2.0

# Compiles through ccache where it is found. Paths below the source tree are hashed relative to
# it, so that two checkouts share their results.
if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(TROVIK_CCACHE ccache)
    mark_as_advanced(TROVIK_CCACHE)
    if(TROVIK_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER
            "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
            # Files that use precompiled headers count as the same by what these hold.
            CCACHE_SLOPPINESS=pch_defines,time_macros
            "${TROVIK_CCACHE}")
    endif()
endif()
