#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::map<std::string, int> kFloors{
    {"platform", 0}, {"frame", 1},   {"descriptor", 2}, {"host", 2},
    {"support", 2},  {"surface", 3}, {"matte", 3},      {"composite", 3},
    {"maya", 3},     {"library", 4}, {"render", 4},     {"pelk", 5},
};
constexpr int kMaterialFloor = 3;

const std::set<std::string> kHosts{"render", "pelk"};
const std::set<std::string> kHostLibraries{"embree3", "OpenImageIO", "assimp", "nlohmann", "CLI"};

/// What is wrong with a line of a file, which is named by its path below src/; empty if nothing
/// is. Folders include from lower floors only, hosts know materials by name only, and what serves
/// the host or belongs to the operating system is used where it may be and nowhere else.
std::string judge(const std::string& file, const std::string& line) {
    char opening, text[256];
    // Each blank stands for any number of blanks.
    if (std::sscanf(line.c_str(), " # include %c%255[^\">]", &opening, text) != 2)
        return "";
    const std::string path = text;
    const std::string from = file.substr(0, file.find('/')), to = path.substr(0, path.find('/'));
    if (const auto own = kFloors.find(to); own != kFloors.end()) {
        if (from != to && own->second >= kFloors.at(from))
            return from + " may not include from " + to;
        const bool isMaterial = own->second == kMaterialFloor;
        return kHosts.contains(from) && isMaterial ? "hosts know materials by name only" : "";
    }
    if (opening == '"')
        return "includes of this tree start with a folder of src/";
    if (kHostLibraries.contains(to))
        return kHosts.contains(from) ? "" : from + " may not use " + to;
    if (path.ends_with(".h") && !file.starts_with("platform/posix/"))
        return "system headers belong in platform/posix";
    return "";
}

TEST(Floors, ThisTreeKeepsThem) {
    std::vector<std::string> problems;
    int files = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(PELK_SOURCE_DIR)) {
        const fs::path& path = entry.path();
        if (path.extension() != ".h" && path.extension() != ".cpp")
            continue;
        const std::string file = path.lexically_relative(PELK_SOURCE_DIR).generic_string();
        ASSERT_TRUE(kFloors.contains(file.substr(0, file.find('/')))) << file << ": on no floor";
        ++files;
        bool guarded = path.extension() != ".h";
        std::ifstream stream(path);
        for (std::string line; std::getline(stream, line);) {
            guarded |= line == "#pragma once";
            if (const std::string problem = judge(file, line); !problem.empty())
                problems.push_back(file + ": " + line + ": " + problem);
        }
        if (!guarded)
            problems.push_back(file + ": a header starts with #pragma once");
    }
    EXPECT_THAT(problems, testing::IsEmpty());
    EXPECT_GT(files, 50) << "looked in the wrong place";
}

// A rule that finds nothing guards nothing.
TEST(Floors, EachBreachIsFound) {
    EXPECT_EQ(judge("host/a.cpp", "#include \"frame/b.h\""), "");
    EXPECT_EQ(judge("frame/a.cpp", "#include \"frame/b.h\""), "");
    EXPECT_EQ(judge("render/a.cpp", "#include <embree3/rtcore.h>"), "");
    EXPECT_EQ(judge("platform/posix/a.cpp", "#include <unistd.h>"), "");
    EXPECT_EQ(judge("frame/a.cpp", "  # include\t<pelk/b.h>"), "frame may not include from pelk");
    EXPECT_EQ(judge("matte/a.cpp", "#include \"maya/b.h\""), "matte may not include from maya");
    EXPECT_EQ(judge("render/a.cpp", "#include \"maya/b.h\""), "hosts know materials by name only");
    EXPECT_NE(judge("frame/a.cpp", "#include \"b.h\""), "") << "relative to the file";
    EXPECT_EQ(judge("host/a.cpp", "#include <nlohmann/json.hpp>"), "host may not use nlohmann");
    EXPECT_NE(judge("support/a.cpp", "#include <sys/stat.h>"), "") << "a system header";
}

}  // namespace
