#include "ftp/FtpSecurity.h"

#include "app/AppInfo.h"
#include "app/Profile.h"
#include "ftp/FtpSession.h"
#include "platform/Entry.h"
#include "platform/File.h"

#include <array>

namespace kestrin {

namespace {

constexpr const char *kExtension = ".ftp.tls";

// The words of the file, in the order of the choices.
constexpr std::array<std::pair<FtpTls::Choice, const char *>, 3> kChoices{{
    {FtpTls::Choice::IfOffered, "IfOffered"},
    {FtpTls::Choice::Required, "Required"},
    {FtpTls::Choice::Off, "Off"},
}};

const char *WordOf(FtpTls::Choice choice)
{
    for (const auto &[known, word] : kChoices) {
        if (known == choice)
            return word;
    }
    return kChoices[0].second;
}

std::string PathOf(const std::string &sessionName)
{
    const std::string folder = FtpSession::Folder();
    return folder.empty() ? folder : folder + "/" + FtpSecurity::FileNameOf(sessionName);
}

} // namespace

std::string FtpSecurity::FileNameOf(const std::string &sessionName)
{
    return sessionName + kExtension;
}

FtpSecurity FtpSecurity::Read(const std::string &sessionName)
{
    FtpSecurity security;
    if (sessionName.empty())
        return security;
    const std::string file = FileNameOf(sessionName);
    std::string word;
    if (GetProfileString(kSettingsFolder, "Tls", &word, file)) {
        for (const auto &[choice, known] : kChoices) {
            if (word == known)
                security.tls = choice;
        }
    }
    GetProfileString(kSettingsFolder, "Certificate", &security.trustedCertificate, file);
    return security;
}

bool FtpSecurity::Write(const std::string &sessionName) const
{
    if (IsDefault())
        return Remove(sessionName);
    const std::string path = PathOf(sessionName);
    if (sessionName.empty() || path.empty())
        return false;
    const std::string text = std::string("Tls=") + WordOf(tls)
                             + "\nCertificate=" + trustedCertificate + "\n";
    return platform::File::ReplaceContents(path, text, 0600) == B_OK;
}

bool FtpSecurity::Remove(const std::string &sessionName)
{
    const std::string path = PathOf(sessionName);
    if (sessionName.empty() || path.empty())
        return false;
    platform::Entry entry(path);
    return !entry.Exists() || entry.Remove() == B_OK;
}

} // namespace kestrin
