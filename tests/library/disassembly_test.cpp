#include <gtest/gtest.h>

#include <regex>

#include "fake_host/materials_module.h"
#include "library/command_lines.h"

namespace {

// Nothing in the module needs a lock or an atomic step, in hits or outside of them, so all of its
// code is looked through: what the compiler has folded into a shading function stands there too.
TEST(Disassembly, NoLockNoAtomicStepNoThreadLocal) {
    const std::regex forbidden(
        R"(\tlock |\txchg .*\(|(call|jmp).*<(pthread_|__cxa_guard|__tls_get_addr|__tls_init))");
    std::string function;
    int shadingFunctions = 0;
    for (const std::string& line : linesOf(PELK_OBJDUMP " -d -C --no-show-raw-insn " +
                                           std::string(MaterialsModule::path()))) {
        if (line.ends_with(">:")) {
            function = line;
            shadingFunctions += line.find("::shade(") != std::string::npos;
            shadingFunctions += line.find("BRDF::eval(") != std::string::npos;
        }
        EXPECT_FALSE(std::regex_search(line, forbidden)) << function << "\n" << line;
    }
    EXPECT_GE(shadingFunctions, 3) << "the code of the materials was not seen";
}

}  // namespace
