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
    const struct {
        const char* what;
        std::string path, words;
    } cases[] = {
        {"missing", directory.file("missing.so"), "missing.so"},
        {"no library", directory.file("text.so"), "text.so"},
        {"a bare name is not searched for", "libc.so.6", "./libc.so.6"},
    };
    for (const auto& c : cases) {
        ModuleError error;
        EXPECT_FALSE(loadModule(c.path.c_str(), error)) << c.what;
        EXPECT_NE(error.code, 0) << c.what;
        EXPECT_NE(error.message.find(c.words), std::string::npos) << error.message;
    }
}

}  // namespace
