# SPDX-License-Identifier: Apache-2.0

# Two interface targets that every target of this tree links privately: the compiler warnings and
# the floating-point flags.

add_library(TrovikWarnings INTERFACE)
add_library(Trovik::Warnings ALIAS TrovikWarnings)
# Warnings are errors only with CMAKE_COMPILE_WARNING_AS_ERROR (preset `ci`): newer compilers have
# new warnings, which must not break the build for users.
target_compile_options(
    TrovikWarnings
    INTERFACE -Wall
              -Wextra
              -Wshadow
              -Wconversion
              -Wsign-conversion
              -Wnon-virtual-dtor
              -Wcast-align
              # GCC 12 reports false overlaps in concatenations of std::string (bug 105651).
              $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

add_library(TrovikNumbers INTERFACE)
add_library(Trovik::Numbers ALIAS TrovikNumbers)
# These flags make results bit-identical on every machine: no fused multiply-add, no reassociation,
# and no -march. The last two flags only disable errno and traps. They do not change results, and
# they let a square root compile to one instruction.
target_compile_options(
    TrovikNumbers
    INTERFACE -ffp-contract=off
              -fno-fast-math
              -fno-math-errno
              -fno-trapping-math)

# Qt's lower-case macros (`emit`, `slots`) would replace names in oneTBB's and in our own headers.
add_compile_definitions(QT_NO_KEYWORDS)

# Precompiled headers halve the compile time of most files. A build without them (preset `dev`)
# checks that each file includes the headers that it uses, and works with clang-tidy.
option(TROVIK_PRECOMPILE "Precompile headers of the library and of the tests" ON)

if(TROVIK_ASSERTS)
    # Comes after the -DNDEBUG of the optimised build types on the command line, and therefore
    # overrides it.
    add_compile_options(-UNDEBUG)
endif()

if(TROVIK_SANITIZE)
    # Applies to the whole tree, including the plug-in: the accesses of an uninstrumented plug-in to
    # the host's arrays would not be checked.
    add_compile_options(
        "-fsanitize=${TROVIK_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options("-fsanitize=${TROVIK_SANITIZE}")
endif()

if(TROVIK_BUILD_FUZZ)
    # Coverage instrumentation that guides the fuzzers. Only the drivers link the fuzzer itself.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
