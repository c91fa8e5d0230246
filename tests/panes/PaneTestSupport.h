#pragma once

// What the tests of a pane's widgets share: a pane or a list shown in a
// window, on a folder of a temporary home.

#include "PaneCoreSupport.h"

#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/PaneCommands.h"

#include <QSignalSpy>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

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
    return RowNames(view.ListModel());
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
        fOwner.forward = &fView->Model();
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
