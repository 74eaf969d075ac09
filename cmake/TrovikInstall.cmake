# SPDX-License-Identifier: Apache-2.0

# `cmake --install` installs the libraries, the plug-in, the command, the headers, and a CMake
# package with the targets Trovik::HostContract, Trovik::Framework and Trovik::DetailBrush.
#
# Each file belongs to the component of the package that contains it (TrovikPackages.cmake): library,
# development, command, studio or python.

include(CMakePackageConfigHelpers)

# --- Libraries and headers ---

set(exportedTargets TrovikHostContract TrovikFramework)
if(TARGET DetailBrush)
    list(APPEND exportedTargets DetailBrush)
endif()
install(
    TARGETS ${exportedTargets}
    EXPORT TrovikTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT library)

install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/plugins/SwiftStroke/host"
    DESTINATION "${TROVIK_INSTALL_INCLUDE_DIR}"
    COMPONENT development
    FILES_MATCHING
    PATTERN "*.h")
# tools/check_public_headers.py checks that these include no other headers.
set(publicHeaderList "${PROJECT_SOURCE_DIR}/framework/public_headers.txt")
set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
                                                              "${publicHeaderList}")
file(STRINGS "${publicHeaderList}" publicHeaders)
foreach(header IN LISTS publicHeaders)
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/${header}"
            DESTINATION "${TROVIK_INSTALL_INCLUDE_DIR}/${folder}" COMPONENT development)
endforeach()
if(TARGET DetailBrush)
    install(FILES "${PROJECT_SOURCE_DIR}/plugins/DetailBrush/DetailBrush.h"
            DESTINATION "${TROVIK_INSTALL_INCLUDE_DIR}" COMPONENT development)
endif()

# --- The library's modules, the plug-in and the command ---

get_property(modules GLOBAL PROPERTY TROVIK_MODULES)
install(TARGETS ${modules}
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/${TROVIK_MODULE_DIR}" COMPONENT library)

if(TARGET SwiftStroke)
    install(TARGETS SwiftStroke LIBRARY DESTINATION "${TROVIK_INSTALL_PLUGIN_DIR}" COMPONENT library)
endif()
if(TARGET trovik)
    install(TARGETS trovik RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT command)
    set(completions "${PROJECT_BINARY_DIR}/completion")
    install(FILES "${completions}/trovik"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT command)
    install(FILES "${completions}/_trovik"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT command)
    install(FILES "${completions}/trovik.fish"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT command)
    install(
        PROGRAMS "${PROJECT_SOURCE_DIR}/tools/trovik_trace.py"
        DESTINATION "${CMAKE_INSTALL_BINDIR}"
        COMPONENT command
        RENAME trovik-trace)
endif()
if(TARGET trovik-studio)
    install(TARGETS trovik-studio RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT studio)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/man/trovik-studio.1"
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT studio)
    # Folders that desktop environments search for applications, icons and file types.
    set(desktopFiles "${PROJECT_SOURCE_DIR}/apps/studio/desktop")
    set(studioId org.trovik.Studio)
    install(FILES "${desktopFiles}/${studioId}.desktop"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/applications" COMPONENT studio)
    install(FILES "${desktopFiles}/${studioId}.svg"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps" COMPONENT studio)
    install(FILES "${desktopFiles}/${studioId}.metainfo.xml"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo" COMPONENT studio)
    install(FILES "${desktopFiles}/${studioId}.mime.xml"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages"
            COMPONENT studio
            RENAME ${studioId}.xml)
endif()
install(FILES "${PROJECT_SOURCE_DIR}/docs/man/trovik.1" "${PROJECT_SOURCE_DIR}/docs/man/trovik-trace.1"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT command)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/NOTICE"
              "${PROJECT_SOURCE_DIR}/docs/third-party.md" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
        COMPONENT library)

# The tools refer to their stamps by paths such as "Stamps/knife.tif" below this folder.
install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/stamps/"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/trovik/stamps"
    COMPONENT command
    FILES_MATCHING
    PATTERN "*.tif"
    PATTERN "*.exr"
    PATTERN "README.md")

# --- The target that builds everything that is installed ---

set(installedTargets ${exportedTargets} ${modules})
foreach(target IN ITEMS SwiftStroke trovik trovik-studio studio-translations TrovikPython TrovikPythonFiles)
    if(TARGET ${target})
        list(APPEND installedTargets ${target})
    endif()
endforeach()
list(REMOVE_ITEM installedTargets TrovikHostContract) # has only headers
add_custom_target(installed-files DEPENDS ${installedTargets})

# --- The CMake package ---

install(
    EXPORT TrovikTargets
    NAMESPACE Trovik::
    DESTINATION "${TROVIK_INSTALL_CMAKE_DIR}"
    COMPONENT development)
configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/TrovikConfig.cmake.in" "${PROJECT_BINARY_DIR}/TrovikConfig.cmake"
    INSTALL_DESTINATION "${TROVIK_INSTALL_CMAKE_DIR}"
    PATH_VARS TROVIK_INSTALL_PLUGIN_DIR)
# Before 1.0, a new minor version may change the contract.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TrovikConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TrovikConfig.cmake"
              "${PROJECT_BINARY_DIR}/TrovikConfigVersion.cmake"
        DESTINATION "${TROVIK_INSTALL_CMAKE_DIR}"
        COMPONENT development)
