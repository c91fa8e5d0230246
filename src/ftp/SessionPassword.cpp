#include "ftp/SessionPassword.h"

#include "platform/Background.h"

namespace kestrin {

namespace {

constexpr const char *kSession = "session";
constexpr const char *kHost = "host";
constexpr const char *kUser = "user";

const platform::Keyring &TheKeyring()
{
    static const platform::Keyring keyring("org.kestrin.Kestrin.FtpSession",
                                           {kSession, kHost, kUser});
    return keyring;
}

// The session an entry belongs to: an FTP session's name, as it has always
// been, and an SFTP session's file name, so that an FTP and an SFTP session
// of one name keep their passwords apart.
std::string KeyOf(const std::string &sessionFile)
{
    if (FtpSession::KindOf(sessionFile) == FtpSession::Kind::Sftp)
        return sessionFile;
    return FtpSession::NameOf(sessionFile);
}

platform::Keyring::Attributes AttributesOf(const FtpSession &session)
{
    return {{kSession, session.SavedPlace()}, {kHost, session.host}, {kUser, session.user}};
}

} // namespace

std::string SessionPassword::Unavailable()
{
    return TheKeyring().Unavailable();
}

platform::Keyring::Found SessionPassword::Lookup(const FtpSession &session)
{
    return TheKeyring().Lookup(AttributesOf(session));
}

std::string SessionPassword::Keep(const FtpSession &session, const std::string &password)
{
    // A session whose host or user changed keeps one password, not one for
    // each server it ever named.
    std::string error = Forget(FtpSession::FileNameOf(session.name, session.kind));
    if (!error.empty() || password.empty())
        return error;
    const std::string kind = session.kind == FtpSession::Kind::Sftp ? "SFTP" : "FTP";
    const std::string label = "Kestrin: " + kind + " session \"" + session.name + "\" (" + session.user + "@"
                              + session.host + ")";
    return TheKeyring().Store(AttributesOf(session), label, password);
}

std::string SessionPassword::Forget(const std::string &sessionFile)
{
    return TheKeyring().Clear({{kSession, KeyOf(sessionFile)}});
}

void SessionPassword::ForgetLater(const std::string &sessionFile)
{
    platform::Background::Start(
        nullptr,
        [sessionFile](const platform::Background::Task &) { Forget(sessionFile); },
        platform::Background::Thread::Own);
}

} // namespace kestrin
