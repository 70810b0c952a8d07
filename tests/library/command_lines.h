#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

/// The lines that a command writes. A command that fails, fails the test.
inline std::vector<std::string> linesOf(const std::string& command) {
    std::vector<std::string> lines;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) {
        ADD_FAILURE() << "can't run " << command;
        return lines;
    }
    std::string line;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        lines.push_back(line);
        line.clear();
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return lines;
}
