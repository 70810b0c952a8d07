#pragma once

#include <string>
#include <vector>

/// What the fakes of one test were called for, by name and in order. Quiet, they answer without
/// writing anything, so that they neither allocate nor meet on other threads.
struct CallLog {
    std::vector<std::string> calls;
    bool quiet = false;

    int count(const char* call) const;
    bool has(const char* call) const { return count(call) > 0; }
    void clear() { calls.clear(); }
};

/// The log of the running test. FakeHost empties it.
CallLog& callLog();

/// Notes a call. False if the fakes are quiet: the caller then keeps nothing of what it saw.
bool note(const char* call);
