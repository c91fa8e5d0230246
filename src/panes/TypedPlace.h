#pragma once

#include "panes/PaneSource.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace kestrin {

// A place typed (or pasted) into a pane's path field, read into what the
// pane should show: a folder, a file's folder with the file selected, a
// folder inside an archive, a stored FTP session, or the part of the path
// that is not there.
//
// Reading expands the text first (surrounding blanks and a trailing line
// break of a paste, a file:// address, `~`, `$NAME` and `${NAME}`, a path
// relative to the pane's folder, "." and ".." by their text), then asks
// the disk, one stat per name, which part of it exists. Read and FolderNames
// ask the disk, and a stat on a mount that hangs would hang its caller: they
// run on a worker (PathJump, PathCompletion); Expand only works on text.
struct TypedPlace
{
    enum class Kind { Nothing, Folder, File, Archive, Session, Missing };

    Kind kind = Kind::Nothing;
    // Folder: the folder. File: the file's folder. Archive: the archive.
    // Session: the session's file. Missing: the whole expanded path.
    std::string path;
    // File: the file's name. Archive: the folder inside it ("" for its
    // top, else ending in "/").
    std::string inside;
    // Missing: the part that is there, and the name that is not (or that
    // is a file where a folder was needed).
    std::string found;
    std::string missing;
    bool missingIsFile = false;

    // `standing` is the local folder the pane stands in, where a relative
    // path starts.
    static TypedPlace Read(const std::string &typed, const std::string &standing);
    // The text as an absolute path, without asking the disk; "" for blank
    // text. A trailing "/" is kept, since it says a folder was meant.
    static std::string Expand(const std::string &typed, const std::string &standing);

    // Missing: where the name that is not there starts in `path`, and what
    // the user is told.
    size_t MissingAt() const;
    std::string Problem() const;

    // The place to show and, in `selectAfter`, the row to select there;
    // null for Nothing and Missing.
    std::unique_ptr<PaneSource> Source(const std::string &standing, std::string *selectAfter) const;

    // The names of the sub-folders of `folder` (links to folders included),
    // sorted; off the GUI thread, stopping early when `stop` is set.
    static std::vector<std::string> FolderNames(const std::string &folder,
                                                const std::atomic<bool> &stop);
};

} // namespace kestrin
