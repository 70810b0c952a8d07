#pragma once

#include <map>
#include <string>
#include <vector>

#include "temporary_directory.h"

/// What a run of the program left behind.
struct RunResult {
    int exitCode = -1;  ///< -1 if it died of a signal
    std::string out, err;
};

/// The program as a user runs it: in a directory of its own, with some words behind its name.
class Program {
public:
    ~Program();

    void start(const std::vector<std::string>& words);
    void send(int signal) const;
    /// Waits until the text stands in what was printed on standard output; false if it never does.
    bool waitForOutput(const std::string& text) const;
    RunResult wait();

    RunResult run(const std::vector<std::string>& words) {
        start(words);
        return wait();
    }

    std::string pluginPath;                          ///< value of PELK_PLUGIN_PATH; empty for none
    std::map<std::string, std::string> environment;  ///< further variables
    TemporaryDirectory directory;

private:
    [[noreturn]] void becomeProgram(const std::vector<std::string>& words);

    TemporaryDirectory streams;
    int process = -1;
};

/// A scene of 24 x 16 pixels that renders in no time: a square of the material "matte" fills the
/// picture, under a white sky. `plugins` are further entries, each with a comma in front.
std::string smallScene(const std::string& plugins = "");

/// Red, green, blue and alpha of each pixel, then further channels; empty without such a picture.
/// Of a picture of which only a part is stored the rest is 0.
std::vector<float> readPicture(const std::string& file);
