#include "platform/AlertRecorder.h"

namespace platform {

AlertRecorder::AlertRecorder()
    : fPrevious(Alerts::SetSink(this))
{}

AlertRecorder::~AlertRecorder()
{
    Alerts::SetSink(fPrevious);
}

int AlertRecorder::Show(const Alert &alert)
{
    std::lock_guard lock(fLock);
    fShown.push_back(alert);
    if (fAnswers.empty())
        return 0;
    const int answer = fAnswers.front();
    fAnswers.pop_front();
    return answer;
}

std::optional<std::string> AlertRecorder::AskSecret(const Alert &alert)
{
    std::lock_guard lock(fLock);
    fShown.push_back(alert);
    if (fSecrets.empty())
        return std::nullopt;
    std::optional<std::string> secret = std::move(fSecrets.front());
    fSecrets.pop_front();
    return secret;
}

void AlertRecorder::QueueSecret(std::optional<std::string> secret)
{
    std::lock_guard lock(fLock);
    fSecrets.push_back(std::move(secret));
}

void AlertRecorder::QueueAnswer(int buttonIndex)
{
    std::lock_guard lock(fLock);
    fAnswers.push_back(buttonIndex);
}

std::vector<Alert> AlertRecorder::Shown() const
{
    std::lock_guard lock(fLock);
    return fShown;
}

size_t AlertRecorder::Count() const
{
    std::lock_guard lock(fLock);
    return fShown.size();
}

void AlertRecorder::Clear()
{
    std::lock_guard lock(fLock);
    fShown.clear();
    fAnswers.clear();
    fSecrets.clear();
}

} // namespace platform
