#pragma once

// What the tests of panes share, with and without a window: a handler that
// records what it is handed, files in a temporary home, waiting on a
// condition, and for the pane's core a stand-in for the list that shows its
// rows.

#include "panes/DirListItem.h"
#include "panes/MarkedList.h"
#include "panes/PaneCommands.h"
#include "panes/PaneHost.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "platform/AlertRecorder.h"
#include "platform/Handler.h"
#include "platform/LaunchRecorder.h"
#include "platform/NodeMonitor.h"
#include "support/TempHome.h"
#include "widgets/ColumnListModel.h"

#include <QObject>
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
// on to a pane's core, as a pane does.
class RecordingHandler : public platform::Handler
{
public:
    void MessageReceived(platform::Message &message) override
    {
        if (message.what == B_NODE_MONITOR && forward != nullptr) {
            std::string name;
            message.FindString("name", &name);
            forwardedNames.push_back(name);
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
    kestrin::PaneModel *forward = nullptr;
    // The "name" of every node-monitor message handed on.
    std::vector<std::string> forwardedNames;
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
inline std::vector<std::string> RowNames(const kestrin::ColumnListModel &list)
{
    std::vector<std::string> names;
    for (int i = 0; i < list.CountItems(); i++)
        names.push_back(static_cast<const kestrin::DirListItem *>(list.ItemAt(i))->Name());
    return names;
}

// The names of the marked rows, sorted.
inline std::vector<std::string> MarkedNames(const kestrin::MarkedList &marked)
{
    std::vector<std::string> names;
    for (const kestrin::DirListItem *row : marked.Rows())
        names.push_back(row->Name());
    std::sort(names.begin(), names.end());
    return names;
}

// The list a pane's core shows its rows in, without a window: a selection
// that stays on its row as rows come and go and goes with its row, as a
// list's does, and the row a rename field would be open on.
class ListStandIn : public kestrin::PaneHost
{
public:
    explicit ListStandIn(kestrin::ColumnListModel &list)
        : fList(list)
    {
        QObject::connect(&list,
                         &kestrin::ColumnListModel::RowsAboutToMove,
                         &fContext,
                         [this](int, const std::vector<int> &leaving) {
                             if (std::binary_search(leaving.begin(), leaving.end(), Selection()))
                                 fSelected = nullptr;
                         });
        QObject::connect(&list, &QAbstractItemModel::modelAboutToBeReset, &fContext, [this] {
            fSelected = nullptr;
        });
    }

    int Selection() const override { return fList.IndexOf(fSelected); }
    void SelectRow(int index, bool) override
    {
        if (const kestrin::CLVListItem *row = fList.ItemAt(index))
            fSelected = row;
    }
    void StartRename(int index) override { renaming = index; }
    void EndRename() override { renaming = -1; }
    void Deselect() { fSelected = nullptr; }

    int renaming = -1;

private:
    kestrin::ColumnListModel &fList;
    const kestrin::CLVListItem *fSelected = nullptr;
    QObject fContext;
};

// A pane's core on a folder of a temporary home, listed, with no window.
class PaneCoreFixture : public ::testing::Test
{
protected:
    void SetUp() override { fs::create_directories(Folder()); }

    std::string Folder() const { return fHome.Root() + "/work"; }

    // Makes the core on `path` and waits for its first listing.
    kestrin::PaneModel &Open(const std::string &path)
    {
        fModel = std::make_unique<kestrin::PaneModel>(fList, fHost, path, &fOwner);
        fModel->SetWindowTarget(&fWindow);
        fOwner.forward = fModel.get();
        Relist([this] { fModel->Attach(); });
        return *fModel;
    }

    // Runs `action` and waits for the listing it starts.
    void Relist(const std::function<void()> &action)
    {
        QSignalSpy finished(fModel.get(), &kestrin::PaneModel::ListingFinished);
        action();
        EXPECT_TRUE(finished.wait(10000));
    }

    std::vector<std::string> Names() const { return RowNames(fList); }
    bool RowsBecome(const std::vector<std::string> &names)
    {
        return WaitFor([&] { return Names() == names; });
    }

    kestrin::PaneCommands &Commands()
    {
        if (!fCommands)
            fCommands = std::make_unique<kestrin::PaneCommands>(*fModel, fHost);
        return *fCommands;
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    platform::LaunchRecorder fLaunches;
    kestrin::ColumnListModel fList{false};
    ListStandIn fHost{fList};
    RecordingHandler fOwner;
    RecordingHandler fWindow;
    std::unique_ptr<kestrin::PaneModel> fModel;
    std::unique_ptr<kestrin::PaneCommands> fCommands;
};
