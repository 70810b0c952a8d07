#pragma once

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "host/cli/faulty_system.h"
#include "temporary_directory.h"

/// What a run of the program left behind.
struct RunResult {
    static constexpr int kCannotFollow = 125;  ///< no system for faults, see letParentFollow
    int exitCode = -1;                         ///< -1 if it died of a signal
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
    std::size_t largestFile = 0;   ///< bytes that the system lets it write; 0: any
    SystemFault* fault = nullptr;  ///< what meets it, if anything
    std::size_t memory = 0;        ///< bytes that the system lets it have; 0: any
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

/// A command line that is to be refused.
struct Refusal {
    std::vector<std::string> words;  ///< behind those that a table has in common
    int exitCode;
    std::string says, place = "";  ///< parts of what standard error tells
    std::string scene = "";        ///< what stands in s.json; if empty, what stood there before
};

/// The program in a directory with a small scene, "s.json".
class CommandTest : public testing::Test {
protected:
    CommandTest() { directory.write("s.json", smallScene()); }

    /// Runs `pelk render s.json` with further words.
    RunResult render(const std::vector<std::string>& words);
    std::vector<float> pixels(const std::string& name) { return readPicture(directory.file(name)); }
    /// Every one is told briefly, one about a scene in one line, and leaves all files as they are.
    void expectRefused(const std::vector<std::string>& start, const std::vector<Refusal>& refusals);

    Program pelk;
    TemporaryDirectory& directory = pelk.directory;

private:
    /// What stands in the directory: names, and the content of plain files.
    std::map<std::string, std::string> content() const;
};
