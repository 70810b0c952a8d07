#pragma once

/// What the process asked of the runtime library.
struct RuntimeCalls {
    long heap = 0;   ///< memory taken or given back
    long locks = 0;  ///< mutexes, read-write locks and conditions entered
};

/// Counts the calls of the thread while it lives.
class RuntimeProbe {
public:
    RuntimeProbe();
    ~RuntimeProbe();
    RuntimeProbe(const RuntimeProbe&) = delete;
    RuntimeProbe& operator=(const RuntimeProbe&) = delete;

    RuntimeCalls calls() const;
};
