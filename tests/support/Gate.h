#pragma once

#include <condition_variable>
#include <mutex>

// Holds the workers that pass it until the test opens it: what a test does
// meanwhile happens, for sure, while they wait.
class Gate
{
public:
    void Open()
    {
        std::lock_guard<std::mutex> hold(fLock);
        fOpen = true;
        fChanged.notify_all();
    }
    void Pass()
    {
        std::unique_lock<std::mutex> hold(fLock);
        fChanged.wait(hold, [this] { return fOpen; });
    }

private:
    std::mutex fLock;
    std::condition_variable fChanged;
    bool fOpen = false;
};
