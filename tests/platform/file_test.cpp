#include "platform/file.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "temporary_directory.h"

namespace {

using namespace Tarnkit::platform;

TEST(MatchesMask, TakesStarAndQuestionMarkAlone) {
    const struct {
        const char *name, *pattern;
        bool matches;
    } cases[] = {
        {"a.so", "*.so", true},   {".so", "*.so", true}, {"a.so.1", "*.so", false},
        {"aab", "*ab", true},  // the star must give back what it took first
        {"abcabd", "a*b?", true}, {"ab", "a?b", false},  {"", "*", true},
        {"", "?", false},         {"", "", true},        {"a", "", false},
        {"A", "a", false},        {"a", "a**", true},    {"[a]", "[a]", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(matchesMask(c.name, c.pattern), c.matches) << c.name << " by " << c.pattern;
}

TEST(MatchesMask, ManyStarsTakeNoExponentialTime) {
    std::string pattern;
    for (int i = 0; i < 200; ++i)
        pattern += "a*";
    EXPECT_FALSE(matchesMask(std::string(5000, 'a'), pattern + "b"));
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
    EXPECT_THAT(listFiles(directory.file("none*")), testing::IsEmpty());
    EXPECT_THAT(listFiles(directory.file("missing/*")), testing::IsEmpty());
}

TEST(FullPath, IsMadeByTheTextAlone) {
    const std::string here = std::filesystem::current_path().string();
    const struct {
        const char* path;
        std::string full;
    } cases[] = {
        {"/a/./b//c/../d", "/a/b/d"},
        {"\\a\\b\\", "/a/b/"},
        {"/../../a", "/a"},
        {"/a/..", "/"},
        {"/", "/"},
        {"no such file", here + "/no such file"},
        {"./x/..", here},
        {"...", here + "/..."},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fullPath(c.path), c.full) << c.path;
}

TEST(TemporaryDirectoryName, EndsInASeparatorAndFits) {
    const char* former = std::getenv("TMPDIR");
    const std::string saved = former ? former : "";
    const struct {
        const char *setting, *directory;
    } cases[] = {
        {"", "/tmp/"},           {"/x", "/x/"}, {"/x/", "/x/"}, {"/12345678", "/12345678/"},
        {"/123456789", "/tmp/"},  // with separator and terminator one too long
    };
    for (const auto& c : cases) {
        char buffer[11];
        setenv("TMPDIR", c.setting, 1);
        temporaryDirectory(buffer, sizeof buffer);
        EXPECT_STREQ(buffer, c.directory) << c.setting;
    }
    former ? setenv("TMPDIR", saved.c_str(), 1) : unsetenv("TMPDIR");
}

}  // namespace
