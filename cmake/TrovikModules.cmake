# SPDX-License-Identifier: Apache-2.0

# Modules are parts of the library that are loaded on first use (framework/modules). Executables
# that run in the build tree depend on the target TrovikModules, because nothing links a module.
add_custom_target(TrovikModules)

# trovik_add_module(NAME <name> SOURCES <file>... [LIBRARIES <target>...]) Builds <name>.so in the
# library's module folder. The sources define `trovikModule` (framework/modules/ModuleEntry.h), the
# only symbol that the module exports.
function(trovik_add_module)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME" "SOURCES;LIBRARIES")
    add_library(${arg_NAME} MODULE ${arg_SOURCES})
    target_link_libraries(
        ${arg_NAME} PRIVATE Trovik::Framework Trovik::Warnings Trovik::Numbers ${arg_LIBRARIES})
    target_compile_definitions(
        ${arg_NAME} PRIVATE TROVIK_MODULE_VERSION="${PROJECT_VERSION}")
    # With Clang, the sanitizers' symbols are defined in the executable only.
    if(NOT TROVIK_SANITIZE)
        target_link_options(${arg_NAME} PRIVATE -Wl,--no-undefined)
    endif()
    string(REGEX REPLACE "[^/]+" ".." libraryFromModule "${TROVIK_MODULE_DIR}")
    set_target_properties(
        ${arg_NAME}
        PROPERTIES PREFIX ""
                   SUFFIX ".so"
                   CXX_VISIBILITY_PRESET hidden
                   VISIBILITY_INLINES_HIDDEN ON
                   LIBRARY_OUTPUT_DIRECTORY "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${TROVIK_MODULE_DIR}"
                   INSTALL_RPATH "$ORIGIN/${libraryFromModule}")
    add_dependencies(TrovikModules ${arg_NAME})
    set_property(GLOBAL APPEND PROPERTY TROVIK_MODULES ${arg_NAME})
endfunction()
