#pragma once

#include "platform/Alerts.h"

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// Stands in for the message boxes while it exists: keeps every alert and
// answers each from a script of button indices (0 once the script runs out).
// Safe to use from worker threads.
class AlertRecorder : public AlertSink
{
public:
    AlertRecorder();
    ~AlertRecorder() override;

    AlertRecorder(const AlertRecorder &) = delete;
    AlertRecorder &operator=(const AlertRecorder &) = delete;

    int Show(const Alert &alert) override;
    // Kept with the alerts; answered from a script of its own (declined
    // once it runs out).
    std::optional<std::string> AskSecret(const Alert &alert) override;

    void QueueAnswer(int buttonIndex);
    void QueueSecret(std::optional<std::string> secret);
    std::vector<Alert> Shown() const;
    size_t Count() const;
    void Clear();

private:
    AlertSink *fPrevious;
    mutable std::mutex fLock;
    std::vector<Alert> fShown;                       // guarded by fLock
    std::deque<std::optional<std::string>> fSecrets; // guarded by fLock
    std::deque<int> fAnswers;                        // guarded by fLock
};

} // namespace platform
