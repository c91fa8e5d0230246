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

platform::Keyring::Attributes AttributesOf(const FtpSession &session)
{
    return {{kSession, session.name}, {kHost, session.host}, {kUser, session.user}};
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
    std::string error = Forget(session.name);
    if (!error.empty() || password.empty())
        return error;
    const std::string label = "Kestrin: FTP session \"" + session.name + "\" (" + session.user + "@"
                              + session.host + ")";
    return TheKeyring().Store(AttributesOf(session), label, password);
}

std::string SessionPassword::Forget(const std::string &name)
{
    return TheKeyring().Clear({{kSession, name}});
}

void SessionPassword::ForgetLater(const std::string &name)
{
    platform::Background::Start(
        nullptr,
        [name](const platform::Background::Task &) { Forget(name); },
        platform::Background::Thread::Own);
}

} // namespace kestrin
