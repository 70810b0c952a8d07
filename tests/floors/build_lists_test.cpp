#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// A source that no build list names is forgotten without an error: the rest compiles and links all
// the same. So the lists are read as text.

namespace {

namespace fs = std::filesystem;

const fs::path kTree = PELK_SOURCE_DIR;

std::string textOf(const fs::path& file) {
    std::ifstream stream(file);
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Whether the list in the CMakeLists.txt that is responsible for a source names it.
bool isBuilt(const fs::path& source) {
    fs::path folder = source.parent_path();
    while (!fs::exists(folder / "CMakeLists.txt"))
        folder = folder.parent_path();
    std::string list = textOf(folder / "CMakeLists.txt");
    std::replace_if(
        list.begin(), list.end(), [](char c) { return c == '(' || c == ')'; }, ' ');
    std::istringstream words(list);
    return std::find(std::istream_iterator<std::string>(words), {},
                     source.lexically_relative(folder).generic_string()) !=
           std::istream_iterator<std::string>();
}

TEST(BuildLists, NameEverySource) {
    int sources = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kTree)) {
        if (entry.path().extension() != ".cpp")
            continue;
        EXPECT_TRUE(isBuilt(entry)) << entry.path() << " is in no build list";
        ++sources;
    }
    EXPECT_GT(sources, 50) << "looked in the wrong place";
    EXPECT_FALSE(isBuilt(kTree / "materials/surface/mtl_forgotten.cpp"));
}

}  // namespace
