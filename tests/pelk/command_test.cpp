#include <gmock/gmock.h>

#include "pelk/program.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

struct Case {
    std::vector<std::string> words;
    const char* says;
};

TEST(Command, HelpAndVersionAreAnswers) {
    const Case cases[] = {
        {{"--help"}, "Exit codes"},
        {{"--version"}, "pelk "},
        {{"render", "--help"}, "--spp"},
    };
    for (const auto& c : cases) {
        Program pelk;
        const RunResult result = pelk.run(c.words);
        EXPECT_EQ(result.exitCode, 0) << c.says;
        EXPECT_THAT(result.out, HasSubstr(c.says));
        EXPECT_EQ(result.err, "");
    }
}

TEST(Command, BadUsageIsExplainedAndDoesNothing) {
    const Case cases[] = {
        {{}, "subcommand"},
        {{"rendr", "s.json"}, "did you mean \"render\"?"},
        {{"render"}, "SCENE"},
        {{"render", "s.json", "--size", "0x480"}, "expected WIDTHxHEIGHT"},
        {{"render", "s.json", "--size", "65536x65536"}, "expected WIDTHxHEIGHT"},
        {{"render", "s.json", "--spp", "0"}, "--spp"},
        {{"render", "s.json", "--region", "3,3,3,9"}, "expected X0,Y0,X1,Y1"},
        {{"render", "s.json", "--region", "0,0,24,17"}, "24 x 16"},
        {{"render", "s.json", "--tile", "3/2"}, "expected I/N"},
        {{"render", "s.json", "--tile", "1/17"}, "24 x 16"},
        {{"render", "s.json", "--set", "matte=1"}, "expected INSTANCE.PARAM=VALUE"},
        {{"describe", "s.json", "matte", "--section", "Descriptor"}, "HierarchyDescriptor"},
        {{"probe", "s.json", "--pixel", "24,0"}, "the picture has 24 x 16 pixels"},
    };
    for (const auto& c : cases) {
        Program pelk;
        pelk.directory.write("s.json", smallScene());
        const RunResult result = pelk.run(c.words);
        EXPECT_EQ(result.exitCode, 2) << c.says;
        EXPECT_THAT(result.err, HasSubstr(c.says));
        EXPECT_EQ(pelk.directory.entryCount(), 1) << "something was written";
    }
}

TEST(Command, TheDebugLogKeepsAllMessages) {
    Program pelk;
    pelk.directory.write("s.json", smallScene());
    pelk.environment = {{"TMPDIR", pelk.directory.path.string()}, {"PELK_NUM_THREADS", "3"}};
    pelk.directory.write("pelk_dbg_log_7", "of an earlier run");
    const RunResult result = pelk.run({"describe", "s.json", "mate", "--debug-log", "7"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(pelk.directory.read("pelk_dbg_log_7"),
                AllOf(StartsWith("pelk "), HasSubstr(" 3 threads\n"), HasSubstr(result.err)));
}

}  // namespace
