#pragma once

#include "platform/Handler.h"

#include <functional>
#include <vector>

// Keeps every message it is handed, and lets a test act on each as it comes
// (a handler that stops watching from inside MessageReceived, say).
class MessageRecorder : public platform::Handler
{
public:
    void MessageReceived(platform::Message &message) override
    {
        messages.push_back(message);
        if (onMessage)
            onMessage(message);
    }

    std::vector<platform::Message> messages;
    std::function<void(platform::Message &)> onMessage;
};
