#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kestrin {

// What a pane asks of its server: a step from a remote folder, after which
// the folder it leads to is listed.
struct FtpRequest
{
    enum class Step {
        Connect, // log in and change to the session's remote folder
        Stay,    // list `base` again
        Enter,   // change into `name`
        Up,      // change to the parent folder
        MakeDir, // make the folder `name`
        Remove,  // delete `entries`
    };

    Step step = Step::Connect;
    // The absolute remote folder the step starts from; empty for Connect.
    std::string base;
    std::string name;
    // Remove: each name, and whether it is a folder.
    std::vector<std::pair<std::string, bool>> entries;
    // Remove: asked when the server refuses a folder as not empty (550);
    // true deletes everything inside it first. It runs on the worker, which
    // waits for the answer.
    std::function<bool(const std::string &folder)> confirmNotEmpty;

    static FtpRequest Of(Step step, std::string base = {}, std::string name = {})
    {
        FtpRequest request;
        request.step = step;
        request.base = std::move(base);
        request.name = std::move(name);
        return request;
    }
};

// What came of a request.
struct FtpResult
{
    // 0, or why a login this request needed failed (530: refused), or 2
    // when the connection was lost and could not be made again.
    int connectCode = 0;
    // The remote folder after the step, as PWD names it; when connectCode
    // is not 0, the folder of the last listing, which comes again (empty
    // when there was none).
    std::string folder;
    // 0, or why LIST failed; the listing as the server sent it.
    int listCode = 0;
    std::string listing;
    // The server refused TLS that the session would have used: the
    // connection, password included, goes in clear.
    bool inClear = false;

    // The place is the folder named here: all went well, or the folder
    // listed last comes again after a lost connection.
    bool ReachedFolder() const { return connectCode == 0 || !folder.empty(); }
};

} // namespace kestrin
