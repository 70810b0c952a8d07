#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
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

/// The files below a folder whose names a pattern matches.
std::vector<fs::path> filesBelow(const fs::path& folder, const std::string& pattern) {
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (std::regex_match(entry.path().filename().string(), std::regex(pattern)))
            found.push_back(entry.path());
    }
    return found;
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
    const std::vector<fs::path> sources = filesBelow(kTree, ".*\\.cpp");
    EXPECT_GT(sources.size(), 50u) << "looked in the wrong place";
    for (const fs::path& source : sources)
        EXPECT_TRUE(isBuilt(source)) << source << " is in no build list";
    EXPECT_FALSE(isBuilt(kTree / "materials/surface/mtl_forgotten.cpp"));
}

TEST(BuildLists, EveryMaterialStandsInTheModule) {
    const std::string module = textOf(kTree / "materials/library/pelk_materials.cpp");
    const std::regex description("using (\\w+) = DescOf<");
    int found = 0;
    for (const fs::path& header : filesBelow(kTree / "materials", ".*\\.h")) {
        const std::string text = textOf(header);
        for (std::sregex_iterator desc(text.begin(), text.end(), description), end; desc != end;
             ++desc, ++found)
            EXPECT_NE(module.find("Enrolled<" + desc->str(1) + ">"), module.npos)
                << desc->str(1) << " has no row in the module";
    }
    EXPECT_GE(found, 13) << "looked in the wrong place";
    for (fs::path header : filesBelow(kTree / "materials", "mtl_.*\\.cpp")) {
        header.replace_extension(".h");
        EXPECT_TRUE(std::regex_search(textOf(header), description))
            << header << " has no descriptor";
    }
}

}  // namespace
