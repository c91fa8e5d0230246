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
// The profile keeps a folder's path or a session's name, as it always has.
// The history and the hotlist also keep a folder inside an archive as
// "archive:<archive>\t<folder inside>" (a session's name never holds a "/")
// and a server's folder as "<session>\t<remote folder>" (no path and no
// name holds a tab that Kestrin keeps).
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

    // The texts that RecalledPlace gives for an archive's folder (`inside`
    // "" at its top, else ending in "/") and for a server's folder.
    static std::string ArchivePlace(const std::string &archive, const std::string &inside);
    static std::string ServerPlace(const std::string &session, const std::string &remoteFolder);
    // The parts of a server's place: the session's name, and the remote
    // folder (empty when the text names only the session).
    static std::pair<std::string, std::string> ServerParts(const std::string &recalled);

    // What a menu shows for a kept place: a path, an archive's path with
    // the folder inside it, or "session: /remote/folder".
    static std::string Title(const std::string &recalled);
};

} // namespace kestrin
