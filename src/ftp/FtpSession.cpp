#include "ftp/FtpSession.h"

#include "app/AppInfo.h"
#include "app/NumberText.h"
#include "app/Profile.h"
#include "ftp/FtpSecurity.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/PathNames.h"

#include <array>

namespace kestrin {

namespace {

constexpr const char *kExtension = ".ftp";

} // namespace

bool FtpSession::IsSessionFile(const std::string &fileName)
{
    const size_t dot = fileName.rfind('.');
    return dot != std::string::npos && fileName.compare(dot, std::string::npos, kExtension) == 0;
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

std::vector<std::string> FtpSession::List()
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
        if (IsSessionFile(leaf))
            names.push_back(NameOf(leaf));
    }
    return names;
}

FtpSession FtpSession::Read(const std::string &fileName)
{
    FtpSession session;
    session.name = NameOf(fileName);
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
    return session;
}

bool FtpSession::Write() const
{
    const std::string fileName = FileNameOf(name);
    const std::array<std::pair<const char *, const std::string *>, 6> keys{{
        {"Host", &host},
        {"Port", &port},
        {"User", &user},
        {"Pass", &pass},
        {"RemoteDir", &remoteDir},
        {"LocalDir", &localDir},
    }};
    for (const auto &[key, value] : keys) {
        if (!SetProfileString(kSettingsFolder, key, *value, fileName))
            return false;
    }
    return true;
}

bool FtpSession::Remove(const std::string &fileName)
{
    const std::string folder = Folder();
    if (folder.empty() || platform::Entry(folder + "/" + fileName).Remove() != B_OK)
        return false;
    // What Kestrin kept of it goes too: a new session of the same name must
    // not inherit a trusted certificate.
    FtpSecurity::Remove(NameOf(fileName));
    return true;
}

std::string FtpSession::FileOfSavedPlace(const std::string &savedPlace)
{
    if (savedPlace.empty() || savedPlace[0] == '/')
        return {};
    const std::string file = FileNameOf(savedPlace);
    struct stat info;
    return platform::StatPath(Folder() + "/" + file, &info) == B_OK ? file : "";
}

unsigned FtpSession::PortNumber() const
{
    return unsigned(kestrin::atoi(port.c_str()));
}

} // namespace kestrin
