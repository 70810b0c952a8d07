#include <gmock/gmock.h>

#include "pelk/program.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

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

TEST(Command, MessagesAreColouredForPeopleAlone) {
    const struct {
        const char* what;
        bool terminal;
        const char* noColor;
        const char* says;
    } cases[] = {
        {"on a terminal", true, "", "\x1b[0;31mpelk:\x1b[0m ?[2J.json: no such scene file"},
        {"on a terminal whose user refuses", true, "1", "pelk: ?[2J.json: no such scene file"},
        {"in a file", false, "", "pelk: ?[2J.json: no such scene file"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.terminal && !Program::canHaveTerminal())
            continue;
        Program pelk;
        pelk.environment["NO_COLOR"] = c.noColor;
        pelk.start({"render", "\x1b[2J.json"}, c.terminal);
        const RunResult result = pelk.wait();
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_THAT(result.err, StartsWith(c.says));
    }
}

TEST(Command, TheDebugLogKeepsAllMessages) {
    Program pelk;
    pelk.directory.write("s.json", smallScene());
    pelk.environment["TMPDIR"] = pelk.directory.path.string();
    pelk.environment["PELK_NUM_THREADS"] = "3";
    pelk.directory.write("pelk_dbg_log_7", "of an earlier run");
    const std::vector<std::string> words{"describe", "s.json", "mate", "--debug-log", "7"};
    const RunResult result = pelk.run(words);
    EXPECT_EQ(result.exitCode, 1);
    const std::string log = pelk.directory.read("pelk_dbg_log_7");
    EXPECT_THAT(log, StartsWith("pelk "));
    for (const std::string& text : {std::string(" 3 threads\n"), result.err, std::string(" MB\n")})
        EXPECT_THAT(log, HasSubstr(text));

    pelk.environment["TMPDIR"] = pelk.directory.file("missing");
    EXPECT_THAT(pelk.run(words).err, HasSubstr("cannot write the debug log"));
}

}  // namespace
