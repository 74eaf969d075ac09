# SPDX-License-Identifier: Apache-2.0

# Copies an installed tree to another folder, and renders there with all modules, and then with one
# module missing at a time. Variables: prefix, command (below prefix), libraries (below prefix),
# modules (below libraries), mesh, folder (for the copy).
cmake_minimum_required(VERSION 3.25)

unset(ENV{LD_LIBRARY_PATH})
unset(ENV{TROVIK_PLUGIN_PATH})
file(REMOVE_RECURSE "${folder}")
file(COPY "${prefix}/" DESTINATION "${folder}")
set(render "${folder}/${command}" render "${mesh}" "${folder}/mesh.png" --width 8 --height 8)

execute_process(COMMAND ${render} COMMAND_ERROR_IS_FATAL ANY)

foreach(module IN ITEMS trovik-embree.so trovik-openimageio.so)
    set(file "${folder}/${libraries}/${modules}/${module}")
    file(RENAME "${file}" "${file}.away")
    execute_process(
        COMMAND ${render}
        RESULT_VARIABLE status
        ERROR_VARIABLE error)
    set(reason "cannot open shared object file: No such file or directory")
    string(FIND "${error}" "trovik: cannot load the module " begin)
    string(FIND "${error}" "/${modules}/${module}, which is needed for " name)
    string(FIND "${error}" "${reason}" end)
    if(NOT status EQUAL 1 OR NOT begin EQUAL 0 OR name EQUAL -1 OR end EQUAL -1)
        message(FATAL_ERROR "without ${module}: status ${status}, error: ${error}")
    endif()
    execute_process(COMMAND "${folder}/${command}" info "${mesh}" -q COMMAND_ERROR_IS_FATAL ANY)
    file(RENAME "${file}.away" "${file}")
endforeach()

# The module for remeshing with voxels.
file(WRITE "${folder}/remesh.json"
     "{\"mesh\": \"${mesh}\", \"steps\": [{\"voxelRemesh\": {\"faces\": 200}}]}")
set(remesh "${folder}/${command}" sculpt "${folder}/remesh.json" -q)
execute_process(COMMAND ${remesh} COMMAND_ERROR_IS_FATAL ANY)
set(file "${folder}/${libraries}/${modules}/trovik-openvdb.so")
file(RENAME "${file}" "${file}.away")
execute_process(
    COMMAND ${remesh}
    RESULT_VARIABLE status
    ERROR_VARIABLE error)
if(NOT status EQUAL 1 OR NOT error MATCHES "trovik-openvdb.so, which is needed for remeshing with voxels: cannot open")
    message(FATAL_ERROR "without trovik-openvdb.so: status ${status}, error: ${error}")
endif()
file(RENAME "${file}.away" "${file}")
