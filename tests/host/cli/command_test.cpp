#include <gmock/gmock.h>

#include "host/cli/program.h"

namespace {

TEST(Command, HelpIsAnswerAndBadUsageIsExplained) {
    const struct {
        std::vector<std::string> words;
        const char* says;
        int exitCode = 2;
    } cases[] = {
        {{"--help"}, "Exit codes", 0},
        {{"--version"}, "pelk ", 0},
        {{"render", "--help"}, "--spp", 0},
        {{"render", "--help"}, "\n  raw_refraction      What refracted rays", 0},
        {{}, "subcommand"},
        {{"rendr", "s.json"}, "did you mean \"render\"?"},
        {{"render"}, "SCENE"},
        {{"render", "s.json", "--size", "0x480"}, "expected WIDTHxHEIGHT"},
        {{"render", "s.json", "--size", "65536x65536"}, "268435456 pixels"},
        {{"render", "s.json", "--spp", "0"}, "--spp"},
        {{"render", "s.json", "--region", "3,3,3,9"}, "expected X0,Y0,X1,Y1"},
        {{"render", "s.json", "--region", "0,0,24,17"}, "24 x 16"},
        {{"render", "s.json", "--tile", "3/2"}, "expected I/N"},
        {{"render", "s.json", "--tile", "1/17"}, "24 x 16"},
        {{"render", "s.json", "--set", "matte=1"}, "expected INSTANCE.PARAM=VALUE"},
        {{"render", "s.json", "--progress", "1"}, "expected auto, json or none, got \"1\""},
        {{"describe", "s.json", "matte", "--section", "Descriptor"}, "HierarchyDescriptor"},
        {{"probe", "s.json", "--pixel", "24,0"}, "the picture has 24 x 16 pixels"},
    };
    for (const auto& c : cases) {
        Program pelk;
        pelk.directory.write("s.json", smallScene());
        const RunResult result = pelk.run(c.words);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.says;
        EXPECT_THAT(c.exitCode == 0 ? result.out : result.err, testing::HasSubstr(c.says));
        EXPECT_EQ(pelk.directory.entryCount(), 1) << "something was written";
    }
}

}  // namespace
