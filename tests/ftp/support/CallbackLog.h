#pragma once

#include "ftp/clsFTP.h"

#include <algorithm>
#include <string>
#include <vector>

// Records what a client reports; progress calls answer `progressAnswer`.
struct CallbackLog
{
    struct Call
    {
        int code;
        int count;
        std::string text;
    };
    std::vector<Call> calls;
    int progressAnswer = 1;

    static int Record(int code, int count, const char *text, void *data)
    {
        auto *log = static_cast<CallbackLog *>(data);
        log->calls.push_back({code, count, text != nullptr ? text : ""});
        return code >= 0 ? log->progressAnswer : 1;
    }

    bool HasText(const std::string &text) const
    {
        return std::any_of(calls.begin(), calls.end(), [&](const Call &c) {
            return c.text == text;
        });
    }
    int ProgressCalls() const
    {
        return int(
            std::count_if(calls.begin(), calls.end(), [](const Call &c) { return c.code >= 0; }));
    }
};
