# Installation of the colour-processing library, its four companion libraries (tables, logger,
# SSE and AVX2 vector libraries), the public headers, a pkg-config file per library and a CMake
# package.
#
# Components:
#   Runtime      what a host needs to run: the versioned libraries, their SONAME links, and the
#                companions' unversioned names, which the colour-processing library opens at
#                run time by exactly those names.
#   Development  what a host needs to build: headers, the core's unversioned link, pkg-config
#                files and the CMake package.
#
# The installed colour-processing library finds its companions beside itself: it is given the
# run-time search path $ORIGIN at install time, as a DT_RUNPATH, so a host built against an
# install in any prefix runs without LD_LIBRARY_PATH or ldconfig. The loader searches
# LD_LIBRARY_PATH before a RUNPATH, so test doubles chosen through it still take precedence. The
# library in the build tree keeps no search path at all: tests that compose their own companion
# set rely on the production companions in <build>/lib staying invisible.
# Under /usr (and /usr/local after ldconfig) the multiarch directory is searched anyway.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(NQ_PACKAGE_NAME corvane_xvr_color_processing)

# GNUInstallDirs picks lib/i386-linux-gnu only for the prefix /usr; the same directory is the
# one the loader searches under /usr/local, so it is used for every prefix on Debian.
set(nq_multiarch_default OFF)
if(CMAKE_LIBRARY_ARCHITECTURE AND EXISTS "/etc/debian_version")
    set(nq_multiarch_default ON)
endif()
option(CORVANE_XVR_INSTALL_MULTIARCH
    "Install libraries into lib/<multiarch> when CMAKE_INSTALL_LIBDIR is plain lib"
    ${nq_multiarch_default})
set(NQ_INSTALL_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
if(CORVANE_XVR_INSTALL_MULTIARCH AND CMAKE_LIBRARY_ARCHITECTURE
   AND CMAKE_INSTALL_LIBDIR STREQUAL "lib")
    set(NQ_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}")
endif()
set(NQ_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
set(NQ_INSTALL_CMAKEDIR "${NQ_INSTALL_LIBDIR}/cmake/${NQ_PACKAGE_NAME}")
set(NQ_INSTALL_STAGING_DIR "${CMAKE_BINARY_DIR}/install_staging")

# Libraries and headers -------------------------------------------------------------------

# target | public header (none for the vector libraries, which only the colour-processing
# library calls) | component of its unversioned link
set(nq_installed_libraries
    "corvane_xvr_color_processing|${PROJECT_SOURCE_DIR}/include/corvane_xvr_color_processing.h|Development"
    "corvane_xvr_LUT|${PROJECT_SOURCE_DIR}/companions/lut/include/corvane_xvr_LUT.h|Runtime"
    "corvane_xvr_logger|${PROJECT_SOURCE_DIR}/companions/logger/include/corvane_xvr_logger.h|Runtime"
    "corvane_xvr_color_processing_vector_sse||Runtime"
    "corvane_xvr_color_processing_vector_avx2||Runtime")

# CMake's own RPATH editing needs room reserved in the build-tree file, which it pads with
# empty entries that the loader reads as the current directory (and any RUNPATH there would
# also hide the executable's DT_RPATH from the library's dlopen calls). So the build tree keeps
# none, and patchelf writes the RUNPATH into the installed copy.
find_program(NQ_PATCHELF patchelf)

set(NQ_INSTALLED_TARGETS "")
foreach(entry ${nq_installed_libraries})
    string(REPLACE "|" ";" fields "${entry}")
    list(GET fields 0 target)
    list(GET fields 1 header)
    list(GET fields 2 namelink_component)
    if(NOT TARGET ${target})
        continue()
    endif()
    install(TARGETS ${target}
        LIBRARY DESTINATION "${NQ_INSTALL_LIBDIR}"
            COMPONENT Runtime
            NAMELINK_COMPONENT ${namelink_component})
    if(header)
        install(FILES "${header}" DESTINATION "${NQ_INSTALL_INCLUDEDIR}" COMPONENT Development)
    endif()
    list(APPEND NQ_INSTALLED_TARGETS ${target})
endforeach()

if(TARGET corvane_xvr_color_processing)
    if(NOT NQ_PATCHELF)
        message(WARNING "patchelf not found (scripts/setup-debian.sh installs it): the installed "
                        "colour library will find its companions only where the loader searches anyway")
    endif()
    install(CODE "
        set(installed \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${NQ_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:corvane_xvr_color_processing>\")
        if(EXISTS \"${NQ_PATCHELF}\")
            execute_process(COMMAND \"${NQ_PATCHELF}\" --set-rpath \"\\$ORIGIN\" \"\${installed}\"
                            RESULT_VARIABLE result)
            if(NOT result EQUAL 0)
                message(FATAL_ERROR \"patchelf could not set the RUNPATH of \${installed}\")
            endif()
        endif()"
        COMPONENT Runtime)
endif()

# pkg-config files ------------------------------------------------------------------------
# Written at install time, so that the prefix given to `cmake --install --prefix` is the one
# they name. The first pass fills in everything else and keeps @NQ_PC_PREFIX@ for the second.

function(nq_install_pkg_config_file target description)
    set(NQ_PC_PREFIX "@NQ_PC_PREFIX@")
    set(NQ_PC_NAME "${target}")
    set(NQ_PC_DESCRIPTION "${description}")
    get_target_property(NQ_PC_VERSION ${target} VERSION)
    set(NQ_PC_LIBDIR "${NQ_INSTALL_LIBDIR}")
    set(NQ_PC_INCLUDEDIR "${NQ_INSTALL_INCLUDEDIR}")
    set(staged "${NQ_INSTALL_STAGING_DIR}/${target}.pc.in")
    set(generated "${NQ_INSTALL_STAGING_DIR}/${target}.pc")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/corvane_xvr_library.pc.in" "${staged}" @ONLY)
    install(CODE "
        set(NQ_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
        configure_file(\"${staged}\" \"${generated}\" @ONLY)"
        COMPONENT Development)
    install(FILES "${generated}" DESTINATION "${NQ_INSTALL_LIBDIR}/pkgconfig" COMPONENT Development)
endfunction()

set(nq_description_corvane_xvr_color_processing
    "Colour correction of 48-bit pixels with look-up tables and a colour matrix (32-bit x86)")
set(nq_description_corvane_xvr_LUT "Look-up tables of the corvane_xvr family (32-bit x86)")
set(nq_description_corvane_xvr_logger "Log records of the corvane_xvr family (32-bit x86)")
set(nq_description_corvane_xvr_color_processing_vector_sse
    "SSE4.1 pixel code of the corvane_xvr colour-processing library, opened by it at run time (32-bit x86)")
set(nq_description_corvane_xvr_color_processing_vector_avx2
    "AVX2 pixel code of the corvane_xvr colour-processing library, opened by it at run time (32-bit x86)")
foreach(target ${NQ_INSTALLED_TARGETS})
    nq_install_pkg_config_file(${target} "${nq_description_${target}}")
endforeach()

# CMake package ---------------------------------------------------------------------------
# Written by hand rather than exported: the package only needs the library files and the
# include directory, and it stays relocatable through PACKAGE_PREFIX_DIR.

set(NQ_PACKAGE_IMPORTS "")
foreach(target ${NQ_INSTALLED_TARGETS})
    get_target_property(version ${target} VERSION)
    get_target_property(soversion ${target} SOVERSION)
    set(file_name "${CMAKE_SHARED_LIBRARY_PREFIX}${target}${CMAKE_SHARED_LIBRARY_SUFFIX}")
    string(APPEND NQ_PACKAGE_IMPORTS
        "_corvane_xvr_import_library(${target} \"${file_name}.${version}\" \"${file_name}.${soversion}\")\n")
endforeach()

if(NQ_INSTALLED_TARGETS)
    configure_package_config_file(
        "${PROJECT_SOURCE_DIR}/cmake/${NQ_PACKAGE_NAME}Config.cmake.in"
        "${NQ_INSTALL_STAGING_DIR}/${NQ_PACKAGE_NAME}Config.cmake"
        INSTALL_DESTINATION "${NQ_INSTALL_CMAKEDIR}"
        PATH_VARS NQ_INSTALL_LIBDIR NQ_INSTALL_INCLUDEDIR)
    # The version file also refuses a consumer whose pointers are not 4 bytes, saying why.
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${NQ_PACKAGE_NAME}ConfigVersion.cmake.in"
        "${NQ_INSTALL_STAGING_DIR}/${NQ_PACKAGE_NAME}ConfigVersion.cmake" @ONLY)
    # A note for projects of another architecture, which do not search the 32-bit library folder.
    set(note_dir "${NQ_INSTALL_STAGING_DIR}/architecture_note")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${NQ_PACKAGE_NAME}ArchitectureNote.cmake.in"
        "${note_dir}/${NQ_PACKAGE_NAME}ConfigVersion.cmake" @ONLY)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${NQ_PACKAGE_NAME}ArchitectureNoteConfig.cmake.in"
        "${note_dir}/${NQ_PACKAGE_NAME}Config.cmake" @ONLY)
    install(FILES "${note_dir}/${NQ_PACKAGE_NAME}Config.cmake" "${note_dir}/${NQ_PACKAGE_NAME}ConfigVersion.cmake"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/cmake/${NQ_PACKAGE_NAME}" COMPONENT Development)
    install(FILES
        "${NQ_INSTALL_STAGING_DIR}/${NQ_PACKAGE_NAME}Config.cmake"
        "${NQ_INSTALL_STAGING_DIR}/${NQ_PACKAGE_NAME}ConfigVersion.cmake"
        DESTINATION "${NQ_INSTALL_CMAKEDIR}"
        COMPONENT Development)
endif()
