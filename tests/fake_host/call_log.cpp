#include "fake_host/call_log.h"

#include <algorithm>

int CallLog::count(const char* call) const {
    return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

CallLog& callLog() {
    static CallLog log;
    return log;
}

bool note(const char* call) {
    CallLog& log = callLog();
    if (!log.quiet)
        log.calls.emplace_back(call);
    return !log.quiet;
}
