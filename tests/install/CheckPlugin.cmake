# SPDX-License-Identifier: Apache-2.0

# Uses the tool of the example plug-in with an installed command: lists it, runs noise.json, and
# compares the meshes that the script exports. Variables: command, plugins (the value of
# TROVIK_PLUGIN_PATH), mesh, script, folder (for the files).
cmake_minimum_required(VERSION 3.25)

unset(ENV{LD_LIBRARY_PATH})
set(ENV{TROVIK_PLUGIN_PATH} "${plugins}")
file(REMOVE_RECURSE "${folder}")

execute_process(COMMAND "${command}" tools OUTPUT_VARIABLE tools COMMAND_ERROR_IS_FATAL ANY)
if(NOT tools MATCHES "\nNoise  " OR NOT tools MATCHES "Imprint")
    message(FATAL_ERROR "the tools of both plug-ins are not listed: ${tools}")
endif()

execute_process(
    COMMAND "${command}" sculpt "${script}" -q --strict --set "mesh=${mesh}" -o "${folder}"
    COMMAND_ERROR_IS_FATAL ANY)

# Compares two results; the status is that of `trovik diff`.
function(compare expected a b)
    execute_process(
        COMMAND "${command}" diff "${folder}/${a}" "${folder}/${b}" ${ARGN}
        RESULT_VARIABLE status
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    if(NOT status EQUAL expected)
        message(FATAL_ERROR "diff ${a} ${b}: status ${status}, expected ${expected}\n${output}")
    endif()
endfunction()

compare(1 before.ply after.ply --tolerance 0.002)
compare(0 before.ply undone.ply)
compare(0 after.ply redone.ply)
compare(0 after.ply after.trovik)
compare(0 after.ply symmetric.ply)
compare(1 before.ply masked.ply --tolerance 0.002)
compare(1 after.ply masked.ply --tolerance 0.002)
compare(0 after.ply layered.ply --tolerance 1e-5)
compare(0 before.ply weightless.ply --tolerance 1e-6)

# The scene contains the settings of the plug-in's tool.
execute_process(COMMAND "${command}" info "${folder}/after.trovik" OUTPUT_VARIABLE info
                        COMMAND_ERROR_IS_FATAL ANY)
if(NOT info MATCHES "Noise")
    message(FATAL_ERROR "the scene does not contain the tool: ${info}")
endif()
