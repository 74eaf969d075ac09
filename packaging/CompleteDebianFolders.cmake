# SPDX-License-Identifier: Apache-2.0

# CPack runs this script after it has copied the files of all components and before it packs them.
# Adds the files that Debian requires in each package: the licence and the changelog in
# /usr/share/doc/PACKAGE, and compressed man pages.

if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

find_program(gzip gzip REQUIRED)
# -n: without a time, so that the same content gives the same bytes.
set(compress "${gzip}" -9 -n -f)

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(root "${CPACK_TEMPORARY_DIRECTORY}/${component}")
    string(TOUPPER "${component}" prefix)
    set(package "${CPACK_DEBIAN_${prefix}_PACKAGE_NAME}")
    set(documents "${root}/usr/share/doc/${package}")
    configure_file("${CMAKE_CURRENT_LIST_DIR}/copyright" "${documents}/copyright" COPYONLY)
    file(
        WRITE "${documents}/changelog"
        "${package} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
        "  * Release ${CPACK_PACKAGE_VERSION}. CHANGELOG.md of the sources lists the changes.\n\n"
        " -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}\n")
    file(GLOB_RECURSE pages "${root}/usr/share/man/*.1")
    execute_process(COMMAND ${compress} "${documents}/changelog" ${pages}
                    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
