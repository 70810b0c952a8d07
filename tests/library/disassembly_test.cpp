#include <gtest/gtest.h>

#include "fake_host/materials_module.h"
#include "library/command_lines.h"

namespace {

bool hasLockOrSharedStep(const std::string& line) {
    const auto has = [&](const char* text) { return line.find(text) != std::string::npos; };
    const bool exchangesMemory = has("\txchg ") && has("(");
    return has("\tlock ") || exchangesMemory || has("<pthread_") || has("<__cxa_guard") ||
           has("<__tls_");
}

// Nothing in the module needs a lock or an atomic step, in hits or outside of them, so all of its
// code is looked through: what the compiler has folded into a shading function stands there too.
TEST(Disassembly, NoLockNoAtomicStepNoThreadLocal) {
    std::string function;
    int shadingFunctions = 0;
    for (const std::string& line : linesOf(PELK_OBJDUMP " -d -C --no-show-raw-insn " +
                                           std::string(MaterialsModule::path()))) {
        if (line.ends_with(">:")) {
            function = line;
            shadingFunctions += line.find("::shade(") != std::string::npos;
            shadingFunctions += line.find("BRDF::eval(") != std::string::npos;
        }
        EXPECT_FALSE(hasLockOrSharedStep(line)) << function << "\n" << line;
    }
    EXPECT_GE(shadingFunctions, 3) << "the code of the materials was not seen";
}

}  // namespace
