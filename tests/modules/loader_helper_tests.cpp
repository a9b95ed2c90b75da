// The exported loader helpers, run where the search path holds only libraries named
// "liblibx.so.so" and "lib.so", each of which reports its own file name.
#include "modules/shared_library_loader.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

namespace {

using Marker_function = const char* (*)();

std::string file_behind(void* library_handle)
{
    auto marker = reinterpret_cast<Marker_function>(
        get_function_handle(library_handle, "nq_marker_file"));
    return marker == nullptr ? std::string("(no marker)") : std::string(marker());
}

}  // namespace

TEST(Loader_helpers, DecorateANameThatAlreadyLooksLikeAFile)
{
    void* library = load_shared_library("libx.so");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(file_behind(library), "liblibx.so.so");
    unload_shared_library(library);
    EXPECT_EQ(library, nullptr);
}

TEST(Loader_helpers, DecorateAnEmptyNameIntoLibDotSo)
{
    void* library = load_shared_library("");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(file_behind(library), "lib.so");
    unload_shared_library(library);
    EXPECT_EQ(library, nullptr);
}

TEST(Loader_helpers, OpenLibrariesLocallyOnly)
{
    void* library = load_shared_library("libx.so");
    ASSERT_NE(library, nullptr);
    // Opened without RTLD_GLOBAL: a companion's symbols must not leak into the process.
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "nq_marker_file"), nullptr);
    unload_shared_library(library);
}

TEST(Loader_helpers, ReportAbsenceWithNull)
{
    EXPECT_EQ(load_shared_library("x"), nullptr);
    EXPECT_EQ(load_shared_library("liblibx.so.so"), nullptr);

    void* library = load_shared_library("libx.so");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(get_function_handle(library, "nq_no_such_entry"), nullptr);
    // Symbol names are looked up exactly as given.
    EXPECT_EQ(get_function_handle(library, "_nq_marker_file"), nullptr);
    unload_shared_library(library);
}
