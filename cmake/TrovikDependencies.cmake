# SPDX-License-Identifier: Apache-2.0

# All dependencies are system packages (scripts/install-packages.sh installs them).

find_package(Qt6 6.4 REQUIRED COMPONENTS Core)
if(TROVIK_BUILD_STUDIO)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Widgets OpenGL OpenGLWidgets Svg)
endif()
find_package(Threads REQUIRED)
find_package(TBB REQUIRED COMPONENTS tbb)
find_package(embree 3.12 REQUIRED)
find_package(TinyGLTF REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(valijson REQUIRED)
find_package(CLI11 2.1 REQUIRED)
find_package(zstd REQUIRED)
find_package(meshoptimizer 0.18 REQUIRED)
find_package(PNG REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(LZ4 REQUIRED IMPORTED_TARGET liblz4)
# Found by pkg-config, because Debian's CMake package of OpenImageIO requires the image viewers and
# the Python bindings.
pkg_check_modules(OPENIMAGEIO REQUIRED IMPORTED_TARGET GLOBAL OpenImageIO>=2.4)
add_library(OpenImageIO::OpenImageIO ALIAS PkgConfig::OPENIMAGEIO)
# Found by hand, because Debian's CMake module of OpenVDB requires the static libraries of Boost and
# the development files of Blosc.
find_path(TROVIK_OPENVDB_INCLUDE_DIR openvdb/openvdb.h REQUIRED)
find_library(TROVIK_OPENVDB_LIBRARY openvdb REQUIRED)
find_path(TROVIK_BOOST_INCLUDE_DIR boost/version.hpp REQUIRED)
pkg_check_modules(IMATH REQUIRED IMPORTED_TARGET GLOBAL Imath)
mark_as_advanced(TROVIK_OPENVDB_INCLUDE_DIR TROVIK_OPENVDB_LIBRARY TROVIK_BOOST_INCLUDE_DIR)
add_library(OpenVDB::openvdb UNKNOWN IMPORTED GLOBAL)
set_target_properties(
    OpenVDB::openvdb
    PROPERTIES IMPORTED_LOCATION "${TROVIK_OPENVDB_LIBRARY}"
               INTERFACE_INCLUDE_DIRECTORIES "${TROVIK_OPENVDB_INCLUDE_DIR};${TROVIK_BOOST_INCLUDE_DIR}"
               INTERFACE_LINK_LIBRARIES "TBB::tbb;PkgConfig::IMATH")

# SIMDe is header-only and has no package file; it is used on machines other than x86.
find_path(TROVIK_SIMDE_INCLUDE_DIR simde/x86/sse2.h REQUIRED)
mark_as_advanced(TROVIK_SIMDE_INCLUDE_DIR)
add_library(TrovikSimde INTERFACE)
target_include_directories(
    TrovikSimde SYSTEM INTERFACE "$<BUILD_INTERFACE:${TROVIK_SIMDE_INCLUDE_DIR}>")

if(TROVIK_BUILD_TESTS)
    find_package(GTest 1.12 REQUIRED)
    # Tests compare refined positions with OpenSubdiv; no product links it.
    # Found by hand, because Debian's CMake package refers to static libraries that are missing.
    find_path(TROVIK_OPENSUBDIV_INCLUDE_DIR opensubdiv/far/topologyRefiner.h REQUIRED)
    find_library(TROVIK_OPENSUBDIV_LIBRARY osdCPU REQUIRED)
    mark_as_advanced(TROVIK_OPENSUBDIV_INCLUDE_DIR TROVIK_OPENSUBDIV_LIBRARY)
    add_library(OpenSubdiv::osdCPU UNKNOWN IMPORTED GLOBAL)
    set_target_properties(
        OpenSubdiv::osdCPU
        PROPERTIES IMPORTED_LOCATION "${TROVIK_OPENSUBDIV_LIBRARY}"
                   INTERFACE_INCLUDE_DIRECTORIES "${TROVIK_OPENSUBDIV_INCLUDE_DIR}")
endif()
if(TROVIK_BUILD_BENCH)
    find_package(benchmark 1.7 REQUIRED)
endif()
if(TROVIK_BUILD_PYTHON)
    # The interpreter of the distribution, for which its packages are built: the first one on the
    # path may be another.
    if(NOT DEFINED Python_EXECUTABLE AND EXISTS /usr/bin/python3)
        set(Python_EXECUTABLE /usr/bin/python3)
    endif()
    find_package(Python 3.9 REQUIRED COMPONENTS Interpreter Development.Module)
    set(PYBIND11_FINDPYTHON ON)
    find_package(pybind11 2.10 REQUIRED)
    # The folder of extension modules, such as lib/python3.11/dist-packages, below the prefix.
    execute_process(
        COMMAND
            "${Python_EXECUTABLE}" -c
            "import os, sysconfig; print(os.path.basename(sysconfig.get_path('platlib')))"
        OUTPUT_VARIABLE packagesFolder
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(TROVIK_PYTHON_INSTALL_DIR
        "lib/python${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}/${packagesFolder}"
        CACHE STRING "Folder of the Python package below the prefix")
endif()
