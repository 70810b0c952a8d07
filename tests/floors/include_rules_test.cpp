#include "floors/include_rules.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "temporary_directory.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(Floors, ThisTreeKeepsThem) {
    const TreeReport report = checkTree(PELK_SOURCE_DIR);
    EXPECT_THAT(report.problems, IsEmpty());
    EXPECT_GT(report.files, 50) << "looked in the wrong place";
}

/// Every rule is broken once in a made-up tree: a rule that finds nothing guards nothing.
TEST(Floors, EachBreachIsFound) {
    const struct {
        const char *what, *file, *text, *problem;
    } cases[] = {
        {"from below", "host/a.cpp", "#include \"frame/b.h\"\n", nullptr},
        {"from its own folder", "frame/a.cpp", "#include \"frame/b.h\"\n", nullptr},
        {"library of the host, in the host", "render/a.cpp", "#include <embree3/rtcore.h>\n",
         nullptr},
        {"system header, in its place", "platform/posix/a.cpp", "#include <unistd.h>\n", nullptr},
        {"up", "frame/a.cpp", "\n#include \"host/b.h\"\n",
         "frame/a.cpp:2: host/b.h: frame (floor 1) may not include from host (floor 2)"},
        {"up, in other clothes", "frame/a.cpp", "  # include\t<pelk/b.h>\n",
         "frame/a.cpp:1: pelk/b.h: frame (floor 1) may not include from pelk (floor 5)"},
        {"sideways", "matte/a.cpp", "#include \"maya/b.h\"\n",
         "matte/a.cpp:1: maya/b.h: matte (floor 3) may not include from maya (floor 3)"},
        {"a material, by the host", "render/a.cpp", "#include \"surface/b.h\"\n",
         "render/a.cpp:1: surface/b.h: render knows materials by name only, and may not include "
         "from surface"},
        {"relative to the file", "frame/a.cpp", "#include \"b.h\"\n",
         "frame/a.cpp:1: b.h: includes of this tree start with a folder of src/"},
        {"library of the host, elsewhere", "support/a.cpp", "#include <nlohmann/json.hpp>\n",
         "support/a.cpp:1: nlohmann/json.hpp: support may not use nlohmann"},
        {"system header, elsewhere", "support/a.cpp", "#include <sys/stat.h>\n",
         "support/a.cpp:1: sys/stat.h: system headers belong in platform/posix"},
        {"unguarded header", "frame/a.h", "struct A;\n",
         "frame/a.h: a header starts with #pragma once"},
        {"folder without a floor", "attic/a.cpp", "\n",
         "attic/a.cpp: the folder stands on no floor"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryDirectory tree;
        std::filesystem::create_directories(std::filesystem::path(tree.file(c.file)).parent_path());
        tree.write(c.file, c.text);
        const TreeReport report = checkTree(tree.path.string());
        EXPECT_EQ(report.files, 1);
        if (c.problem)
            EXPECT_THAT(report.problems, ElementsAre(c.problem));
        else
            EXPECT_THAT(report.problems, IsEmpty());
    }
}

}  // namespace
