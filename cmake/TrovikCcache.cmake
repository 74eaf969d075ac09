# SPDX-License-Identifier: Apache-2.0

# Compiles with ccache if it is installed. Paths below the source tree are hashed relative to it, so
# that two checkouts share their results.
if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(TROVIK_CCACHE ccache)
    mark_as_advanced(TROVIK_CCACHE)
    if(TROVIK_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER
            "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
            # Compares precompiled headers by their content.
            CCACHE_SLOPPINESS=pch_defines,time_macros
            "${TROVIK_CCACHE}")
    endif()
endif()
