#pragma once

#include "panes/PaneSource.h"

#include <memory>
#include <string>

namespace kestrin {

// The place a pane shows again from the text the profile kept for it
// (PaneSource::SavedPlace), or the history and the hotlist
// (PaneSource::RecalledPlace). Each kind of place that keeps something other
// than a folder's path is asked in turn whether the text is one of its own;
// whatever none of them reads is a folder's path.
//
// The profile keeps a folder's path or a session's name, as it always has;
// the history and the hotlist keep more (PlaceText).
class SavedPlace
{
public:
    // `standing` is the local folder that a place away from the disk keeps
    // for the pane to come back to.
    static std::unique_ptr<PaneSource> Read(const std::string &saved, const std::string &standing);
    // The place `recalled` reached from the one `shown`: through it where it
    // can (PaneSource::Recall), else made anew.
    static std::unique_ptr<PaneSource> Recall(const std::string &recalled, const PaneSource &shown);
    // A new connection with the stored session `sessionFile` (".ftp" or
    // ".sftp"), in a place of its kind.
    static std::unique_ptr<PaneSource> Session(const std::string &sessionFile,
                                               const std::string &standing);
};

} // namespace kestrin
