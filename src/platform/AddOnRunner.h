#pragma once

#include "platform/EntryRef.h"
#include "platform/Errors.h"

#include <functional>
#include <string>
#include <vector>

namespace platform {

// How one run of an add-on ended.
struct AddOnOutcome
{
    enum class Kind {
        Done,         // process_refs returned 0
        Failed,       // process_refs returned `result`, or the add-on exited with status `result`
        CannotLoad,   // the loader refused the file; `message` says why
        NoEntryPoint, // the file has no process_refs
        Crashed,      // the run was ended by `signal`
        HostMissing,  // kestrin-addon-host is not there or would not start
    };

    Kind kind = Kind::Done;
    int result = 0;
    int signal = 0;
    // The last non-blank line the run wrote to standard error or standard
    // output (the add-on's last words, or for CannotLoad the loader's
    // message); empty when it wrote nothing.
    std::string message;
};

// Runs add-ons (shared objects with the entry point of kestrin/addon.h) in a
// helper process, kestrin-addon-host, so that an add-on that crashes, hangs
// or exits takes only that process down. GUI thread only.
class AddOnRunner
{
public:
    using Completion = std::function<void(const AddOnOutcome &outcome)>;

    // Starts the add-on at `addOnPath` on `entries`, selected in `folder`, and
    // returns at once. With B_OK, `done` is called exactly once, later, on the
    // GUI thread, never from inside Run. B_BAD_VALUE for an empty path or
    // completion, B_NO_INIT without a QCoreApplication, B_NOT_ALLOWED off the
    // GUI thread: `done` is then never called. A run still going when the
    // application object is destroyed is killed, and `done` is not called.
    static status_t Run(const std::string &addOnPath,
                        const entry_ref &folder,
                        const std::vector<entry_ref> &entries,
                        Completion done);

    // The host: the installed tree's (<prefix>/lib/kestrin), else one beside
    // the running executable, else the one the build tree makes, else the one
    // of the configured prefix; empty when none is an executable file.
    static std::string HostPath();

    // Makes HostPath() answer `path` alone (empty: search as usual) and returns
    // the previous setting. For tests.
    static std::string SetHostPath(const std::string &path);
};

} // namespace platform
