#include <sys/stat.h>

#include <filesystem>

#include "host/cli/program.h"

using testing::HasSubstr;

namespace {

class MergeCommand : public CommandTest {
protected:
    RunResult merge(std::vector<std::string> words) {
        words.insert(words.begin(), "merge");
        return pelk.run(words);
    }
};

TEST_F(MergeCommand, SevenTilesOfSevenRendersAreThePicture) {
    const std::string channels = "depth,render_id,normals";
    for (int i = 1; i <= 7; ++i)
        render({"--channels", channels, "--tile", std::to_string(i) + "/7", "-o",
                std::to_string(i) + ".pkr", "--tile-size", std::to_string(i)});
    render({"--channels", channels, "--tile", "2/7", "-o", "again.PKR", "--threads", "1"});
    ASSERT_EQ(render({"--channels", channels, "-o", "whole.exr", "-o", "whole.pkr"}).exitCode, 0);
    const RunResult some = merge({"3.pkr", "2.pkr", "4.pkr", "-o", "2-4.pkr", "--allow-missing"});
    EXPECT_EQ(some.exitCode, 0);
    EXPECT_THAT(some.out, HasSubstr("Missing tiles 1,5-7 of 7\n"));
    const RunResult result = merge(
        {"7.pkr", "2-4.pkr", "1.pkr", "again.PKR", "6.pkr", "5.pkr", "-o", "a.exr", "-o", "a.pkr"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out,
              "Wrote " + directory.file("a.exr") + "\nWrote " + directory.file("a.pkr") + "\n");
    const std::vector<float> whole = pixels("whole.exr");
    ASSERT_EQ(whole.size(), 24u * 16 * (4 + 1 + 1 + 3));
    EXPECT_EQ(pixels("a.exr"), whole);
    // A whole picture is a region too, and one file can be all that is merged.
    ASSERT_EQ(merge({"a.pkr", "whole.pkr", "-o", "b.exr", "-o", "b.png", "--host-stamp"}).exitCode,
              0);
    EXPECT_EQ(pixels("b.exr").size(), 24u * 16 * (4 + 1 + 1 + 3 + 3));
    EXPECT_EQ(pixels("b.png").size(), 24u * 16 * 3) << "the stamp has no alpha";
}

TEST_F(MergeCommand, RefusalsHaveTheirCodesAndLeaveAllFilesAsTheyWere) {
    render({"--tile", "1/2", "-o", "1.pkr"});
    render({"--tile", "2/2", "-o", "2.pkr", "--spp", "1"});
    directory.write("old.exr", "older");
    std::filesystem::create_hard_link(directory.file("1.pkr"), directory.file("same.pkr"));
    std::filesystem::create_symlink("2.pkr", directory.file("link.pkr"));
    mkfifo(directory.file("pipe.pkr").c_str(), 0600);
    const std::string beyond(300, 'n');
    expectRefused({"merge", "1.pkr"},
                  {{{"-o", "old.exr"}, 1, "tiles 2 of 2"},
                   {{"pipe.pkr", "-o", "old.exr"}, 1, "no plain file"},
                   {{"2.pkr", "--allow-uneven", "-o", "same.pkr"}, 2, "same.pkr"},
                   {{"2.pkr", "--allow-uneven", "-o", "link.pkr"}, 2, "link.pkr"},
                   {{"2.pkr", "--allow-uneven"}, 2, "--output"},
                   {{"2.pkr", "--allow-uneven", "-o", "a.jpg"}, 2, ".pkr"},
                   {{"2.pkr", "--allow-uneven", "-o", beyond + ".exr"}, 3, "too long"}});
}

TEST_F(MergeCommand, OutputThatDoesNotFitLeavesTheOldAndNamesMayBeAnyBytes) {
    const std::string longName = std::string(251, 'n') + ".pkr", bytes = "\xff\xfe.pkr";
    ASSERT_EQ(render({"-o", longName, "-o", bytes}).exitCode, 0);
    for (const char* name : {"a.png", "a.exr", "a.pkr"})
        directory.write(name, "older");
    pelk.largestFile = 250;
    expectRefused({}, {{{"render", "s.json", "-o", "a.png", "-o", "a.exr"}, 3, "File too large"},
                       {{"merge", bytes, "-o", "a.exr", "-o", "a.pkr"}, 3, "File too large"},
                       {{"list", "--json"}, 3, "cannot write the results"}});
    pelk.largestFile = 0;
    EXPECT_EQ(merge({longName, bytes, "-o", "\xff\xfe.exr"}).exitCode, 0);
    EXPECT_EQ(pixels("\xff\xfe.exr").size(), 24u * 16 * 4);
}

}  // namespace
