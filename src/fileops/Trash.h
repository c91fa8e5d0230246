#pragma once

#include "platform/Errors.h"

#include <ctime>
#include <string>

namespace kestrin {

// The user's home trash as freedesktop.org lays it out: the items in files/,
// and for each one info/<name>.trashinfo with its original path and deletion
// date, so the desktop's trash tools list and restore what Kestrin trashed.
//
// A name is claimed by creating its .trashinfo exclusively before anything
// lands in files/; two programs trashing at once therefore never pick the
// same name, and an info file always describes the item under its name.
class Trash
{
public:
    // Finds the trash, creating it and its two folders when missing.
    Trash();

    status_t InitCheck() const { return fStatus; }

    const std::string &Path() const { return fPath; }
    std::string FilesPath() const { return fPath + "/files"; }
    std::string InfoPath() const { return fPath + "/info"; }

    // True for the trash folder itself and for its files/ folder: what a pane
    // shows when the user looks into the trash.
    bool IsTrashFolder(const std::string &folder) const;

    // The name of the attempt-th try for an item called `leaf`: the leaf,
    // then "leaf copy", "leaf copy2", "leaf copy3" ... A long leaf is cut (on
    // a character boundary) so that its .trashinfo name still fits the file
    // system; the info file keeps the full original path.
    static std::string CandidateName(const std::string &leaf, int attempt);

    // Creates info/<name>.trashinfo for an item that was at `originalPath`,
    // failing with B_FILE_EXISTS when that name is claimed already.
    status_t WriteInfo(const std::string &name, const std::string &originalPath);
    void RemoveInfo(const std::string &name);

    // Claims the first candidate name that is free both in files/ and in
    // info/ and writes its info file; the caller then fills files/<name>.
    status_t ReserveName(const std::string &leaf,
                         const std::string &originalPath,
                         std::string *name);

    // The text of a .trashinfo file.
    static std::string InfoText(const std::string &originalPath, time_t deletionTime);
    // The path as the Path= key carries it: URI-escaped, "/" kept.
    static std::string EscapePath(const std::string &path);

    // Deletes everything in the trash, folders with all they hold, and the
    // record of each item; what cannot be removed stays.
    void Empty();

private:
    std::string InfoFile(const std::string &name) const;

    std::string fPath;
    status_t fStatus = B_NO_INIT;
};

} // namespace kestrin
