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

/// The folders of pelk/ and the floor of each. What stands in a folder that is not named belongs to
/// the one around it.
const std::map<std::string, int> kFloors{
    {"platform", 0},
    {"base", 1},
    {"contract", 2},
    {"shading_math", 2},
    {"support", 3},
    {"support/regions", 4},
    {"materials/descriptor", 3},
    {"materials/surface", 4},
    {"materials/matte", 4},
    {"materials/composite", 4},
    {"materials/maya", 4},
    {"materials/library", 5},
    {"host/picture", 5},
    {"host/trace", 6},
    {"host/plugins", 7},
    {"host/scene", 8},
    {"host/render", 9},
    {"host/cli", 10},
};

/// Libraries that are not ours, by the first folder of their headers, and who may include them.
const std::map<std::string, std::set<std::string>> kLibraries{
    {"embree3", {"host/trace"}},
    {"assimp", {"host/plugins"}},
    {"OpenImageIO", {"host/plugins", "host/picture"}},
    {"nlohmann", {"host/scene", "host/plugins/mesh_check.cpp", "host/plugins/mesh_files.cpp"}},
    {"CLI", {"host/cli"}},
    {"xxhash.h", {"host/picture/content_hash.cpp"}},
};

/// The named folder that a file below pelk/ belongs to, empty if there is none.
std::string folderOf(std::string path) {
    while (!path.empty() && !kFloors.contains(path))
        path.resize(path.find_last_of('/') == path.npos ? 0 : path.find_last_of('/'));
    return path;
}

std::string houseOf(const std::string& path) {
    return path.substr(0, path.find('/'));
}

/// What is wrong with `from`, a file below pelk/, including `to`, another one; empty if nothing is.
std::string judgeOwn(const std::string& file, const std::string& included) {
    const std::string from = folderOf(file), to = folderOf(included);
    if (to.empty())
        return included + " is in no folder of pelk/";
    if (from != to && kFloors.at(to) >= kFloors.at(from))
        return from + " may not include from " + to;
    if (houseOf(from) == "host" && houseOf(to) == "materials")
        return "hosts know materials by name only";
    if (houseOf(from) == "materials" && houseOf(to) == "support")
        return "materials stand on the contract alone";
    if (from != to && included.starts_with(to + "/private/"))
        return included + " is private to " + to;
    return "";
}

/// What is wrong with a line of a file, which is named by its path below pelk/; empty if nothing
/// is. Folders include from lower floors only, hosts know materials by name only, and what serves
/// the host or belongs to the operating system is used where it may be and nowhere else.
std::string judge(const std::string& file, const std::string& line) {
    char opening, text[256];
    // Each blank stands for any number of blanks.
    if (std::sscanf(line.c_str(), " # include %c%255[^\">]", &opening, text) != 2)
        return "";
    const std::string path = text;
    if (path.starts_with("pelk/"))
        return judgeOwn(file, path.substr(5));
    if (opening == '"')
        return "includes of this tree start with pelk/";
    if (const auto library = kLibraries.find(houseOf(path)); library != kLibraries.end()) {
        const std::set<std::string>& users = library->second;
        return users.contains(folderOf(file)) || users.contains(file)
                   ? ""
                   : folderOf(file) + " may not use " + library->first;
    }
    // A header of the C++ standard library has a name of one word, and is everyone's.
    if (path.find_first_of("./") == path.npos || file.starts_with("platform/posix/"))
        return "";
    if (path.ends_with(".h"))
        return "system headers belong in platform/posix";
    return path + " belongs to a library that nobody may use";
}

TEST(Floors, ThisTreeKeepsThem) {
    std::vector<std::string> problems;
    int files = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(PELK_SOURCE_DIR)) {
        const fs::path& path = entry.path();
        if (path.extension() != ".h" && path.extension() != ".cpp")
            continue;
        const std::string file = path.lexically_relative(PELK_SOURCE_DIR).generic_string();
        ASSERT_NE(folderOf(file), "") << file << ": on no floor";
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
    const struct {
        const char *file, *included, *problem = "";
    } cases[] = {
        {"contract/a.cpp", "\"pelk/base/b.h\""},
        {"base/a.cpp", "\"pelk/base/b.h\""},
        {"contract/a.cpp", "\"pelk/contract/private/b.h\""},
        {"host/trace/a.cpp", "<embree3/rtcore.h>"},
        {"host/plugins/mesh_check.cpp", "<nlohmann/json.hpp>"},
        {"platform/posix/a.cpp", "<unistd.h>"},
        {"base/a.h", "<string_view>"},
        {"base/a.cpp", "<pelk/host/cli/b.h>", "base may not include from host/cli"},
        {"contract/a.h", "\"pelk/shading_math/b.h\"", "contract may not include from shading_math"},
        {"support/a.h", "\"pelk/support/regions/b.h\"",
         "support may not include from support/regions"},
        {"materials/maya/a.h", "\"pelk/materials/matte/b.h\"",
         "materials/maya may not include from materials/matte"},
        {"host/cli/a.cpp", "\"pelk/materials/maya/b.h\"", "hosts know materials by name only"},
        {"materials/maya/a.cpp", "\"pelk/support/b.h\"", "materials stand on the contract alone"},
        {"support/a.cpp", "\"pelk/base/private/b.h\"", "base/private/b.h is private to base"},
        {"base/a.cpp", "\"pelk/other/b.h\"", "other/b.h is in no folder of pelk/"},
        {"base/a.cpp", "\"b.h\"", "includes of this tree start with pelk/"},
        {"host/plugins/a.cpp", "<nlohmann/json.hpp>", "host/plugins may not use nlohmann"},
        {"host/plugins/a.cpp", "<embree3/rtcore.h>", "host/plugins may not use embree3"},
        {"support/a.cpp", "<sys/stat.h>", "system headers belong in platform/posix"},
        {"host/cli/a.cpp", "<fmt/core>", "fmt/core belongs to a library that nobody may use"},
        {"host/cli/a.cpp", "<tbb.hpp>", "tbb.hpp belongs to a library that nobody may use"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(judge(c.file, std::string("  # include\t") + c.included), c.problem)
            << c.file << c.included;
}

}  // namespace
