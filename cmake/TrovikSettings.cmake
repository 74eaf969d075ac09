# SPDX-License-Identifier: Apache-2.0

# Two interface targets that every target of this tree links privately: what the compiler warns
# of, and how it may treat floating-point numbers.

add_library(TrovikWarnings INTERFACE)
add_library(Trovik::Warnings ALIAS TrovikWarnings)
# Errors are made of these only by CMAKE_COMPILE_WARNING_AS_ERROR (preset `ci`): a newer compiler
# brings newer warnings, and those must not stop who only wants to build.
target_compile_options(
    TrovikWarnings
    INTERFACE -Wall
              -Wextra
              -Wshadow
              -Wconversion
              -Wsign-conversion
              -Wnon-virtual-dtor
              -Wcast-align
              # GCC 12 sees overlaps in plain std::string sums that are not there (bug 105651).
              $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

add_library(TrovikNumbers INTERFACE)
add_library(Trovik::Numbers ALIAS TrovikNumbers)
# The same script gives the same bits on every machine: no fused multiply-add, no reassociation,
# and no -march. The last two flags only drop errno and trap bookkeeping; no result changes by
# them, while square roots become single instructions.
target_compile_options(
    TrovikNumbers
    INTERFACE -ffp-contract=off
              -fno-fast-math
              -fno-math-errno
              -fno-trapping-math)

# Qt's lower-case macros (`emit`, `slots`) would rewrite names in oneTBB's headers and in our own.
add_compile_definitions(QT_NO_KEYWORDS)

# Precompiled headers halve the compile time of most files. Without them (preset `dev`) each file
# shows that it includes what it uses, and clang-tidy can follow.
option(TROVIK_PRECOMPILE "Precompile headers of the library and of the tests" ON)

if(TROVIK_ASSERTS)
    # Comes after the -DNDEBUG of the optimised build types on the command line.
    add_compile_options(-UNDEBUG)
endif()

if(TROVIK_SANITIZE)
    # Set for the whole tree, the plug-in module included: an uninstrumented module would hide the
    # very accesses that go through the host's arrays.
    add_compile_options(
        "-fsanitize=${TROVIK_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options("-fsanitize=${TROVIK_SANITIZE}")
endif()

if(TROVIK_BUILD_FUZZ)
    # What the fuzzers are led by. Their drivers alone link the fuzzer itself.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
