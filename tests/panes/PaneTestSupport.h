#pragma once

// What the pane tests share: a handler that records what it is handed, a
// home folder with a folder to list, and a list shown in a window.

#include "panes/DirListItem.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/PaneMessages.h"
#include "platform/AlertRecorder.h"
#include "platform/Handler.h"
#include "platform/LaunchRecorder.h"
#include "platform/NodeMonitor.h"
#include "support/TempHome.h"

#include <QSignalSpy>
#include <QTest>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace fs = std::filesystem;

// Keeps every message it is handed; optionally hands node-monitor messages
// on to a list, as a pane does.
class RecordingHandler : public platform::Handler
{
public:
    void MessageReceived(platform::Message &message) override
    {
        if (message.what == B_NODE_MONITOR && forward != nullptr) {
            forward->HandleNodeMonitor(message);
            return;
        }
        messages.push_back(message);
    }
    std::vector<uint32_t> Codes() const
    {
        std::vector<uint32_t> codes;
        for (const auto &message : messages)
            codes.push_back(message.what);
        return codes;
    }
    int Count(uint32_t what) const
    {
        return int(std::count_if(messages.begin(), messages.end(), [what](const auto &m) {
            return m.what == what;
        }));
    }
    const platform::Message *Last(uint32_t what) const
    {
        for (auto it = messages.rbegin(); it != messages.rend(); ++it) {
            if (it->what == what)
                return &*it;
        }
        return nullptr;
    }

    std::vector<platform::Message> messages;
    kestrin::DirView *forward = nullptr;
};

inline void MakeFile(const std::string &path, size_t size = 0)
{
    WriteFileBytes(path, std::string(size, 'x'));
}

inline bool WaitFor(const std::function<bool()> &condition, int timeoutMs = 10000)
{
    return QTest::qWaitFor(condition, timeoutMs);
}

// The names of the rows, top to bottom.
// A pane on `folder`, shown and listed; its messages go to `target` when one
// is given.
inline std::unique_ptr<kestrin::DirPane> ShownPane(const std::string &folder,
                                                   platform::Handler *target = nullptr)
{
    auto pane = std::make_unique<kestrin::DirPane>(folder, "");
    pane->resize(600, 400);
    if (target != nullptr)
        pane->List()->SetWindowTarget(target);
    QSignalSpy finished(pane->List(), &kestrin::DirView::ListingFinished);
    pane->show();
    EXPECT_TRUE(finished.wait(10000));
    return pane;
}

inline std::vector<std::string> RowNames(const kestrin::DirView &view)
{
    std::vector<std::string> names;
    for (int i = 0; i < view.CountItems(); i++)
        names.push_back(view.Row(i)->Name());
    return names;
}

// A list in a window of its own, on a folder of a temporary home.
class ListFixture : public ::testing::Test
{
protected:
    void SetUp() override { fs::create_directories(Folder()); }

    std::string Folder() const { return fHome.Root() + "/work"; }

    // Makes the list on `path` and waits for its first listing.
    kestrin::DirView &Open(const std::string &path)
    {
        fWindow = std::make_unique<QWidget>();
        fWindow->resize(600, 400);
        fView = new kestrin::DirView(fWindow.get(), path, "", &fOwner);
        fView->resize(600, 400);
        fView->SetWindowTarget(&fTarget);
        fOwner.forward = fView;
        QSignalSpy finished(fView, &kestrin::DirView::ListingFinished);
        fWindow->show();
        EXPECT_TRUE(finished.wait(10000));
        WaitFor([this] { return !fView->IsListing(); });
        return *fView;
    }

    // Lists `path` again and waits for the rows.
    void Relist(const std::function<void()> &action)
    {
        QSignalSpy finished(fView, &kestrin::DirView::ListingFinished);
        action();
        EXPECT_TRUE(finished.wait(10000));
    }

    void Key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(fView, Qt::Key(key), modifiers);
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    platform::LaunchRecorder fLaunches;
    RecordingHandler fOwner;
    RecordingHandler fTarget;
    std::unique_ptr<QWidget> fWindow;
    kestrin::DirView *fView = nullptr;
};
