// A fresh folder per test, removed with everything in it afterwards.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <dirent.h>
#include <ftw.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace xvr_color_test {

class Scratch_folder {
public:
    Scratch_folder()
    {
        std::string pattern = ::testing::TempDir() + "xvr_color_test_XXXXXX";
        const char* made = mkdtemp(&pattern[0]);
        EXPECT_NE(made, nullptr);
        m_path = pattern;
    }
    ~Scratch_folder()
    {
        nftw(m_path.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS);
    }
    Scratch_folder(const Scratch_folder&) = delete;
    Scratch_folder& operator=(const Scratch_folder&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

    // Names of the folder's entries, sorted.
    std::vector<std::string> entries() const
    {
        std::vector<std::string> names;
        DIR* folder = opendir(m_path.c_str());
        while (dirent* entry = readdir(folder)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") {
                names.push_back(name);
            }
        }
        closedir(folder);
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    static int remove_entry(const char* path, const struct stat*, int, struct FTW*)
    {
        remove(path);
        return 0;
    }

    std::string m_path;
};

} // namespace xvr_color_test
