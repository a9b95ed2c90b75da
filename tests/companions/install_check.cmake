# Installs the build into a scratch prefix and checks what a host finds there: the files and
# links, SONAMEs without run-time search paths, the companions' exported symbols, the split
# into Runtime and Development, a library directory that the loader searches under the usual
# prefixes, and hosts built through pkg-config and through the CMake package.
#
# Run as: cmake -DBUILD_DIR=... -DWORK_DIR=... -DHOST_SOURCE_DIR=... -DTOOLCHAIN_FILE=...
#               -DC_COMPILER=... -DGENERATOR=... -P install_check.cmake

foreach(variable BUILD_DIR WORK_DIR HOST_SOURCE_DIR TOOLCHAIN_FILE C_COMPILER GENERATOR)
    if(NOT DEFINED ${variable})
        message(FATAL_ERROR "install_check: ${variable} is not set")
    endif()
endforeach()

foreach(tool pkg-config readelf nm)
    find_program(found_${tool} ${tool})
    if(NOT found_${tool})
        message(FATAL_ERROR "install_check: ${tool} is not installed; it is needed to check what a host sees")
    endif()
endforeach()

set(failures 0)
macro(fail description)
    message(SEND_ERROR "FAILED: ${description}")
    math(EXPR failures "${failures} + 1")
endmacro()

function(run_or_fail description)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${description} failed (${result}):\n${output}\n${error}")
    endif()
    set(run_output "${output}" PARENT_SCOPE)
endfunction()

set(prefix "${WORK_DIR}/prefix")
set(runtime_prefix "${WORK_DIR}/runtime_only")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

run_or_fail("cmake --install" "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
run_or_fail("cmake --install --component Runtime"
    "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${runtime_prefix}" --component Runtime)

# Where the libraries went ---------------------------------------------------------------------
file(GLOB_RECURSE found_LUT LIST_DIRECTORIES false "${prefix}/*/libcorvane_xvr_LUT.so")
list(LENGTH found_LUT found_count)
if(NOT found_count EQUAL 1)
    message(FATAL_ERROR "libcorvane_xvr_LUT.so installed ${found_count} times: ${found_LUT}")
endif()
get_filename_component(libdir_full "${found_LUT}" DIRECTORY)
file(RELATIVE_PATH libdir "${prefix}" "${libdir_full}")
message(STATUS "libraries installed into <prefix>/${libdir}")

# Libraries, links, SONAMEs ----------------------------------------------------------------------
foreach(name corvane_xvr_color_processing corvane_xvr_LUT corvane_xvr_logger)
    set(real "${libdir_full}/lib${name}.so.1.0.0")
    if(NOT (EXISTS "${real}" AND NOT IS_SYMLINK "${real}"))
        fail("${real} is a regular file")
    endif()
    foreach(link "lib${name}.so.1" "lib${name}.so")
        file(REAL_PATH "${libdir_full}/${link}" target)
        if(NOT ("${target}" STREQUAL "${real}"))
            fail("${link} leads to lib${name}.so.1.0.0")
        endif()
    endforeach()
    execute_process(COMMAND readelf -h -d "${real}" OUTPUT_VARIABLE elf)
    if(NOT ("${elf}" MATCHES "Class:[ \t]+ELF32" AND "${elf}" MATCHES "Machine:[ \t]+Intel 80386"))
        fail("${name} is a 32-bit x86 object")
    endif()
    if(NOT ("${elf}" MATCHES "Library soname: \\[lib${name}\\.so\\.1\\]"))
        fail("${name} has SONAME lib${name}.so.1")
    endif()
    if("${elf}" MATCHES "RPATH|RUNPATH")
        fail("${name} carries no run-time search path")
    endif()
endforeach()

# Exported symbols of the companions: the entry points and nothing else ------------------------
function(check_exports library expected)
    execute_process(COMMAND nm -D --defined-only "${libdir_full}/${library}" OUTPUT_VARIABLE table)
    string(REGEX MATCHALL "[ \t][TDBRV][ \t]+[A-Za-z_0-9]+" entries "${table}")
    set(names "")
    foreach(entry ${entries})
        string(REGEX REPLACE ".*[ \t]" "" name "${entry}")
        list(APPEND names ${name})
    endforeach()
    list(SORT names)
    set(wanted ${expected})
    list(SORT wanted)
    if(NOT ("${names}" STREQUAL "${wanted}"))
        fail("${library} exports exactly ${wanted} (found ${names})")
    endif()
endfunction()
check_exports(libcorvane_xvr_LUT.so.1.0.0
    "nq_LUT_module_initialize;nq_create_LUT_test;nq_LUT_transform_16;nq_get_LUT_data;nq_destroy_LUT;nq_LUT_module_terminate;nq_get_LUT_entry_count;nq_LUT_live_table_count")
check_exports(libcorvane_xvr_logger.so.1.0.0 "xvr_get_log;xvr_log;xvr_free_log")

# Headers and package files ------------------------------------------------------------------------
foreach(header corvane_xvr_color_processing.h corvane_xvr_LUT.h corvane_xvr_logger.h)
    if(NOT (EXISTS "${prefix}/include/${header}"))
        fail("include/${header} installed")
    endif()
endforeach()
set(package_dir "${libdir_full}/cmake/corvane_xvr_color_processing")
if(NOT (EXISTS "${package_dir}/corvane_xvr_color_processingConfig.cmake" AND EXISTS "${package_dir}/corvane_xvr_color_processingConfigVersion.cmake"))
    fail("CMake package installed")
endif()

# Runtime component alone: what the loader needs, nothing to build with ------------------------
set(runtime_libdir "${runtime_prefix}/${libdir}")
foreach(file libcorvane_xvr_color_processing.so.1 libcorvane_xvr_LUT.so libcorvane_xvr_logger.so
             libcorvane_xvr_LUT.so.1 libcorvane_xvr_logger.so.1)
    if(NOT (EXISTS "${runtime_libdir}/${file}"))
        fail("Runtime holds ${file}")
    endif()
endforeach()
if(EXISTS "${runtime_libdir}/libcorvane_xvr_color_processing.so")
    fail("Runtime leaves the core's build link to Development")
endif()
if(EXISTS "${runtime_prefix}/include")
    fail("Runtime holds no headers")
endif()
if(EXISTS "${runtime_libdir}/pkgconfig")
    fail("Runtime holds no pkg-config files")
endif()

# The library directory is searched by the loader under /usr and /usr/local -------------------
function(read_loader_configuration file result)
    set(directories "")
    file(STRINGS "${file}" lines)
    foreach(line ${lines})
        string(REGEX REPLACE "#.*" "" line "${line}")
        string(STRIP "${line}" line)
        if(line MATCHES "^include[ \t]+(.+)$")
            set(pattern "${CMAKE_MATCH_1}")
            if(NOT IS_ABSOLUTE "${pattern}")
                set(pattern "/etc/${pattern}")
            endif()
            file(GLOB included "${pattern}")
            foreach(included_file ${included})
                read_loader_configuration("${included_file}" nested)
                list(APPEND directories ${nested})
            endforeach()
        elseif(line)
            list(APPEND directories "${line}")
        endif()
    endforeach()
    set(${result} "${directories}" PARENT_SCOPE)
endfunction()

if(EXISTS /etc/ld.so.conf)
    read_loader_configuration(/etc/ld.so.conf searched)
    execute_process(COMMAND /lib/ld-linux.so.2 --list-diagnostics
        OUTPUT_VARIABLE diagnostics ERROR_QUIET RESULT_VARIABLE diagnostics_result)
    if(diagnostics_result EQUAL 0)
        string(REGEX MATCHALL "path\\.system_dirs\\[[^]]*\\]=\"[^\"]*\"" system_dirs "${diagnostics}")
        foreach(entry ${system_dirs})
            string(REGEX REPLACE ".*=\"([^\"]*)\"" "\\1" directory "${entry}")
            list(APPEND searched "${directory}")
        endforeach()
    endif()
    set(normalised "")
    foreach(directory ${searched})
        string(REGEX REPLACE "/+$" "" directory "${directory}")
        list(APPEND normalised "${directory}")
    endforeach()
    foreach(system_prefix /usr /usr/local)
        list(FIND normalised "${system_prefix}/${libdir}" position)
        if(NOT (position GREATER -1))
            fail("${system_prefix}/${libdir} is searched by the 32-bit loader")
        endif()
    endforeach()
else()
    message(STATUS "no /etc/ld.so.conf: loader search directories not checked")
endif()

# pkg-config -------------------------------------------------------------------------------------
set(ENV{PKG_CONFIG_PATH} "${libdir_full}/pkgconfig")
run_or_fail("pkg-config" pkg-config --variable=prefix corvane_xvr_color_processing)
string(STRIP "${run_output}" pc_prefix)
if(NOT ("${pc_prefix}" STREQUAL "${prefix}"))
    fail("the pkg-config file names the install prefix (${pc_prefix})")
endif()
run_or_fail("pkg-config" pkg-config --modversion corvane_xvr_color_processing corvane_xvr_LUT corvane_xvr_logger)
if(NOT ("${run_output}" STREQUAL "1.0.0\n1.0.0\n1.0.0\n"))
    fail("pkg-config versions are 1.0.0")
endif()

set(run_environment LD_LIBRARY_PATH=${libdir_full} CORVANE_XVR_LOG_DESTINATION=file:${WORK_DIR}/host.log)
foreach(host host_core:corvane_xvr_color_processing host_logger:corvane_xvr_logger)
    string(REPLACE ":" ";" parts "${host}")
    list(GET parts 0 program)
    list(GET parts 1 package)
    run_or_fail("pkg-config --cflags --libs ${package}" pkg-config --cflags --libs ${package})
    separate_arguments(flags UNIX_COMMAND "${run_output}")
    run_or_fail("building ${program} with pkg-config"
        "${C_COMPILER}" -m32 -std=c99 -Wall -Werror "${HOST_SOURCE_DIR}/${program}.c" ${flags}
        -o "${WORK_DIR}/${program}_pkg_config")
    run_or_fail("running ${program} built with pkg-config"
        "${CMAKE_COMMAND}" -E env ${run_environment} "${WORK_DIR}/${program}_pkg_config")
endforeach()

# CMake package ----------------------------------------------------------------------------------
run_or_fail("configuring the host with find_package"
    "${CMAKE_COMMAND}" -S "${HOST_SOURCE_DIR}" -B "${WORK_DIR}/host_build" -G "${GENERATOR}"
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}" "-DCMAKE_PREFIX_PATH=${prefix}")
run_or_fail("building the host" "${CMAKE_COMMAND}" --build "${WORK_DIR}/host_build")
foreach(program host_core host_LUT host_logger)
    run_or_fail("running ${program} built with the CMake package"
        "${CMAKE_COMMAND}" -E env ${run_environment} "${WORK_DIR}/host_build/${program}")
endforeach()
# A build whose pointers are 8 bytes, pointed straight at the package, is refused by the
# package's version file: such a host could not link.
execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${HOST_SOURCE_DIR}" -B "${WORK_DIR}/host_build_64" -G "${GENERATOR}"
        "-Dcorvane_xvr_color_processing_DIR=${package_dir}" -DCMAKE_C_FLAGS=-m64 -DCMAKE_CXX_FLAGS=-m64
    RESULT_VARIABLE result_64 OUTPUT_VARIABLE output_64 ERROR_VARIABLE error_64)
if(result_64 EQUAL 0 OR NOT "${output_64}${error_64}" MATCHES "version: 1\\.0\\.0 \\(32bit\\)")
    fail("a 64-bit host build is refused by the package's version file")
endif()

file(STRINGS "${WORK_DIR}/host.log" logged REGEX "installed logger works")
list(LENGTH logged logged_count)
if(NOT (logged_count EQUAL 2))
    fail("both logger hosts wrote their record")
endif()

if(failures GREATER 0)
    message(FATAL_ERROR "install_check: ${failures} check(s) failed")
endif()
message(STATUS "install_check: all checks passed")
