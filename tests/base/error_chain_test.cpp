#include "pelk/base/error_chain.h"

#include <gtest/gtest.h>

#include <string>

#include "test_heap.h"

using Tarnkit::ErrorChain;

TEST(ErrorChainTest, TextRunsFromTheLatestToTheFirst) {
    ErrorChain chain;
    chain.addError("reader", 3, "line %d", 12);
    chain.addError(nullptr, 7, "no place");
    chain.addError("top", -5, nullptr);
    EXPECT_STREQ(chain.getText().c_str(), "[top]  | no place | [reader] line 12");
    EXPECT_STREQ(chain.getFirstErrorText(), "unknown error");
}

TEST(ErrorChainTest, BoundedTextIsCutAndTerminated) {
    const std::string whole = "[a] bcd | [e] f";
    ErrorChain chain = ErrorChain::makeError("e", 1, "f");
    chain.addError("a", 1, "bcd");
    for (int size = 0; size < 20; ++size) {
        std::string buffer(24, '#');
        chain.getText(buffer.data(), size);
        const std::string written = size > 0 ? whole.substr(0, size - 1) + '\0' : "";
        EXPECT_EQ(buffer, written + std::string(24 - written.size(), '#')) << size;
    }
    const std::string lengthy(600, 'x');
    EXPECT_EQ(ErrorChain::makeError(nullptr, 1, "%s", lengthy.c_str()).getText().length(), 511);
}

TEST(ErrorChainTest, CopiesShareRecordsAndTheLastOneFreesThem) {
    const LeakCheck heap;
    ErrorChain first = ErrorChain::makeError("a", 1, "first");
    ErrorChain second = first;
    second.addError("b", 2, "second");
    first = second;
    second = ErrorChain();
    EXPECT_STREQ(first.getText().c_str(), "[b] second | [a] first");
    for (int i = 0; i < 200000; ++i)  // dropped without a recursion
        first.addError("deep", i, "x");
}
