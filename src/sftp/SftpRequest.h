#pragma once

#include "platform/SftpChannel.h"

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace kestrin {

// What an SFTP pane asks of its server: a step from a remote folder, after
// which the folder it leads to is listed.
struct SftpRequest
{
    enum class Step {
        Connect, // log in and go to the session's remote folder (else the login folder)
        Stay,    // list `base` again
        Enter,   // go into `name`
        Up,      // go to the parent folder
        MakeDir, // make the folder `name`
        Remove,  // delete `entries`, folders with all they hold
        Rename,  // rename `name` to `newName`
        SetMode, // set `mode` on every one of `entries`
    };
    Step step = Step::Connect;
    // The absolute remote folder the step starts from; empty for Connect.
    std::string base;
    std::string name;
    std::string newName;
    mode_t mode = 0;
    // Remove and SetMode: each name in `base`, and whether it is a folder.
    std::vector<std::pair<std::string, bool>> entries;
};

// What came of a request.
struct SftpResult
{
    // Empty, or why the connection or login failed, in words for the user;
    // the request did nothing then.
    std::string connectError;
    // Empty, or why the step failed (the folder is listed all the same).
    std::string stepError;
    // The absolute remote folder after the step, and what it holds.
    std::string folder;
    std::vector<platform::SftpEntry> entries;
    // Empty, or why the folder could not be listed.
    std::string listError;

    // The place is the folder named here: all went well, or the folder
    // listed last comes again after a lost connection.
    bool ReachedFolder() const { return connectError.empty() || !folder.empty(); }
};

} // namespace kestrin
