// A folder of a test's own, which goes away with everything in it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

class Folder {
  public:
    Folder() {
        std::string pattern = testing::TempDir() + "mask_XXXXXX";
        path_ = mkdtemp(pattern.data());
    }
    ~Folder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& path() const { return path_; }
    operator const std::string&() const { return path_; }

    // Both return the path of the new file, which only its owner may write.
    std::string write(const std::string& name, const std::string& text) const {
        const std::string file = path_ + "/" + name;
        std::ofstream(file, std::ios::binary) << text;
        std::filesystem::permissions(file, std::filesystem::perms(0644));
        return file;
    }
    // A module of the tests, such as "first/which.so", under its own name or another one.
    std::string addModule(const std::string& module, const std::string& name) const {
        const std::string file = path_ + "/" + name;
        std::filesystem::copy_file(KORV_BROKEN_PROVIDERS "/" + module, file);
        std::filesystem::permissions(file, std::filesystem::perms(0755));
        return file;
    }

  private:
    std::string path_;
};
