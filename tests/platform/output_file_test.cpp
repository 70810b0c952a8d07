#include "platform/output_file.h"

#include <gmock/gmock.h>

#include "temporary_directory.h"

namespace {

using Tarnkit::platform::OutputFile;
using testing::EndsWith;
using testing::HasSubstr;

TEST(OutputFileTest, EachWriterHasAFileOfItsOwnUntilItCommits) {
    const TemporaryDirectory directory;
    directory.write("shot.exr", "old");
    OutputFile file(directory.file("shot.exr"));
    OutputFile rival(directory.file("shot.exr"));
    EXPECT_THAT(file.getTemporaryName(), EndsWith(".exr"));
    EXPECT_NE(file.getTemporaryName(), rival.getTemporaryName());
    std::ofstream(file.getTemporaryName()) << "new";
    EXPECT_TRUE(file.commit()) << file.getError();
    EXPECT_EQ(directory.read("shot.exr"), "new");
    EXPECT_FALSE(file.commit()) << "twice";
}

TEST(OutputFileTest, FailureNamesTheFileAndLeavesNothing) {
    const TemporaryDirectory directory;
    // A link of its own: where renaming puts a plain file, the system must not lose its device.
    std::filesystem::create_symlink("/dev/null", directory.file("null"));
    OutputFile device(directory.file("null"));
    EXPECT_THAT(device.getError(), HasSubstr(directory.file("null")));
    EXPECT_FALSE(device.commit());

    OutputFile stolen(directory.file("shot.png"));
    std::filesystem::remove(stolen.getTemporaryName());
    EXPECT_FALSE(stolen.commit());
    EXPECT_NE(stolen.getError(), "");
    EXPECT_EQ(directory.entryCount(), 1) << "more than the link";
}

}  // namespace
