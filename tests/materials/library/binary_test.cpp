#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "fake_host/materials_module.h"
#include "temporary_directory.h"

namespace {

/// The lines that a tool writes about the built module.
std::vector<std::string> linesOf(const std::string& tool) {
    const TemporaryDirectory directory;
    const std::string file = directory.file("lines");
    const std::string command = tool + " " + MaterialsModule::path() + " > " + file;
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

bool hasLockOrSharedStep(const std::string& line) {
    const auto has = [&](const char* text) { return line.find(text) != std::string::npos; };
    return has("\tlock ") || (has("\txchg ") && has("(")) || has("<pthread_") ||
           has("<__cxa_guard") || has("<__tls_");
}

// Nothing in the module needs a lock or an atomic step, in hits or outside of them, so all of its
// code is looked through: what the compiler has folded into a shading function stands there too.
TEST(Binary, HasNoLockNoAtomicStepNoThreadLocal) {
    std::string function;
    int shadingFunctions = 0;
    for (const std::string& line : linesOf(PELK_OBJDUMP " -d -C --no-show-raw-insn")) {
        if (line.ends_with(">:")) {
            function = line;
            shadingFunctions += line.find("::shade(") != std::string::npos;
        }
        EXPECT_FALSE(hasLockOrSharedStep(line)) << function << "\n" << line;
    }
    EXPECT_GE(shadingFunctions, 3) << "the code of the materials was not seen";
}

TEST(Binary, ExportsOneNameAndTakesNoMemoryPastItsOwnOperatorNew) {
    const std::vector<std::string> lines = linesOf(PELK_NM " -D --defined-only");
    ASSERT_EQ(lines.size(), 1u) << testing::PrintToString(lines);
    EXPECT_TRUE(lines[0].ends_with(" T getLibDesc")) << lines[0];
    for (const std::string& line : linesOf(PELK_NM " -D --undefined-only"))
        for (const char* foreign : {" _Zn", " _Zd", " malloc", " free"})
            EXPECT_EQ(line.find(foreign), std::string::npos) << line;
}

}  // namespace
