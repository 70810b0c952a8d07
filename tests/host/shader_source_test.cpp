#include "frame/shader_source.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>

#include "scoped_environment.h"

using Tarnkit::ShaderSource;

namespace {

TEST(ShaderSourceTest, WritesEveryConversionAsPrintf) {
    const char* volatile null = nullptr;  // so that the compiler does not see it
    ShaderSource source;
    EXPECT_STREQ(source.c_str(), "");
    source.printf("plain\n");
    source.printf("%d,%i,%u,%x;", -5, 7, 3000000000u, 0xBEEFu);
    source.printf("%ld,%lld,%zu;", -5000000000L, 5000000000LL, size_t(9));
    source.printf("%f %.2f %g %8.3f|%-8.3f|;", 0.1, 2.0 / 3, 1e-7, 1.0, 1.0);
    source.printf("%s%c%5s|%-4s|%%;", "text", '!', "ab", "cd");
    source.printf("[%s|%4s]", null, null);
    EXPECT_STREQ(source.c_str(),
                 "plain\n"
                 "-5,7,3000000000,beef;"
                 "-5000000000,5000000000,9;"
                 "0.100000 0.67 1e-07    1.000|1.000   |;"
                 "text!   ab|cd  |%;"
                 "[|    ]");
    EXPECT_EQ(source.length(), static_cast<int>(std::string(source.c_str()).size()));
}

TEST(ShaderSourceTest, WritesAPointInALocaleWithCommas) {
    const std::string former = std::setlocale(LC_NUMERIC, nullptr);
    const ScopedEnvironment locales("LOCPATH", PELK_TEST_LOCALES);
    ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma")) << "the test's locale was not built";
    ShaderSource source;
    source.printf("%f %g", 1234.5, 0.5);
    EXPECT_STREQ(source.c_str(), "1234.500000 0.5");
    char own[16];
    std::snprintf(own, sizeof(own), "%.1f", 1.5);
    EXPECT_STREQ(own, "1,5") << "the program's locale was not put back";
    std::setlocale(LC_NUMERIC, former.c_str());
}

TEST(ShaderSourceTest, KeepsLongTextsWhole) {
    const std::string text(3000, 'x');
    ShaderSource source, other;
    std::string expected;
    for (int i = 0; i < 20; ++i) {
        source.printf("<%s>%.400f", text.c_str(), 1e300);
        char number[1024];
        std::snprintf(number, sizeof(number), "%.400f", 1e300);
        expected += "<" + text + ">" + number;
    }
    EXPECT_EQ(source.c_str(), expected);
    // Its own text, which moves while it is appended, and an empty and a null one.
    source.append(source);
    source.append(other);
    source.append(static_cast<const char*>(nullptr));
    EXPECT_EQ(source.c_str(), expected + expected);
}

}  // namespace
