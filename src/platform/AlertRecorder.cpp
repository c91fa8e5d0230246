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
}

} // namespace platform
