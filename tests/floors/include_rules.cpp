#include "floors/include_rules.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string_view>

namespace fs = std::filesystem;

namespace {

const std::map<std::string_view, int> kFloors{
    {"platform", 0}, {"frame", 1},   {"descriptor", 2}, {"host", 2},
    {"support", 2},  {"surface", 3}, {"matte", 3},      {"composite", 3},
    {"maya", 3},     {"library", 4}, {"render", 4},     {"pelk", 5},
};
constexpr int kMaterialFloor = 3;

// Hosts know materials by name only, through the plug-in manager.
const std::set<std::string_view> kHosts{"render", "pelk"};
const std::set<std::string_view> kHostLibraries{"embree3", "OpenImageIO", "assimp", "nlohmann",
                                                "CLI"};

struct Include {
    std::string_view path;
    bool quoted = false;
};

/// Takes an include directive apart; false if the line is none.
bool parseInclude(std::string_view line, Include& include) {
    const auto skipBlanks = [&line] {
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    };
    skipBlanks();
    if (!line.starts_with('#'))
        return false;
    line.remove_prefix(1);
    skipBlanks();
    if (!line.starts_with("include"))
        return false;
    line.remove_prefix(7);
    skipBlanks();
    if (line.empty() || (line[0] != '"' && line[0] != '<'))
        return false;
    include.quoted = line[0] == '"';
    line.remove_prefix(1);
    include.path = line.substr(0, line.find(include.quoted ? '"' : '>'));
    return true;
}

std::string withFloor(std::string_view folder, int floor) {
    return std::string(folder) + " (floor " + std::to_string(floor) + ")";
}

/// What is wrong with an include of a header of this tree; empty if nothing is.
std::string judgeOwn(std::string_view from, std::string_view to) {
    const int fromFloor = kFloors.at(from), toFloor = kFloors.at(to);
    if (from != to && toFloor >= fromFloor)
        return withFloor(from, fromFloor) + " may not include from " + withFloor(to, toFloor);
    if (kHosts.contains(from) && toFloor == kMaterialFloor)
        return std::string(from) + " knows materials by name only, and may not include from " +
               std::string(to);
    return {};
}

/// The same for a header that stands elsewhere.
std::string judgeForeign(std::string_view file, std::string_view folder, std::string_view path) {
    const std::string_view first = path.substr(0, path.find('/'));
    if (kHostLibraries.contains(first) && first != path)
        return kHosts.contains(folder) ? ""
                                       : std::string(folder) + " may not use " + std::string(first);
    if (path.ends_with(".h") && !file.starts_with("platform/posix/"))
        return "system headers belong in platform/posix";
    return {};
}

std::string judge(std::string_view file, std::string_view folder, const Include& include) {
    const std::string_view first = include.path.substr(0, include.path.find('/'));
    if (kFloors.contains(first) && first != include.path)
        return judgeOwn(folder, first);
    if (include.quoted)
        return "includes of this tree start with a folder of src/";
    return judgeForeign(file, folder, include.path);
}

void checkFile(const fs::path& path, const std::string& name, TreeReport& report) {
    const std::string folder = name.substr(0, name.find('/'));
    if (!kFloors.contains(folder)) {
        report.problems.push_back(name + ": the folder stands on no floor");
        return;
    }
    std::ifstream stream(path);
    bool guarded = false;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        guarded = guarded || line.starts_with("#pragma once");
        Include include;
        if (!parseInclude(line, include))
            continue;
        const std::string problem = judge(name, folder, include);
        if (!problem.empty())
            report.problems.push_back(name + ":" + std::to_string(number) + ": " +
                                      std::string(include.path) + ": " + problem);
    }
    if (path.extension() == ".h" && !guarded)
        report.problems.push_back(name + ": a header starts with #pragma once");
}

}  // namespace

TreeReport checkTree(const std::string& root) {
    TreeReport report;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        const fs::path extension = entry.path().extension();
        if (!entry.is_regular_file() || (extension != ".h" && extension != ".cpp"))
            continue;
        ++report.files;
        checkFile(entry.path(), entry.path().lexically_relative(root).generic_string(), report);
    }
    std::sort(report.problems.begin(), report.problems.end());
    return report;
}
