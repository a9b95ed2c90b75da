# What the install checks share. run_or_fail(<description> <command...>) stops the check with the
# command's output when it fails, and leaves its standard output in run_output;
# install_build(<prefix>) empties WORK_DIR and installs BUILD_DIR into <prefix>.
function(run_or_fail description)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${description} failed (${result}):\n${output}\n${error}")
    endif()
    set(run_output "${output}" PARENT_SCOPE)
endfunction()

function(install_build prefix)
    file(REMOVE_RECURSE "${WORK_DIR}")
    run_or_fail("cmake --install" "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
endfunction()
