#include "platform/module.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "temporary_directory.h"

namespace {

using namespace Tarnkit::platform;

TEST(ModuleTest, GivesItsOwnNamesAndNoOthers) {
    ModuleError error;
    const ModuleHandle module = loadModule(TEST_MODULE, error);
    ASSERT_TRUE(module) << error.message;
    const auto answer = reinterpret_cast<int (*)()>(findSymbol(module, "answer"));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer(), 42);
    EXPECT_FALSE(findSymbol(module, "malloc")) << "from a library that the module needs";
    EXPECT_FALSE(findSymbol(module, "question"));
    EXPECT_TRUE(releaseModule(module));
    EXPECT_TRUE(releaseModule(nullptr));
}

TEST(ModuleTest, FailureHasANumberAndWords) {
    const TemporaryDirectory directory;
    directory.write("text.so", "no library");
    for (const std::string& path :
         {directory.file("missing.so"), directory.file("text.so"), std::string("libc.so.6")}) {
        ModuleError error;
        EXPECT_FALSE(loadModule(path.c_str(), error)) << path;
        EXPECT_NE(error.code, 0) << path;
        const std::string said = path[0] == '/' ? path : "./" + path;  // not searched for
        EXPECT_NE(error.message.find(said), std::string::npos) << error.message;
    }
}

}  // namespace
