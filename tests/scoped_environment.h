#pragma once

#include <cstdlib>
#include <string>

/// Sets a variable of the environment while it lives; null takes it away.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* variable, const char* value) : name(variable) {
        const char* old = std::getenv(variable);
        hadValue = old != nullptr;
        oldValue = old ? old : "";
        set(value);
    }
    ~ScopedEnvironment() { set(hadValue ? oldValue.c_str() : nullptr); }

private:
    void set(const char* value) { value ? setenv(name, value, 1) : unsetenv(name); }

    const char* name;
    bool hadValue;
    std::string oldValue;
};
