# SPDX-License-Identifier: Apache-2.0

# `cpack -G DEB` makes one Debian package per install component, `cpack -G TGZ` one archive with
# everything, which works in any folder. `make package` runs both (scripts/make-packages.sh).

set(TROVIK_MAINTAINER "The Trovik authors <packages@trovik.org>"
    CACHE STRING "Name and address of the maintainer in the Debian packages")

set(CPACK_PACKAGE_NAME trovik)
set(CPACK_PACKAGE_VENDOR "The Trovik authors")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
# Each package has its own; CPack would add this one to all of them.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
# Independent of the umask of the shell.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL library development command)
if(TARGET trovik-studio)
    list(APPEND CPACK_COMPONENTS_ALL studio)
endif()
if(TARGET TrovikPython)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/CompleteDebianFolders.cmake")

# --- The archive ---

# One top folder, trovik-VERSION-SYSTEM.
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_SYSTEM_NAME "linux-${CMAKE_SYSTEM_PROCESSOR}")

# --- The Debian packages ---

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TROVIK_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Programs that were built with a version need this version or a newer one with the same SONAME.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# The packages of one build fit only each other: modules and plug-in contain the exact version.
set(sameVersion "(= ${PROJECT_VERSION})")
set(libraryPackage "libtrovik${TROVIK_ABI_VERSION}")

# An extension module works with one minor version of Python.
if(TARGET TrovikPython)
    math(EXPR nextPythonMinor "${Python_VERSION_MINOR} + 1")
    set(pythonVersions
        "python3 (>= 3.${Python_VERSION_MINOR}), python3 (<< 3.${nextPythonMinor})")
endif()

function(trovik_debian_package component name section depends)
    string(TOUPPER "${component}" prefix)
    set(prefix "CPACK_DEBIAN_${prefix}")
    set(${prefix}_PACKAGE_NAME "${name}" PARENT_SCOPE)
    set(${prefix}_FILE_NAME DEB-DEFAULT PARENT_SCOPE)
    set(${prefix}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
    set(${prefix}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    # The first line is the short description.
    list(JOIN ARGN "\n" description)
    set(${prefix}_DESCRIPTION "${description}" PARENT_SCOPE)
endfunction()

trovik_debian_package(
    library ${libraryPackage} libs ""
    "digital sculpting of multiresolution meshes - library and brush engine"
    "Trovik sculpts subdivision meshes of many millions of quads with fifteen tools,"
    "layers, masks, stamps, exact undo and a journal that survives crashes."
    "This package contains the host library and the SwiftStroke brush engine.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/library/triggers")
# The modules and the plug-in have the same paths in all versions, so that only one of these packages
# can be installed; a new one replaces the previous one.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_PROVIDES libtrovik)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONFLICTS libtrovik)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_REPLACES libtrovik)
trovik_debian_package(
    development libtrovik-dev libdevel
    "${libraryPackage} ${sameVersion}, qt6-base-dev, nlohmann-json3-dev"
    "digital sculpting of multiresolution meshes - development files"
    "Trovik sculpts subdivision meshes of many millions of quads with fifteen tools,"
    "layers, masks, stamps, exact undo and a journal that survives crashes."
    "This package contains the headers and the CMake package for applications that"
    "sculpt, and for brush plug-ins.")
trovik_debian_package(
    command trovik graphics "${libraryPackage} ${sameVersion}, python3"
    "digital sculpting of multiresolution meshes - command"
    "Trovik sculpts subdivision meshes of many millions of quads with fifteen tools,"
    "layers, masks, stamps, exact undo and a journal that survives crashes."
    "This package contains the command, which runs stroke scripts, converts, renders"
    "and bakes, and the stamps of the tools.")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "python3-numpy")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SUGGESTS "ffmpeg")
trovik_debian_package(
    studio trovik-studio graphics "${libraryPackage} ${sameVersion}, trovik ${sameVersion}"
    "digital sculpting of multiresolution meshes - desktop application"
    "Trovik sculpts subdivision meshes of many millions of quads with fifteen tools,"
    "layers, masks, stamps, exact undo and a journal that survives crashes."
    "This package contains the desktop application for pen and mouse.")
set(CPACK_DEBIAN_STUDIO_PACKAGE_RECOMMENDS "libgl1-mesa-dri")
trovik_debian_package(
    python python3-trovik python
    "${libraryPackage} ${sameVersion}, trovik ${sameVersion}, python3-numpy, ${pythonVersions}"
    "digital sculpting of multiresolution meshes - Python package"
    "Trovik sculpts subdivision meshes of many millions of quads with fifteen tools,"
    "layers, masks, stamps, exact undo and a journal that survives crashes."
    "This package contains the Python package trovik, which runs all commands and"
    "reads positions and other values as NumPy arrays.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/packaging/python/postinst" "${PROJECT_SOURCE_DIR}/packaging/python/prerm")

include(CPack)
