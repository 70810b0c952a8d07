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
    OutputFile device("/dev/null");  // renaming would put a plain file in its place
    EXPECT_THAT(device.getError(), HasSubstr("\"/dev/null\""));
    EXPECT_FALSE(device.commit());

    OutputFile stolen(directory.file("shot.png"));
    std::filesystem::remove(stolen.getTemporaryName());
    EXPECT_FALSE(stolen.commit());
    EXPECT_NE(stolen.getError(), "");
    EXPECT_EQ(directory.entryCount(), 0);
}

}  // namespace
