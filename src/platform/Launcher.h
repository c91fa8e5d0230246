#pragma once

#include "platform/Errors.h"
#include "platform/Launch.h"

namespace platform {

// Whatever starts programs: the real process starter, or a test's recorder.
class LaunchSink
{
public:
    virtual ~LaunchSink() = default;
    virtual status_t Start(const Launch &launch) = 0;
};

// How a document that nothing could open is told: an alert naming it, or
// (for what Kestrin opens on its own behalf, like the file manager on a
// folder) a line on standard error.
enum class FailureNotice { Alert, StandardError };

// Every program Kestrin starts (editor, terminal, file manager, documents,
// help) goes through here. Programs run detached: Kestrin never waits on them.
class Launcher
{
public:
    static status_t Start(const Launch &launch);

    // Opens a document or folder with the desktop's preferred application.
    // When none can be started, or the opener finds no application for the
    // type (known only when it ends, so told later, on the GUI thread), the
    // user is told as `notice` says.
    static status_t OpenWithPreferredApplication(const std::string &path,
                                                 FailureNotice notice = FailureNotice::Alert);

    // Opens a file in a text editor: $KESTRIN_EDITOR when set, else the
    // desktop's default application for text/plain, else xdg-open; failures
    // are told as above. The desktop is asked without waiting for it: the
    // editor starts (or the failure is told) on the GUI thread when it answers.
    static status_t OpenInTextEditor(const std::string &path,
                                     FailureNotice notice = FailureNotice::Alert);

    // Replaces the sink (nullptr restores real launching) and returns the previous one.
    static LaunchSink *SetSink(LaunchSink *sink);

    // The first of `programs` found on PATH (or given as an executable path); empty if none.
    static std::string FindProgram(const std::vector<std::string> &programs);
};

} // namespace platform
