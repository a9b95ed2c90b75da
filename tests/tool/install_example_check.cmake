# Installs the build into a scratch prefix and runs what a user of that prefix runs, with no
# LD_LIBRARY_PATH and no ldconfig: the example host built with pkg-config and with
# find_package, and the installed xvr-color. A 64-bit find_package must say the package is 32-bit.
# Run as: cmake -DBUILD_DIR= -DWORK_DIR= -DEXAMPLE_DIR= -DTOOLCHAIN_FILE= -DC_COMPILER=
#               -DGENERATOR= -P install_example_check.cmake

include("${CMAKE_CURRENT_LIST_DIR}/../install_helpers.cmake")

set(prefix "${WORK_DIR}/elsewhere")
install_build("${prefix}")
file(GLOB_RECURSE pc_file "${prefix}/*/corvane_xvr_color_processing.pc")
get_filename_component(pc_dir "${pc_file}" DIRECTORY)
# No loader variable at all, as in a user's fresh shell.
set(clean_environment "${CMAKE_COMMAND}" -E env --unset=LD_LIBRARY_PATH --unset=LD_PRELOAD)

run_or_fail("pkg-config" "${CMAKE_COMMAND}" -E env "PKG_CONFIG_PATH=${pc_dir}"
    pkg-config --cflags --libs corvane_xvr_color_processing)
separate_arguments(flags UNIX_COMMAND "${run_output}")
run_or_fail("building the example with pkg-config" "${C_COMPILER}" -m32 -std=c99 -Wall -Wextra -Werror
    "${EXAMPLE_DIR}/correct_planar.c" ${flags} -o "${WORK_DIR}/correct_planar_pkg_config")
run_or_fail("running the example built with pkg-config" ${clean_environment} "${WORK_DIR}/correct_planar_pkg_config")

run_or_fail("configuring the example with find_package"
    "${CMAKE_COMMAND}" -S "${EXAMPLE_DIR}" -B "${WORK_DIR}/example_build" -G "${GENERATOR}"
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}" "-DCMAKE_PREFIX_PATH=${prefix}")
run_or_fail("building the example" "${CMAKE_COMMAND}" --build "${WORK_DIR}/example_build")
run_or_fail("running the example built with the CMake package" ${clean_environment}
    "${WORK_DIR}/example_build/correct_planar")

run_or_fail("the installed xvr-color" ${clean_environment} "${prefix}/bin/xvr-color" -q
    -o "${WORK_DIR}/chart.ppm")
if(NOT EXISTS "${prefix}/share/man/man1/xvr-color.1")
    message(FATAL_ERROR "the manual page is not installed")
endif()

# A 64-bit project (the host compiler's default) is told why the package does not fit.
file(WRITE "${WORK_DIR}/host64/CMakeLists.txt"
    "cmake_minimum_required(VERSION 3.25)\nproject(host64 C)\nfind_package(corvane_xvr_color_processing 1 REQUIRED)\n")
execute_process(COMMAND "${CMAKE_COMMAND}" -S "${WORK_DIR}/host64" -B "${WORK_DIR}/host64/build"
    -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
if(result EQUAL 0 OR NOT "${output}${error}" MATCHES "a 32-bit x86 package that a 64-bit project cannot link")
    message(FATAL_ERROR "a 64-bit find_package does not say the package is 32-bit:\n${output}\n${error}")
endif()
