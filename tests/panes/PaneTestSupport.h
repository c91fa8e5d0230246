#pragma once

// What the tests of a pane's widgets share: a pane or a list shown in a
// window, on a folder of a temporary home.

#include "PaneCoreSupport.h"

#include "ftp/FtpSession.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/KsHeader.h"
#include "panes/PaneCommands.h"
#include "widgets/StatusLog.h"

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

// The strings a message holds in `field`, in their order.
inline std::vector<std::string> Strings(const platform::Message &message, const char *field)
{
    std::vector<std::string> values;
    std::string value;
    for (int32_t i = 0; message.FindString(field, i, &value) == B_OK; i++)
        values.push_back(value);
    return values;
}

// A pane shown on a folder of a temporary home, its messages to fWindow.
class PaneFixture : public ::testing::Test
{
protected:
    void SetUp() override { fs::create_directories(Folder()); }

    std::string Folder() const { return fHome.Root() + "/work"; }

    kestrin::DirPane &Open(const std::string &path = "")
    {
        fPane = ShownPane(path.empty() ? Folder() : path, &fWindow);
        return *fPane;
    }

    // Stores the session `name` for a server on 127.0.0.1.
    static void Store(const std::string &name,
                      unsigned port,
                      const std::string &remoteDir,
                      const std::string &user = "anonymous",
                      const std::string &pass = "kestrin@",
                      kestrin::FtpSession::Kind kind = kestrin::FtpSession::Kind::Ftp)
    {
        kestrin::FtpSession session;
        session.kind = kind;
        session.name = name;
        session.host = "127.0.0.1";
        session.port = std::to_string(port);
        session.user = user;
        session.pass = pass;
        session.remoteDir = remoteDir;
        ASSERT_TRUE(session.Write());
    }

    // Runs `action` and waits for the listing that follows it.
    bool Listed(const std::function<void()> &action, int timeoutMs = 30000)
    {
        QSignalSpy finished(fPane->List(), &kestrin::DirView::ListingFinished);
        action();
        return finished.wait(timeoutMs);
    }

    void Key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(fPane->List(), Qt::Key(key), modifiers);
    }
    void Select(const std::string &name) { fPane->List()->Select(fPane->List()->FindItem(name)); }
    std::string Selected() const
    {
        const auto *row = fPane->List()->Row(fPane->List()->CurrentSelection());
        return row != nullptr ? row->Name() : "";
    }
    std::string Header() const { return fPane->Header()->Text(); }
    std::string LogText() const { return fPane->Log()->toPlainText().toStdString(); }
    int LogCount(const std::string &text) const
    {
        return int(fPane->Log()->toPlainText().count(QString::fromStdString(text)));
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    platform::LaunchRecorder fLaunches;
    RecordingHandler fWindow;
    std::unique_ptr<kestrin::DirPane> fPane;
};

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
