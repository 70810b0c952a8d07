#pragma once

#include <algorithm>
#include <string>
#include <vector>

/// What the fakes of one test were called for, by name and in order. Quiet, they answer without
/// writing anything, so that they neither allocate nor meet on other threads.
struct CallLog {
    std::vector<std::string> calls;
    bool quiet = false;

    long count(const char* call) const { return std::count(calls.begin(), calls.end(), call); }
    bool has(const char* call) const { return count(call) > 0; }
    void clear() { calls.clear(); }
};

/// The log of the running test. FakeHost empties it.
inline CallLog& callLog() {
    static CallLog log;
    return log;
}

/// Notes a call. False if the fakes are quiet: the caller then keeps nothing of what it saw.
inline bool note(const char* call) {
    if (!callLog().quiet)
        callLog().calls.emplace_back(call);
    return !callLog().quiet;
}
