#include "ftp/ServerConversation.h"

#include "ftp/SessionPassword.h"

namespace kestrin {

ServerConversation::ServerConversation(FtpSession session, std::string scheme)
    : fSession(std::move(session))
    , fScheme(std::move(scheme))
{}

void ServerConversation::StartWork(std::function<void(const Post &)> work)
{
    // A thread of its own, which waits on the server as long as it takes.
    fWork = platform::Background::Start(
        this,
        [work = std::move(work), self = this](const platform::Background::Task &task) {
            work([&task, self](Call call) {
                task.Post([self, call = std::move(call)] { call(*self); });
            });
        },
        platform::Background::Thread::Own);
}

void ServerConversation::StopWork()
{
    fWork.Stop();
}

uint64_t ServerConversation::Number(bool login)
{
    const uint64_t id = ++fLatest;
    if (login)
        SetStatus(fScheme + ": Connecting...");
    return id;
}

void ServerConversation::SetStatus(const std::string &status)
{
    if (status == fStatus)
        return;
    fStatus = status;
    emit Changed();
}

void ServerConversation::Connected(uint64_t id)
{
    if (IsNewest(id))
        SetStatus(fScheme + ": Connected!");
}

void ServerConversation::Answered(const std::string &status, const std::function<void()> &done)
{
    fStatus = status;
    done();
    // The folder a place reached is known only now.
    emit Changed();
}

std::function<void(const std::string &)> ServerConversation::LogThrough(const Post &post)
{
    return [&post](const std::string &line) {
        post([text = QString::fromStdString(line)](ServerConversation &conversation) {
            emit conversation.LogLine(text);
        });
    };
}

std::string ServerConversation::KeyringPassword(const FtpSession &session, const Post &post)
{
    const platform::Keyring::Found found = SessionPassword::Lookup(session);
    if (found.secret) {
        post([password = *found.secret](ServerConversation &conversation) {
            conversation.fSession.pass = password;
        });
        return *found.secret;
    }
    const std::string why = found.error.empty()
                                ? "The desktop keyring holds no password for this session."
                                : "Kestrin could not read the password from the desktop keyring: "
                                      + found.error;
    post([text = QString::fromStdString(why)](ServerConversation &conversation) {
        emit conversation.LogLine(text);
    });
    return {};
}

} // namespace kestrin
