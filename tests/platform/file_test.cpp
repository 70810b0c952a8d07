#include "pelk/platform/file.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "temporary_directory.h"

namespace {

using namespace Tarnkit::platform;

TEST(MatchesMask, TakesStarAndQuestionMarkAlone) {
    using Pairs = std::vector<std::pair<const char*, const char*>>;
    // In the first the star must give back what it took at first.
    for (const auto& [name, mask] :
         Pairs{{"aab", "*ab"}, {".so", "*.so"}, {"", "*"}, {"a", "a**"}, {"[a]", "[a]"}})
        EXPECT_TRUE(matchesMask(name, mask)) << name << " by " << mask;
    for (const auto& [name, mask] : Pairs{{"a.so.1", "*.so"}, {"", "?"}, {"a", ""}, {"A", "a"}})
        EXPECT_FALSE(matchesMask(name, mask)) << name << " by " << mask;
}

TEST(MatchesMask, ManyStarsTakeNoExponentialTime) {
    const std::string many = "*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b";
    EXPECT_FALSE(matchesMask(std::string(5000, 'a'), many));
}

TEST(ListFiles, FindsAllKindsSortedByBytes) {
    const TemporaryDirectory directory;
    for (const char* name : {"b.x", "B.x", "a.x", ".hidden.x", "\xc3\xa4.x", "other"})
        directory.write(name, "");
    std::filesystem::create_directory(directory.path / "sub.x");

    const auto expected =
        testing::ElementsAre(".hidden.x", "B.x", "a.x", "b.x", "sub.x", "\xc3\xa4.x");
    EXPECT_THAT(listFiles(directory.file("*.x")), expected);
    EXPECT_THAT(listFiles(directory.path.string() + "\\*.x"), expected) << "the other separator";
}

TEST(FullPath, IsMadeByTheTextAlone) {
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(fullPath("/a/./b//c/../d"), "/a/b/d");
    EXPECT_EQ(fullPath("\\a\\b\\"), "/a/b/");
    EXPECT_EQ(fullPath("/../../a"), "/a");
    EXPECT_EQ(fullPath("..."), here + "/...");
    EXPECT_EQ(fullPath(""), "");
}

}  // namespace
