# SPDX-License-Identifier: Apache-2.0

# CPack runs this script after it has copied the files of all components and before it packs them.
# Adapts them to Debian's rules:
#
# - the licence and the changelog in /usr/share/doc/PACKAGE
# - compressed man pages
# - scripts that run the system's Python interpreter
# - the exceptions from lintian's checks, with their reasons

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

    # The licence is part of the file `copyright`.
    file(GLOB installed "${root}/usr/share/doc/Trovik/*")
    foreach(file IN LISTS installed)
        cmake_path(GET file FILENAME name)
        if(NOT name STREQUAL "LICENSE")
            configure_file("${file}" "${documents}/${name}" COPYONLY)
        endif()
    endforeach()
    file(REMOVE_RECURSE "${root}/usr/share/doc/Trovik")
    configure_file("${CMAKE_CURRENT_LIST_DIR}/copyright" "${documents}/copyright" COPYONLY)
    file(
        WRITE "${documents}/changelog"
        "${package} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
        "  * Release ${CPACK_PACKAGE_VERSION}. CHANGELOG.md of the sources lists the changes.\n\n"
        " -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}\n")
    file(GLOB_RECURSE pages "${root}/usr/share/man/*.1")
    execute_process(COMMAND ${compress} "${documents}/changelog" ${pages}
                    COMMAND_ERROR_IS_FATAL ANY)

    file(GLOB programs "${root}/usr/bin/*")
    foreach(program IN LISTS programs)
        file(READ "${program}" start LIMIT 22 HEX)
        if(start STREQUAL "23212f7573722f62696e2f656e7620707974686f6e33") # "#!/usr/bin/env python3"
            file(READ "${program}" text)
            string(REPLACE "#!/usr/bin/env python3" "#!/usr/bin/python3" text "${text}")
            file(WRITE "${program}" "${text}")
        endif()
    endforeach()

    set(exceptions "${CMAKE_CURRENT_LIST_DIR}/lintian/${component}")
    if(EXISTS "${exceptions}")
        set(PACKAGE "${package}")
        configure_file("${exceptions}" "${root}/usr/share/lintian/overrides/${package}" @ONLY)
    endif()
endforeach()
