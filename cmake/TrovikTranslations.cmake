# SPDX-License-Identifier: Apache-2.0

# Translations of trovik-studio: apps/studio/translations/trovik-studio_LOCALE.ts.
#
# - The target `update-translations` writes the current texts of the application, and those of the
#   framework's tables of tools and formats, to these files with Qt's lupdate. It creates files for
#   the locales in TROVIK_NEW_TRANSLATIONS.
# - If Qt's lrelease is installed, the build makes trovik-studio_LOCALE.qm from each file.
#
# Both tools are in Debian's package qt6-l10n-tools. The build does not require them.
set(TROVIK_NEW_TRANSLATIONS "" CACHE STRING "Locales for which update-translations creates files")

# Paths from an executable's folder to the translations, in an installed tree and in a build tree.
set(TROVIK_BUILD_TRANSLATION_DIR "${PROJECT_BINARY_DIR}/translations")
file(RELATIVE_PATH TROVIK_INSTALLED_TRANSLATION_DIR_FROM_BIN "/${CMAKE_INSTALL_BINDIR}"
     "/${CMAKE_INSTALL_DATADIR}/trovik/translations")
file(RELATIVE_PATH TROVIK_TRANSLATION_DIR_FROM_BIN "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
     "${TROVIK_BUILD_TRANSLATION_DIR}")

function(trovik_add_translations)
    set(folder "${PROJECT_SOURCE_DIR}/apps/studio/translations")
    file(GLOB files CONFIGURE_DEPENDS "${folder}/trovik-studio_*.ts")
    get_target_property(qmake Qt6::qmake IMPORTED_LOCATION)
    cmake_path(GET qmake PARENT_PATH tools)
    find_program(TROVIK_LUPDATE NAMES lupdate HINTS "${tools}")
    find_program(TROVIK_LRELEASE NAMES lrelease HINTS "${tools}")
    mark_as_advanced(TROVIK_LUPDATE TROVIK_LRELEASE)

    set(updated ${files})
    foreach(locale IN LISTS TROVIK_NEW_TRANSLATIONS)
        list(APPEND updated "${folder}/trovik-studio_${locale}.ts")
    endforeach()
    list(REMOVE_DUPLICATES updated)
    if(NOT TROVIK_LUPDATE)
        set(command "${CMAKE_COMMAND}" -E echo
            "update-translations: lupdate is missing; install qt6-l10n-tools" COMMAND
            "${CMAKE_COMMAND}" -E false)
    elseif(NOT updated)
        set(command "${CMAKE_COMMAND}" -E echo
            "update-translations: there are no translations; set TROVIK_NEW_TRANSLATIONS")
    else()
        set(command "${CMAKE_COMMAND}" -E make_directory "${folder}" COMMAND
            "${TROVIK_LUPDATE}" -locations relative -no-obsolete
            "${PROJECT_SOURCE_DIR}/apps/studio" "${PROJECT_SOURCE_DIR}/framework" -ts ${updated})
    endif()
    add_custom_target(update-translations COMMAND ${command} VERBATIM)

    if(NOT files)
        return()
    endif()
    if(NOT TROVIK_LRELEASE)
        message(STATUS "lrelease is missing; trovik-studio is built without translations")
        return()
    endif()
    set(compiled)
    foreach(file IN LISTS files)
        cmake_path(GET file STEM name)
        set(output "${TROVIK_BUILD_TRANSLATION_DIR}/${name}.qm")
        add_custom_command(
            OUTPUT "${output}"
            COMMAND "${CMAKE_COMMAND}" -E make_directory "${TROVIK_BUILD_TRANSLATION_DIR}"
            COMMAND "${TROVIK_LRELEASE}" -silent "${file}" -qm "${output}"
            DEPENDS "${file}"
            VERBATIM)
        list(APPEND compiled "${output}")
    endforeach()
    add_custom_target(studio-translations ALL DEPENDS ${compiled})
    install(FILES ${compiled} DESTINATION "${CMAKE_INSTALL_DATADIR}/trovik/translations" COMPONENT studio)
endfunction()
