#pragma once

#include <string>
#include <vector>

/// What a look at a source tree gave.
struct TreeReport {
    int files = 0;                      ///< sources and headers that were read
    std::vector<std::string> problems;  ///< "frame/a.h:3: what is wrong", sorted
};

/// Reads every source and header below `root` and tells which break the rules of the layout:
/// folders include from lower floors only, headers have `#pragma once`, and the libraries that
/// serve the host, and the operating system, are used where they may be and nowhere else.
TreeReport checkTree(const std::string& root);
