# The image libraries of xvr-color besides lodepng: libtiff for TIFF files and zlib, which
# compresses PNG data on several threads and inflates it faster than lodepng's own code.
#
# First choice: the static i386 archives that scripts/setup-debian.sh unpacks into .deps/i386
# (libtiff and every library it uses), linked into the program so that it needs none of them at
# run time. Otherwise an installed libtiff-dev:i386 / zlib1g-dev:i386. Without libtiff the tool is
# built without TIFF support, without zlib it uses lodepng's deflate; both say so.
#
# Sets NQ_XVR_COLOR_HAS_TIFF, NQ_XVR_COLOR_HAS_ZLIB and the interface target
# xvr_color_image_libraries.

set(NQ_I386_DEPS_DIR "${PROJECT_SOURCE_DIR}/.deps/i386" CACHE PATH
    "Folder into which scripts/setup-debian.sh unpacks the i386 image libraries")
set(nq_deps_libdir "${NQ_I386_DEPS_DIR}/usr/lib/i386-linux-gnu")
set(nq_deps_includes "${NQ_I386_DEPS_DIR}/usr/include/i386-linux-gnu" "${NQ_I386_DEPS_DIR}/usr/include")

add_library(xvr_color_image_libraries INTERFACE)
set(NQ_XVR_COLOR_HAS_TIFF OFF)
set(NQ_XVR_COLOR_HAS_ZLIB OFF)

# libtiff's own dependencies, in link order (libtiff-4.pc, Libs.private).
set(nq_tiff_archives tiff webp zstd lzma Lerc jbig jpeg deflate z)
set(nq_all_archives_present ON)
foreach(name ${nq_tiff_archives})
    if(NOT EXISTS "${nq_deps_libdir}/lib${name}.a")
        set(nq_all_archives_present OFF)
    endif()
endforeach()

if(nq_all_archives_present AND EXISTS "${NQ_I386_DEPS_DIR}/usr/include/i386-linux-gnu/tiffconf.h")
    foreach(name ${nq_tiff_archives})
        target_link_libraries(xvr_color_image_libraries INTERFACE "${nq_deps_libdir}/lib${name}.a")
    endforeach()
    # Only the tool's own sources see these headers, so the unpacked zlib.h cannot shadow
    # another copy for the rest of the project.
    target_include_directories(xvr_color_image_libraries SYSTEM INTERFACE ${nq_deps_includes})
    find_package(Threads REQUIRED)
    target_link_libraries(xvr_color_image_libraries INTERFACE m Threads::Threads)
    set(NQ_XVR_COLOR_HAS_TIFF ON)
    set(NQ_XVR_COLOR_HAS_ZLIB ON)
    message(STATUS "xvr-color: TIFF and zlib from the static archives in ${NQ_I386_DEPS_DIR}")
else()
    find_package(TIFF QUIET)
    find_package(ZLIB QUIET)
    if(TIFF_FOUND)
        target_link_libraries(xvr_color_image_libraries INTERFACE TIFF::TIFF)
        set(NQ_XVR_COLOR_HAS_TIFF ON)
    else()
        message(WARNING "xvr-color: libtiff (32-bit) not found; building without TIFF support. "
                        "Run scripts/setup-debian.sh (it unpacks libtiff into .deps/i386) and reconfigure.")
    endif()
    if(ZLIB_FOUND)
        target_link_libraries(xvr_color_image_libraries INTERFACE ZLIB::ZLIB)
        set(NQ_XVR_COLOR_HAS_ZLIB ON)
    endif()
endif()
