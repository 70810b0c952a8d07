#pragma once

#include <string>
#include <vector>

namespace Tarnkit {

/// Holds the scenes of this process to the files of some folders and what lies below them, while it
/// lives: what a scene names, and what such a file names further, is refused elsewhere. Names are
/// judged by where they lead, links followed. Without one scenes read what the process may read.
/// For what reads scenes of others; made and destroyed while no other thread reads any, one at a
/// time.
class Confinement {
public:
    explicit Confinement(const std::vector<std::string>& folders);
    ~Confinement();
    Confinement(const Confinement&) = delete;
    Confinement& operator=(const Confinement&) = delete;
};

/// Whether a scene may read the file of that name. The answer is the same for a file that isn't
/// there, so that nobody learns by it what is. On false `reason` is in words, without the name.
/// Asked wherever host code opens a file for a scene; any thread.
bool mayRead(const std::string& file, std::string& reason);

}  // namespace Tarnkit
