#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// What is forgotten in a list compiles and links all the same: a source that no build list names,
// a material that the module doesn't hand out. So the lists are read as text.

namespace {

namespace fs = std::filesystem;

const fs::path kTree = PELK_SOURCE_DIR;

std::string textOf(const fs::path& file) {
    std::ifstream stream(file);
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The files below a folder whose names begin and end so.
std::vector<fs::path> filesBelow(const fs::path& folder, const char* begin, const char* end) {
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(begin) && name.ends_with(end))
            found.push_back(entry.path());
    }
    return found;
}

/// The descriptors that a header names: `Name` of each "using Name = DescOf<".
std::vector<std::string> descriptorsOf(const fs::path& header) {
    std::vector<std::string> names;
    std::istringstream words(textOf(header));
    for (std::string word, before, name; words >> word; name = before, before = word) {
        if (before == "=" && word.starts_with("DescOf<"))
            names.push_back(name);
    }
    return names;
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
    const std::vector<fs::path> sources = filesBelow(kTree, "", ".cpp");
    EXPECT_GT(sources.size(), 50u) << "looked in the wrong place";
    for (const fs::path& source : sources)
        EXPECT_TRUE(isBuilt(source)) << source << " is in no build list";
    EXPECT_FALSE(isBuilt(kTree / "materials/surface/mtl_forgotten.cpp"));
}

TEST(BuildLists, EveryMaterialStandsInTheModule) {
    const std::string module = textOf(kTree / "materials/library/pelk_materials.cpp");
    int found = 0;
    for (const fs::path& header : filesBelow(kTree / "materials", "", ".h")) {
        for (const std::string& desc : descriptorsOf(header)) {
            EXPECT_NE(module.find("Enrolled<" + desc + ">"), module.npos)
                << desc << " has no row in the module";
            ++found;
        }
    }
    EXPECT_GE(found, 13) << "looked in the wrong place";
    for (fs::path header : filesBelow(kTree / "materials", "mtl_", ".cpp")) {
        header.replace_extension(".h");
        EXPECT_FALSE(descriptorsOf(header).empty()) << header << " has no descriptor";
    }
}

}  // namespace
