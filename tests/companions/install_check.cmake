# Installs the build into a scratch prefix and checks what a host finds there: files and links,
# SONAMEs, run-time search paths (only the core has one: $ORIGIN), the companions' exports, the Runtime component, a
# library folder the loader searches, and hosts built through pkg-config and the CMake package.
# Run as: cmake -DBUILD_DIR= -DWORK_DIR= -DHOST_SOURCE_DIR= -DTOOLCHAIN_FILE= -DC_COMPILER=
#               -DGENERATOR= -P install_check.cmake

foreach(tool pkg-config readelf nm)
    find_program(found_${tool} ${tool} REQUIRED)
endforeach()

set(failures 0)
macro(fail description)
    message(SEND_ERROR "FAILED: ${description}")
    math(EXPR failures "${failures} + 1")
endmacro()

include("${CMAKE_CURRENT_LIST_DIR}/../install_helpers.cmake")

set(prefix "${WORK_DIR}/prefix")
set(runtime_prefix "${WORK_DIR}/runtime_only")
install_build("${prefix}")
run_or_fail("cmake --install --component Runtime"
    "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${runtime_prefix}" --component Runtime)

file(GLOB_RECURSE found_LUT "${prefix}/*/libcorvane_xvr_LUT.so")
list(LENGTH found_LUT found_count)
if(NOT found_count EQUAL 1)
    message(FATAL_ERROR "libcorvane_xvr_LUT.so installed ${found_count} times: ${found_LUT}")
endif()
get_filename_component(libdir_full "${found_LUT}" DIRECTORY)
file(RELATIVE_PATH libdir "${prefix}" "${libdir_full}")

set(nq_vector_libraries corvane_xvr_color_processing_vector_sse corvane_xvr_color_processing_vector_avx2)
foreach(name corvane_xvr_color_processing corvane_xvr_LUT corvane_xvr_logger ${nq_vector_libraries})
    set(real "${libdir_full}/lib${name}.so.1.0.0")
    if(NOT EXISTS "${real}" OR IS_SYMLINK "${real}")
        fail("${real} is a regular file")
    endif()
    foreach(link "lib${name}.so.1" "lib${name}.so")
        file(REAL_PATH "${libdir_full}/${link}" target)
        if(NOT target STREQUAL real)
            fail("${link} leads to lib${name}.so.1.0.0")
        endif()
    endforeach()
    execute_process(COMMAND readelf -h -d "${real}" OUTPUT_VARIABLE elf)
    if(NOT elf MATCHES "Class:[ \t]+ELF32" OR NOT elf MATCHES "Machine:[ \t]+Intel 80386")
        fail("${name} is a 32-bit x86 object")
    endif()
    if(NOT elf MATCHES "Library soname: \\[lib${name}\\.so\\.1\\]")
        fail("${name} has SONAME lib${name}.so.1")
    endif()
    # Only the core searches: beside itself, for the companions it opens.
    if(name STREQUAL "corvane_xvr_color_processing")
        if(NOT elf MATCHES "\\(RUNPATH\\)[^\n]*\\[\\$ORIGIN\\]" OR elf MATCHES "\\(RPATH\\)")
            fail("${name} carries the RUNPATH $ORIGIN and no RPATH")
        endif()
    elseif(elf MATCHES "RPATH|RUNPATH")
        fail("${name} carries no run-time search path")
    endif()
endforeach()

# The companions export their entry points and nothing else.
foreach(library_and_names
        "LUT:nq_LUT_live_table_count;nq_LUT_module_initialize;nq_LUT_module_terminate;nq_LUT_transform_16;nq_create_LUT_test;nq_destroy_LUT;nq_get_LUT_data;nq_get_LUT_entry_count"
        "logger:xvr_free_log;xvr_get_log;xvr_log"
        "color_processing_vector_sse:nq_color_processing_transform_16_bit_output_vector_sse;nq_color_processing_transform_8_bit_output_vector_sse;nq_color_processing_vector_sse_module_initialize;nq_color_processing_vector_sse_module_terminate"
        "color_processing_vector_avx2:nq_color_processing_transform_16_bit_output_vector_avx2;nq_color_processing_transform_8_bit_output_vector_avx2;nq_color_processing_vector_avx2_module_initialize;nq_color_processing_vector_avx2_module_terminate")
    string(REGEX MATCH "^([^:]+):(.*)$" ignored "${library_and_names}")
    set(library "libcorvane_xvr_${CMAKE_MATCH_1}.so.1.0.0")
    set(wanted "${CMAKE_MATCH_2}")
    execute_process(COMMAND nm -D --defined-only "${libdir_full}/${library}" OUTPUT_VARIABLE table)
    string(REGEX MATCHALL "[ \t][TDBRV][ \t]+[A-Za-z_0-9]+" entries "${table}")
    list(TRANSFORM entries REPLACE ".*[ \t]" "")
    list(SORT entries)
    if(NOT entries STREQUAL wanted)
        fail("${library} exports exactly ${wanted} (found ${entries})")
    endif()
endforeach()

# Headers and package files; the Runtime component alone holds what the loader needs, no more.
set(package "${libdir_full}/cmake/corvane_xvr_color_processing/corvane_xvr_color_processing")
set(runtime_libdir "${runtime_prefix}/${libdir}")
set(present "${package}Config.cmake" "${package}ConfigVersion.cmake"
    "${runtime_libdir}/libcorvane_xvr_color_processing.so.1")
foreach(name color_processing LUT logger)
    list(APPEND present "${prefix}/include/corvane_xvr_${name}.h")
endforeach()
foreach(name LUT logger color_processing_vector_sse color_processing_vector_avx2)
    list(APPEND present "${runtime_libdir}/libcorvane_xvr_${name}.so" "${runtime_libdir}/libcorvane_xvr_${name}.so.1")
endforeach()
foreach(file ${present})
    if(NOT EXISTS "${file}")
        fail("${file} is installed")
    endif()
endforeach()
foreach(file "${runtime_libdir}/libcorvane_xvr_color_processing.so" "${runtime_prefix}/include"
        "${runtime_libdir}/pkgconfig")
    if(EXISTS "${file}")
        fail("the Runtime component leaves ${file} to Development")
    endif()
endforeach()

# Under /usr the library folder is one the 32-bit loader searches on its own.
execute_process(COMMAND /lib/ld-linux.so.2 --list-diagnostics OUTPUT_VARIABLE diagnostics
    ERROR_QUIET RESULT_VARIABLE diagnostics_result)
if(diagnostics_result EQUAL 0 AND NOT diagnostics MATCHES "path\\.system_dirs\\[[^]]*\\]=\"/usr/${libdir}/?\"")
    fail("/usr/${libdir} is searched by the 32-bit loader")
endif()

set(ENV{PKG_CONFIG_PATH} "${libdir_full}/pkgconfig")
run_or_fail("pkg-config" pkg-config --variable=prefix corvane_xvr_color_processing)
if(NOT run_output STREQUAL "${prefix}\n")
    fail("the pkg-config file names the install prefix (${run_output})")
endif()
run_or_fail("pkg-config" pkg-config --modversion corvane_xvr_color_processing corvane_xvr_LUT corvane_xvr_logger
    ${nq_vector_libraries})
if(NOT run_output STREQUAL "1.0.0\n1.0.0\n1.0.0\n1.0.0\n1.0.0\n")
    fail("pkg-config versions are 1.0.0")
endif()

set(run_environment LD_LIBRARY_PATH=${libdir_full} CORVANE_XVR_LOG_DESTINATION=file:${WORK_DIR}/host.log)
foreach(program_and_package host_core:corvane_xvr_color_processing host_logger:corvane_xvr_logger)
    string(REGEX MATCH "^([^:]+):(.*)$" ignored "${program_and_package}")
    set(program "${CMAKE_MATCH_1}")
    run_or_fail("pkg-config --cflags --libs" pkg-config --cflags --libs ${CMAKE_MATCH_2})
    separate_arguments(flags UNIX_COMMAND "${run_output}")
    run_or_fail("building ${program} with pkg-config" "${C_COMPILER}" -m32 -std=c99 -Wall -Werror
        "${HOST_SOURCE_DIR}/${program}.c" ${flags} -o "${WORK_DIR}/${program}_pkg_config")
    run_or_fail("running ${program} built with pkg-config"
        "${CMAKE_COMMAND}" -E env ${run_environment} "${WORK_DIR}/${program}_pkg_config")
endforeach()

run_or_fail("configuring the host with find_package"
    "${CMAKE_COMMAND}" -S "${HOST_SOURCE_DIR}" -B "${WORK_DIR}/host_build" -G "${GENERATOR}"
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}" "-DCMAKE_PREFIX_PATH=${prefix}")
run_or_fail("building the host" "${CMAKE_COMMAND}" --build "${WORK_DIR}/host_build")
foreach(program host_core host_LUT host_logger)
    run_or_fail("running ${program} built with the CMake package"
        "${CMAKE_COMMAND}" -E env ${run_environment} "${WORK_DIR}/host_build/${program}")
endforeach()
file(STRINGS "${WORK_DIR}/host.log" logged REGEX "installed logger works")
list(LENGTH logged logged_count)
if(NOT logged_count EQUAL 2)
    fail("both logger hosts wrote their record")
endif()
if(failures GREATER 0)
    message(FATAL_ERROR "install_check: ${failures} check(s) failed")
endif()
