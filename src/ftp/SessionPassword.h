#pragma once

#include "ftp/FtpSession.h"
#include "platform/Keyring.h"

#include <string>

namespace kestrin {

// The password of a stored session that the desktop keyring keeps instead
// of the session's file (FTP and SFTP alike). It is found by the session's
// name (an SFTP session's by its file name), host and user together, so a
// session file edited by hand to name another server never sends the
// password there: the keyring then has none for it.
//
// Every call but ForgetLater waits on the session bus (and on the user,
// when the keyring asks to be unlocked): off the GUI thread only.
class SessionPassword
{
public:
    // Empty when a keyring answers; else why there is none, for the user.
    static std::string Unavailable();
    // The session's password; no secret and no error when none is kept.
    static platform::Keyring::Found Lookup(const FtpSession &session);
    // Keeps `password` for the session, in place of whatever the keyring
    // held for a session of its name. An empty password is kept as none.
    // Empty, or why it could not.
    static std::string Keep(const FtpSession &session, const std::string &password);
    // Removes what the keyring holds for the session stored in
    // `sessionFile` ("<name>.ftp", "<name>.sftp").
    static std::string Forget(const std::string &sessionFile);
    // Forget, on a thread of its own; nobody hears how it went.
    static void ForgetLater(const std::string &sessionFile);
};

} // namespace kestrin
