#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "pelk/contract/renderer.h"

/// Keeps every message, the first letter of its level in front.
class RecordingLog final : public Tarnkit::MessageLog {
public:
    std::vector<std::string> texts;

    void debug(const char* format, ...) override {
        va_list values;
        va_start(values, format);
        keep("d ", format, values);
    }
    void warning(const char* format, ...) override {
        va_list values;
        va_start(values, format);
        keep("w ", format, values);
    }
    void error(const char* format, ...) override {
        va_list values;
        va_start(values, format);
        keep("e ", format, values);
    }
    void info(const char* format, ...) override {
        va_list values;
        va_start(values, format);
        keep("i ", format, values);
    }
    void finish() override { texts.push_back("finish"); }

private:
    void keep(std::string text, const char* format, va_list values) {
        char buffer[4096];
        std::vsnprintf(buffer, sizeof buffer, format, values);
        va_end(values);
        texts.push_back(text + buffer);
    }
};
