#pragma once

#include <string>

/// What goes wrong with the system calls of a program on the files of its directory: to open, read,
/// write, sync, map, rename and close them.
struct SystemFault {
    static constexpr int kHalf = -1;  ///< a read or write does half of what was asked for
    static constexpr int kKill = -2;  ///< the program is killed before the call

    int answer = 0;  ///< EIO meets any of these calls, ENOSPC those that write; or one of the above
    int call = 0;    ///< the first of those that it could meet, counted from 0
    bool lasts = false;  ///< whether it meets all later ones too, as a full disk does
    bool met = false;    ///< set once there was such a call
};

/// In a child that is about to become the program: has its parent told of each such call. False if
/// the system does not let a process follow another.
bool letParentFollow();

/// In the parent: follows the program to its end, and puts the fault in its way. What it ended with
/// is as `waitpid` tells it.
int follow(int process, const std::string& directory, SystemFault& fault);
