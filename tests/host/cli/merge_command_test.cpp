#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "host/cli/program.h"

using testing::HasSubstr;

namespace {

class MergeCommand : public testing::Test {
protected:
    MergeCommand() { directory.write("s.json", smallScene()); }

    void render(const std::vector<std::string>& words) {
        std::vector<std::string> all{"render", "s.json"};
        all.insert(all.end(), words.begin(), words.end());
        const RunResult result = pelk.run(all);
        ASSERT_EQ(result.exitCode, 0) << result.err;
    }
    RunResult merge(std::vector<std::string> words) {
        words.insert(words.begin(), "merge");
        return pelk.run(words);
    }
    Program pelk;
    TemporaryDirectory& directory = pelk.directory;
};

TEST_F(MergeCommand, SevenTilesOfSevenRendersAreThePicture) {
    const std::string channels = "depth,render_id,normals";
    for (int i = 1; i <= 7; ++i)
        render({"--channels", channels, "--tile", std::to_string(i) + "/7", "-o",
                std::to_string(i) + ".pkr", "--tile-size", std::to_string(i)});
    render({"--channels", channels, "--tile", "2/7", "-o", "again.PKR", "--threads", "1"});
    render({"--channels", channels, "-o", "whole.exr", "-o", "whole.pkr"});
    const RunResult some = merge({"3.pkr", "2.pkr", "4.pkr", "-o", "2-4.pkr", "--allow-missing"});
    EXPECT_EQ(some.exitCode, 0);
    EXPECT_THAT(some.out, HasSubstr("Missing tiles 1,5-7 of 7\n"));
    const RunResult result = merge(
        {"7.pkr", "2-4.pkr", "1.pkr", "again.PKR", "6.pkr", "5.pkr", "-o", "a.exr", "-o", "a.pkr"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out,
              "Wrote " + directory.file("a.exr") + "\nWrote " + directory.file("a.pkr") + "\n");
    const std::vector<float> whole = readPicture(directory.file("whole.exr"));
    ASSERT_EQ(whole.size(), 24u * 16 * (4 + 1 + 1 + 3));
    EXPECT_EQ(readPicture(directory.file("a.exr")), whole);
    // A whole picture is a region too, and one file can be all that is merged.
    ASSERT_EQ(merge({"a.pkr", "whole.pkr", "-o", "b.exr", "-o", "b.png", "--host-stamp"}).exitCode,
              0);
    EXPECT_EQ(readPicture(directory.file("b.exr")).size(), 24u * 16 * (4 + 1 + 1 + 3 + 3));
    EXPECT_EQ(readPicture(directory.file("b.png")).size(), 24u * 16 * 3)
        << "the stamp has no alpha";
}

TEST_F(MergeCommand, RefusalsHaveTheirCodesAndLeaveAllFilesAsTheyWere) {
    render({"--tile", "1/2", "-o", "1.pkr"});
    render({"--tile", "2/2", "-o", "2.pkr", "--spp", "1"});
    directory.write("old.exr", "older");
    std::filesystem::create_hard_link(directory.file("1.pkr"), directory.file("same.pkr"));
    std::filesystem::create_symlink("2.pkr", directory.file("link.pkr"));
    mkfifo(directory.file("pipe.pkr").c_str(), 0600);
    const std::string before = directory.read("1.pkr"), longName(4096, 'n');
    const struct {
        std::vector<std::string> words;
        int exitCode;
        const char* says;
    } cases[] = {
        {{"1.pkr", "-o", "old.exr"}, 1, "tiles 2 of 2"},
        {{"1.pkr", "pipe.pkr", "-o", "old.exr"}, 1, "no plain file"},
        {{"1.pkr", "2.pkr", "--allow-uneven", "-o", "same.pkr"}, 2, "same.pkr"},
        {{"1.pkr", "2.pkr", "--allow-uneven", "-o", "link.pkr"}, 2, "link.pkr"},
        {{"1.pkr", "2.pkr", "--allow-uneven"}, 2, "--output"},
        {{"1.pkr", "2.pkr", "--allow-uneven", "-o", "a.jpg"}, 2, ".pkr"},
        {{"1.pkr", "2.pkr", "--allow-uneven", "-o", longName + ".exr"}, 3, "too long"},
    };
    const std::ptrdiff_t entries = directory.entryCount();
    for (const auto& c : cases) {
        const RunResult result = merge(c.words);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
        EXPECT_THAT(result.err, HasSubstr(c.says));
        EXPECT_EQ(directory.read("old.exr"), "older");
        EXPECT_EQ(directory.read("1.pkr"), before);
        EXPECT_EQ(directory.entryCount(), entries) << c.says;
    }
}

TEST_F(MergeCommand, OutputThatDoesNotFitLeavesTheOldAndNamesMayBeAnyBytes) {
    const std::string longName(251, 'n'), bytes = "\xff\xfe";
    render({"-o", longName + ".pkr", "-o", bytes + ".pkr"});
    for (const char* name : {"a.exr", "a.pkr"})
        directory.write(name, "older");
    rlimit former;
    getrlimit(RLIMIT_FSIZE, &former);
    rlimit tight = former;
    tight.rlim_cur = 300;  // the program inherits it
    setrlimit(RLIMIT_FSIZE, &tight);
    const RunResult merged = merge({bytes + ".pkr", "-o", "a.exr", "-o", "a.pkr"});
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(merged.exitCode, 3);
    EXPECT_THAT(merged.err, HasSubstr("File too large"));
    for (const char* name : {"a.exr", "a.pkr"})
        EXPECT_EQ(directory.read(name), "older");
    EXPECT_EQ(directory.entryCount(), 5) << "a temporary file was left";
    EXPECT_EQ(merge({longName + ".pkr", bytes + ".pkr", "-o", bytes + ".exr"}).exitCode, 0);
    EXPECT_GT(directory.read(bytes + ".exr").size(), 300u);
}

}  // namespace
