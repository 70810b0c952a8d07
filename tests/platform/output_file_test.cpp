#include "pelk/platform/output_file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <climits>
#include <cstring>

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
    mkfifo(directory.file("pipe").c_str(), 0600);
    OutputFile pipe(directory.file("pipe"));
    EXPECT_THAT(pipe.getError(), HasSubstr(directory.file("pipe")));
    EXPECT_FALSE(pipe.commit());

    // As long as the system takes them, and what is longer is known before a picture is rendered.
    const std::string name(251, 'n');
    EXPECT_TRUE(OutputFile(directory.file(name + ".png")).commit());
    EXPECT_THAT(OutputFile(directory.file(name + "n.png")).getError(), HasSubstr("too long"));
    std::filesystem::remove(directory.file(name + ".png"));
    std::string deep = directory.path.string();
    while (deep.size() + 200 < PATH_MAX - 60)
        deep.append("/").append(name, 0, 199);
    std::filesystem::create_directories(deep);
    OutputFile deepest(deep + "/" + std::string(PATH_MAX - 6 - deep.size(), 'n') + ".png");
    EXPECT_TRUE(deepest.commit()) << deepest.getError();
    std::filesystem::remove_all(directory.file(name.substr(0, 199)));

    OutputFile stolen(directory.file("shot.png"));
    std::filesystem::remove(stolen.getTemporaryName());
    EXPECT_FALSE(stolen.commit());
    EXPECT_NE(stolen.getError(), "");
    EXPECT_EQ(directory.entryCount(), 1) << "more than the pipe";
}

TEST(OutputFileTest, ALinkStaysAndASignalHandlerCanDropWhatIsUnfinished) {
    const TemporaryDirectory directory;
    std::filesystem::create_symlink("shot.png", directory.file("link.png"));
    for (const char* content : {"new", "newer"}) {
        OutputFile file(directory.file("link.png"));
        file.write(content, std::strlen(content));
        EXPECT_TRUE(file.commit()) << file.getError();
        EXPECT_EQ(directory.read("shot.png"), content);
    }
    EXPECT_TRUE(std::filesystem::is_symlink(directory.file("link.png")));
    std::filesystem::create_symlink("ring.png", directory.file("ring.png"));
    EXPECT_THAT(OutputFile(directory.file("ring.png")).getError(), HasSubstr("ring.png"));

    const OutputFile unfinished(directory.file("shot.png"));
    EXPECT_EQ(directory.entryCount(), 4);
    Tarnkit::platform::dropUnfinishedOutput();
    EXPECT_EQ(directory.entryCount(), 3);
}

}  // namespace
