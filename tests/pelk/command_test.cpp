#include <gmock/gmock.h>

#include "pelk/program.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct Case {
    std::vector<std::string> words;
    const char* says;
};

TEST(Command, HelpAndVersionAreAnswers) {
    const Case cases[] = {
        {{"--help"}, "Exit codes"},      {{"--version"}, "pelk "},
        {{"render", "--help"}, "--spp"}, {{"list", "--help"}, "--json"},
        {{"info", "--help"}, "PLUGIN"},  {{"describe", "--help"}, "--section"},
    };
    for (const auto& c : cases) {
        Program pelk;
        const RunResult result = pelk.run(c.words);
        EXPECT_EQ(result.exitCode, 0) << c.says;
        EXPECT_THAT(result.out, HasSubstr(c.says));
        EXPECT_THAT(result.err, IsEmpty());
    }
}

TEST(Command, BadUsageIsExplainedAndDoesNothing) {
    const Case cases[] = {
        {{}, "subcommand"},
        {{"rendr", "s.json"}, "did you mean \"render\"?"},
        {{"render"}, "SCENE"},
        {{"render", "s.json", "t.json"}, "t.json"},
        {{"render", "s.json", "--size", "640"}, "expected WIDTHxHEIGHT"},
        {{"render", "s.json", "--size", "0x480"}, "expected WIDTHxHEIGHT"},
        {{"render", "s.json", "--size", "65536x65536"}, "expected WIDTHxHEIGHT"},
        {{"render", "s.json", "--spp", "0"}, "--spp"},
        {{"render", "s.json", "--threads", "many"}, "--threads"},
        {{"render", "s.json", "--region", "3,3,3,9"}, "expected X0,Y0,X1,Y1"},
        {{"render", "s.json", "--region", "0,0,24,17"}, "24 x 16"},
        {{"render", "s.json", "--tile", "3/2"}, "expected I/N"},
        {{"render", "s.json", "--tile", "1/17"}, "24 x 16"},
        {{"render", "s.json", "--tile", "1/2", "--region", "0,0,4,4"}, "--region"},
        {{"render", "s.json", "--set", "matte=1"}, "expected INSTANCE.PARAM=VALUE"},
        {{"render", "s.json", "--progress", "xml"}, "--progress"},
        {{"describe", "s.json"}, "INSTANCE"},
        {{"describe", "s.json", "matte", "--section", "Descriptor"}, "HierarchyDescriptor"},
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

}  // namespace
