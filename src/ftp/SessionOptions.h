#pragma once

// What Kestrin keeps of a stored session beyond the six keys of its file
// (where its password lives, and whatever else a session comes to need):
// "<session file>.kestrin" beside it, "site.ftp.kestrin" for "site.ftp",
// in plain key=value lines. The session file itself stays as it always
// was. The file is written whole under a temporary name and renamed into
// place, so a reader never sees half of it, and it is removed when nothing
// is left to keep. Keys this build does not know are kept as they are.

#include "app/SideFile.h"

#include <string>

namespace kestrin {

class SessionOptions
{
public:
    // "site.ftp" gives "site.ftp.kestrin".
    static std::string FileNameOf(const std::string &sessionFile);
    // The options of the session file `sessionFile` ("<name>.ftp"); none
    // when it has no file of options (or it cannot be read).
    static SessionOptions Read(const std::string &sessionFile);
    // Removes the session's file of options; true when there is none left.
    static bool Remove(const std::string &sessionFile);

    // The value of `key`, or empty.
    std::string Get(const std::string &key) const;
    // Sets `key`, or removes it when `value` is empty.
    void Set(const std::string &key, const std::string &value);

    // Whether the session's password is in the desktop keyring, its file
    // holding an empty "Pass".
    bool PasswordInKeyring() const { return Get(kPasswordInKeyring) == "1"; }
    void SetPasswordInKeyring(bool inKeyring) { Set(kPasswordInKeyring, inKeyring ? "1" : ""); }

    // Writes the options, owner-only, or removes the file when none are
    // set. False when it could not.
    bool Write() const;

private:
    static constexpr const char *kPasswordInKeyring = "PasswordInKeyring";

    SideFile fFile;
};

} // namespace kestrin
