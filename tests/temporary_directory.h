#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A directory of one test's own, gone with all its content at the end.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "pelk_test_XXXXXX").string();
        if (mkdtemp(name.data()))
            path = name;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string file(const std::string& name) const { return (path / name).string(); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path / name, std::ios::binary) << text;
    }
    std::string read(const std::string& name) const {
        std::ifstream stream(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::ptrdiff_t entryCount() const {
        return std::distance(std::filesystem::directory_iterator(path), {});
    }

    std::filesystem::path path;
};
