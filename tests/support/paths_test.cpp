#include "pelk/support/paths.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "pelk/support/directory_list.h"
#include "pelk/support/files.h"
#include "pelk/support/frame_numbers.h"
#include "temporary_directory.h"

using namespace Tarnkit;
namespace fs = std::filesystem;

namespace {

/// The working directory of the process, put back at the end.
struct KeptWorkingDirectory {
    ~KeptWorkingDirectory() { fs::current_path(path); }
    const fs::path path = fs::current_path();
};

/// What an operation makes of a text in a buffer of 64 bytes.
template <class Change>
std::string changed(const char* text, Change change) {
    char buffer[64];
    std::strcpy(buffer, text);
    change(buffer);
    return buffer;
}

}  // namespace

TEST(PathsTest, AbsoluteIsServerOrDrive) {
    for (const char* path : {"\\\\server", "//server", "c:", "c:a", "::"})
        EXPECT_TRUE(isAbsolutePath(path)) << path;
    for (const char* path : {"", "/", "/tmp", "\\a", "\\/a", "a", ":a"})
        EXPECT_TRUE(isRelativePath(path)) << path;
}

TEST(PathsTest, SeparatorsAreAddedTakenAndCollapsed) {
    const struct {
        const char *path, *name;
        int size;
        const char* joined;
    } joins[] = {
        {"a", "b", 64, "a\\b"}, {"a/", "b", 64, "a/b"},    {"a\\", "/b", 64, "a\\b"},
        {"", "b", 64, "b"},     {"", "/b", 64, "b"},       {"a", "", 64, "a"},
        {"a", "/", 64, "a\\"},  {"a", "//b", 64, "a\\/b"}, {"abc", "def", 6, "abc\\d"},
        {"abc", "d", 4, "abc"},
    };
    for (const auto& c : joins) {
        const auto join = [&](char* path) { joinPath(path, c.name, c.size); };
        EXPECT_EQ(changed(c.path, join), c.joined) << c.path << " and " << c.name;
    }
    const struct {
        const char *path, *added, *removed, *collapsed;
    } cases[] = {
        {"", "", "", ""},
        {"a", "a\\", "a", "a"},
        {"a/", "a/", "a", "a/"},
        {"/", "/", "/", "/"},
        {"//\\", "//\\", "/", "\\"},
        {"a\\//b//", "a\\//b//", "a\\//b", "a/b/"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(changed(c.path, [](char* p) { addTrailingSeparator(p, 64); }), c.added);
        EXPECT_EQ(changed(c.path, [](char* p) { removeTrailingSeparators(p, 64); }), c.removed);
        EXPECT_EQ(changed(c.path, collapseSeparators), c.collapsed);
    }
    EXPECT_EQ(changed("a b\xc3\xa4-9Z", [](char* p) { sanitizeName(p, p); }), "a_b___9Z");
}

TEST(PathsTest, EnteringADirectoryIsAllOrNothing) {
    const KeptWorkingDirectory kept;
    const TemporaryDirectory directory;
    const fs::path place = fs::canonical(directory.path);
    char dir[4096] = "~";
    EXPECT_FALSE(enterFileDirectory("", dir, sizeof dir));
    EXPECT_STREQ(dir, "");
    EXPECT_FALSE(enterFileDirectory((place / "none/file").c_str(), dir, sizeof dir));
    EXPECT_FALSE(enterFileDirectory((place / "file").c_str(), dir, 5)) << "does not fit";
    EXPECT_EQ(fs::current_path(), kept.path);
    EXPECT_TRUE(enterFileDirectory((place.string() + "\\file").c_str(), dir, sizeof dir));
    EXPECT_EQ(dir, place.string() + "/");
    EXPECT_EQ(fs::current_path(), place);
}

TEST(FilesTest, DirectoriesAreMadeUpToTheLastSeparator) {
    const KeptWorkingDirectory kept;
    const TemporaryDirectory directory;
    fs::current_path(directory.path);
    EXPECT_FALSE(createDirectories("C:\\a\\b\\c")) << "a drive is not made";
    fs::create_directory("C:");
    directory.write("file", "");
    EXPECT_TRUE(createDirectories("C:\\a\\b\\c"));
    EXPECT_TRUE(isDirectory("C:\\a/b"));
    EXPECT_FALSE(fs::exists("C:/a/b/c"));
    EXPECT_TRUE(createDirectories("x//y/"));
    EXPECT_TRUE(createDirectories((directory.path / "z/").c_str()));
    EXPECT_TRUE(isDirectory("x/y") && isDirectory("z"));
    EXPECT_FALSE(createDirectories("file/")) << "in the way";
    EXPECT_FALSE(createDirectories(nullptr) || createDirectories(""));
    const std::string longest = "long/" + std::string(254, 'f');
    EXPECT_FALSE(createDirectories((longest + "f").c_str()));
    EXPECT_FALSE(fs::exists("long"));
    EXPECT_TRUE(createDirectories(longest.c_str()));
}

TEST(FilesTest, CopiesAreWholeOrNotThere) {
    const TemporaryDirectory directory;
    const std::string from = directory.file("\xff name"), to = directory.file("to");
    for (const std::size_t size : {0, 1, 1024, 5000}) {
        for (const bool bytes : {false, true}) {
            directory.write("\xff name", std::string(size, 'x'));
            directory.write("to", "older and longer than one byte");
            EXPECT_TRUE((bytes ? copyFileBytes : copyFile)(from.c_str(), to.c_str()));
            EXPECT_EQ(directory.read("to"), std::string(size, 'x'));
        }
    }
    const std::string place = directory.path.string(), none = directory.file("none");
    for (const auto copy : {copyFile, copyFileBytes}) {
        EXPECT_FALSE(copy(none.c_str(), to.c_str()));
        EXPECT_FALSE(copy(place.c_str(), to.c_str()));
        EXPECT_FALSE(copy(to.c_str(), place.c_str()));
        copy(to.c_str(), to.c_str());
        EXPECT_EQ(directory.read("to").size(), 5000u) << "lost";
    }
    EXPECT_TRUE(moveFile(to.c_str(), none.c_str()) && deleteFile(none.c_str()));
    EXPECT_FALSE(deleteFile(none.c_str()) || deleteFile(place.c_str()) || moveFile("", ""));
    EXPECT_EQ(directory.entryCount(), 1) << "something was left";
}

TEST(DirectoryListTest, WalksWhatMatches) {
    const TemporaryDirectory directory;
    for (const char* name : {"b.x", ".h.x", "a.x", "..x", "c.y"})
        directory.write(name, "");
    const std::string place = directory.path.string() + "\\";
    DirectoryList list;
    EXPECT_FALSE(list.construct((place + "*.z").c_str()));
    EXPECT_TRUE(list.isEmpty() && !list.next() && !list.getItem(0));
    for (int twice = 0; twice < 2; ++twice) {
        ASSERT_TRUE(list.construct((place + "*.x").c_str()));
        EXPECT_EQ(list.getCount(), 3);
    }
    std::swap(list.items[0], list.items[2]);
    list.sort();
    list.next();
    list.rewind();
    for (const char* name : {".h.x", "a.x", "b.x"})
        EXPECT_EQ(list.next(), place + name);
    EXPECT_FALSE(list.next() || list.getItem(-1) || list.getItem(3));
}
