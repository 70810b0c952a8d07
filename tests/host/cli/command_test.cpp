#include "host/cli/program.h"

namespace {

using Command = CommandTest;

TEST_F(Command, HelpIsAnswerAndBadUsageIsExplained) {
    const std::pair<std::vector<std::string>, const char*> answers[] = {
        {{"--help"}, "Exit codes"},
        {{"--version"}, "pelk "},
        {{"render", "--help"}, "--spp"},
        {{"render", "--help"}, "\n  raw_refraction      What refracted rays"},
    };
    for (const auto& [words, says] : answers) {
        const RunResult result = pelk.run(words);
        EXPECT_EQ(result.exitCode, 0) << says;
        EXPECT_THAT(result.out, testing::HasSubstr(says));
    }
    const std::string endless(99999, '1');
    expectRefused(
        {}, {{{}, 2, "subcommand"},
             {{"rendr", "s.json"}, 2, "did you mean \"render\"?"},
             {{"render"}, 2, "SCENE"},
             {{"describe", "s.json", "matte", "--section", "Descriptor"}, 2, "HierarchyDescriptor"},
             {{"probe", "s.json", "--pixel", "24,0"}, 2, "has 24 x 16 pixels"}});
    expectRefused({"render", "s.json"},
                  {{{"--size", "0x480"}, 2, "expected WIDTHxHEIGHT"},
                   {{"--size", "65536x65536"}, 2, "268435456 pixels"},
                   {{"--spp", "0"}, 2, "--spp"},
                   {{"--spp", endless}, 2, "--spp"},
                   {{"--region", "3,3,3,9"}, 2, "expected X0,Y0,X1,Y1"},
                   {{"--region", "0,0,24,17"}, 2, "24 x 16"},
                   {{"--tile", "3/2"}, 2, "expected I/N"},
                   {{"--tile", "1/17"}, 2, "24 x 16"},
                   {{"--set", "matte=1"}, 2, "expected INSTANCE.PARAM=VALUE"},
                   {{"--progress", "1"}, 2, "expected auto, json or none, got \"1\""}});
}

}  // namespace
