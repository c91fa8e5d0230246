#include "ftp/FtpSession.h"

#include "app/AppInfo.h"
#include "app/NumberText.h"
#include "app/Profile.h"
#include "ftp/FtpSecurity.h"
#include "ftp/SessionOptions.h"
#include "ftp/SessionPassword.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/PathNames.h"

#include <array>

namespace kestrin {

namespace {

const char *ExtensionOf(FtpSession::Kind kind)
{
    return kind == FtpSession::Kind::Sftp ? ".sftp" : ".ftp";
}

} // namespace

bool FtpSession::IsSessionFile(const std::string &fileName, Kind kind)
{
    const size_t dot = fileName.rfind('.');
    return dot != std::string::npos
           && fileName.compare(dot, std::string::npos, ExtensionOf(kind)) == 0;
}

std::string FtpSession::FileNameOf(const std::string &name, Kind kind)
{
    return name + ExtensionOf(kind);
}

std::optional<FtpSession::Kind> FtpSession::KindOf(const std::string &fileName)
{
    for (const Kind kind : {Kind::Ftp, Kind::Sftp}) {
        if (IsSessionFile(fileName, kind))
            return kind;
    }
    return std::nullopt;
}

const char *FtpSession::DefaultPort(Kind kind)
{
    return kind == Kind::Sftp ? "22" : "21";
}

std::string FtpSession::NameOf(const std::string &fileName)
{
    return fileName.substr(0, fileName.rfind('.'));
}

std::string FtpSession::Folder()
{
    std::string settings;
    if (!GetPathOnly(&settings))
        return {};
    return settings + "/" + kSettingsFolder;
}

std::vector<std::string> FtpSession::List(Kind kind)
{
    std::vector<std::string> names;
    const std::string folder = Folder();
    if (folder.empty())
        return names;
    platform::Directory directory(folder);
    platform::Entry entry;
    while (directory.GetNextEntry(&entry) == B_OK) {
        std::string leaf;
        entry.GetName(&leaf);
        if (IsSessionFile(leaf, kind))
            names.push_back(NameOf(leaf));
    }
    return names;
}

FtpSession FtpSession::Read(const std::string &fileName)
{
    FtpSession session;
    session.name = NameOf(fileName);
    session.kind = KindOf(fileName).value_or(Kind::Ftp);
    std::string buffer = session.name;
    const std::array<std::pair<const char *, std::string *>, 6> keys{{
        {"Host", &session.host},
        {"Port", &session.port},
        {"User", &session.user},
        {"Pass", &session.pass},
        {"RemoteDir", &session.remoteDir},
        {"LocalDir", &session.localDir},
    }};
    for (const auto &[key, field] : keys) {
        GetProfileString(kSettingsFolder, key, &buffer, fileName);
        *field = buffer;
    }
    session.passwordInKeyring = SessionOptions::Read(fileName).PasswordInKeyring();
    return session;
}

bool FtpSession::WriteKeys(const std::string &fileName, const std::string &password) const
{
    const std::array<std::pair<const char *, const std::string *>, 6> keys{{
        {"Host", &host},
        {"Port", &port},
        {"User", &user},
        {"Pass", &password},
        {"RemoteDir", &remoteDir},
        {"LocalDir", &localDir},
    }};
    for (const auto &[key, value] : keys) {
        if (!SetProfileString(kSettingsFolder, key, *value, fileName))
            return false;
    }
    return true;
}

bool FtpSession::WriteAnew(const std::string &fileName) const
{
    const std::string temporary = "." + fileName + ".new";
    const std::string folder = Folder();
    platform::Entry(folder + "/" + temporary).Remove();
    if (!WriteKeys(temporary, passwordInKeyring ? std::string() : pass))
        return false;
    platform::Entry written(folder + "/" + temporary);
    if (written.MoveTo("", fileName.c_str(), true) == B_OK)
        return true;
    written.Remove();
    return false;
}

bool FtpSession::Write() const
{
    const std::string fileName = FileNameOf(name, kind);
    SessionOptions options = SessionOptions::Read(fileName);
    const bool anew = passwordInKeyring || options.PasswordInKeyring();
    if (!(anew ? WriteAnew(fileName) : WriteKeys(fileName, pass)))
        return false;
    if (options.PasswordInKeyring() == passwordInKeyring)
        return true;
    options.SetPasswordInKeyring(passwordInKeyring);
    return options.Write();
}

bool FtpSession::Remove(const std::string &fileName)
{
    const std::string folder = Folder();
    if (folder.empty() || platform::Entry(folder + "/" + fileName).Remove() != B_OK)
        return false;
    const SessionOptions options = SessionOptions::Read(fileName);
    if (options.PasswordInKeyring())
        SessionPassword::ForgetLater(fileName);
    SessionOptions::Remove(fileName);
    // What Kestrin kept of it goes too: a new session of the same name must
    // not inherit a trusted certificate. (An SFTP session has none: the FTP
    // session of its name keeps its own.)
    if (IsSessionFile(fileName))
        FtpSecurity::Remove(NameOf(fileName));
    return true;
}

std::string FtpSession::FileOfSavedPlace(const std::string &savedPlace)
{
    if (savedPlace.empty() || savedPlace[0] == '/')
        return {};
    struct stat info;
    const std::string file = FileNameOf(savedPlace);
    if (platform::StatPath(Folder() + "/" + file, &info) == B_OK)
        return file;
    if (IsSessionFile(savedPlace, Kind::Sftp)
        && platform::StatPath(Folder() + "/" + savedPlace, &info) == B_OK)
        return savedPlace;
    return {};
}

std::string FtpSession::SavedPlace() const
{
    return kind == Kind::Sftp ? FileNameOf(name, kind) : name;
}

unsigned FtpSession::PortNumber() const
{
    return unsigned(kestrin::atoi(port.c_str()));
}

} // namespace kestrin
