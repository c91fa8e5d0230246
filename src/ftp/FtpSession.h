#pragma once

// A stored FTP session: "<name>.ftp" in Kestrin's settings folder, next to
// Kestrin.pref, in the profile's key=value format. An SFTP session is the
// same six keys in "<name>.sftp" beside it. The name is the file name
// less its extension and is not stored inside the file. What Kestrin keeps
// of a session beyond the six keys lives in its SessionOptions.

#include <optional>
#include <string>
#include <vector>

namespace kestrin {

struct FtpSession
{
    enum class Kind { Ftp, Sftp };

    std::string name;
    std::string host;
    // As typed: nothing checks that it is a number; the client reads it with
    // the profile's atoi.
    std::string port = "21";
    std::string user;
    std::string pass;
    std::string remoteDir;
    std::string localDir;
    // The password is kept in the desktop keyring (SessionPassword), and
    // `pass` is empty in the file; a pane's conversation fills it in.
    bool passwordInKeyring = false;
    // Which file it is kept in: its extension.
    Kind kind = Kind::Ftp;

    // Whether `fileName` names a session: the part from its last "." on is
    // exactly ".ftp" (so "site.ftp.bak" and "site.FTP" are not sessions).
    // Likewise ".sftp" for an SFTP session.
    static bool IsSessionFile(const std::string &fileName, Kind kind = Kind::Ftp);
    // "a.b.ftp" gives "a.b"; a name without "." stays as it is.
    static std::string NameOf(const std::string &fileName);
    static std::string FileNameOf(const std::string &name, Kind kind = Kind::Ftp);
    // The kind of session file `fileName` names, if any.
    static std::optional<Kind> KindOf(const std::string &fileName);
    // The folder the session files live in; empty without a settings folder.
    static std::string Folder();
    // The session names of a kind, in the order the folder lists them
    // (unsorted).
    static std::vector<std::string> List(Kind kind = Kind::Ftp);
    // The default port of a new session of the kind: "21" or "22".
    static const char *DefaultPort(Kind kind);

    // Reads "<file>" from the settings folder. The keys are read into one
    // shared buffer that starts as the session's name and is not cleared
    // between keys, so a key missing from the file repeats the text read
    // before it. Users' edited files have looked so since the first release.
    static FtpSession Read(const std::string &fileName);
    // Writes the six keys in their order, creating the file (owner-only) when
    // it is new and rewriting each line in place when it is not, then the
    // session's options. A session whose password is or was in the keyring
    // gets a file made anew instead, with "Pass" empty: rewriting in place
    // leaves the tail of a longer old value behind as a line of its own,
    // and no part of a password may stay in the file. False when the file
    // cannot be made.
    bool Write() const;
    // Removes the session's file and Kestrin's own files of it (its options
    // and FtpSecurity's), and forgets its password in the keyring (later, on
    // a thread of its own); false when the session's file could not be
    // removed.
    static bool Remove(const std::string &fileName);
    // The session file ("<name>.ftp") that a pane's saved place names, when
    // it is stored; empty for a folder's path. An SFTP pane keeps its file's
    // name ("<name>.sftp"), so that an FTP and an SFTP session of the same
    // name stay apart; the FTP session is looked for first, as ever.
    static std::string FileOfSavedPlace(const std::string &savedPlace);
    // The text a pane on this session keeps in the profile: the name of an
    // FTP session, the file name of an SFTP one.
    std::string SavedPlace() const;

    // The control port as the client takes it.
    unsigned PortNumber() const;

private:
    bool WriteKeys(const std::string &fileName, const std::string &password) const;
    // Writes the keys under a temporary name and renames it over the file.
    bool WriteAnew(const std::string &fileName) const;
};

} // namespace kestrin
