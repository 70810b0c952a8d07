#include "pelk/base/char_string.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "test_heap.h"

using Tarnkit::CharString;

TEST(CharStringTest, TextFromItsOwnBufferIsReadBeforeItMoves) {
    CharString string("0123456789");
    string = string.c_str() + 3;
    string.append(string).append(string.c_str() + 12).append(string.c_str(), 2);
    EXPECT_STREQ(string.c_str(), "345678934567898934");
}

TEST(CharStringTest, BehavesAsAValueUnderRandomOperations) {
    const LeakCheck heap;
    std::mt19937 random(17);
    CharString strings[4];
    std::optional<std::string> model[4];
    for (int step = 0; step < 20000; ++step) {
        const unsigned to = random() % 4, from = random() % 4, kind = random() % 4;
        const std::string text(random() % 40, static_cast<char>('a' + random() % 26));
        if (kind == 0) {
            strings[to] = strings[from];
            model[to] = model[from];
        } else if (kind == 1) {
            strings[to].append(text.c_str());
            model[to] = model[to].value_or("") + text;
        } else if (kind == 2 || !model[from] || model[from]->size() > 500) {
            strings[to] = text.c_str();
            model[to] = text;
        } else {
            strings[to].append(strings[from]);
            model[to] = model[to].value_or("") + *model[from];
        }
        for (int i = 0; i < 4; ++i)
            ASSERT_STREQ(strings[i].c_str(), model[i] ? model[i]->c_str() : nullptr) << step;
    }
}
