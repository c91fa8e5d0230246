#pragma once

// What the tests of panes on a real FTP or SFTP server share: two panes on
// a local folder, a stored session opened in one of them, and a server's
// file viewed from its temporary copy.

#include "MainWindowTestSupport.h"

#include "fileops/CopyWin.h"
#include "mainwindow/ViewFromServer.h"
#include "mainwindow/WindowMessages.h"
#include "panes/KsHeader.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerWindow.h"

class ServerPaneFixture : public KestrinFixture
{
protected:
    std::string Local() const { return fHome.Root() + "/local"; }

    void TwoPanesOnLocal()
    {
        fs::create_directories(Local());
        PanesOn({Local(), Local()});
    }

    // Opens the stored session `file` in a pane, as the sessions window does.
    void OpenSession(size_t pane, const std::string &file)
    {
        kestrin::KestrinWindow &window = *fKestrin->Window();
        window.FocusPane(window.Panes()[pane]);
        platform::Message open(kestrin::kMsgOpenFtpSession);
        open.AddString("session", file);
        window.MessageReceived(open);
    }

    std::string Header(size_t pane)
    {
        return fKestrin->Window()->Panes().at(pane)->Header()->Text();
    }
    bool HeaderIs(size_t pane, const std::string &header)
    {
        return WaitFor([&] { return Header(pane) == header && !List(pane)->IsListing(); });
    }

    // Pane 0, on the server, is kept in the profile as `kept`; `leave` takes
    // it back to the local folder, and the next start connects it again.
    void ExpectKeptAndConnectedAgain(const std::string &kept,
                                     const std::string &header,
                                     const std::function<void()> &leave)
    {
        fKestrin->Window()->SaveSettings();
        EXPECT_EQ(ProfileValue("Pane0"), kept);
        EXPECT_EQ(ProfileValue("Pane1"), Local());
        leave();
        ASSERT_TRUE(HeaderIs(0, Local())) << Header(0);
        EXPECT_FALSE(List(0)->Source().IsRemote());
        fKestrin.reset();
        Start();
        EXPECT_TRUE(List(0)->Source().IsRemote());
        EXPECT_TRUE(HeaderIs(0, header)) << Header(0);
        EXPECT_TRUE(fAlerts.Shown().empty());
    }

    // The title of the copy window shown now, or "".
    static QString CopyTitle()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (qobject_cast<kestrin::CopyWin *>(window) != nullptr)
                return window->windowTitle();
        }
        return {};
    }

    kestrin::ViewerWindow *Viewer()
    {
        for (auto *each : fKestrin->Window()->findChildren<kestrin::ViewerWindow *>()) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }

    // F3 on the server's file `name` in pane 0: downloaded with the copy
    // window into a private temporary folder, never into a pane's folder,
    // and shown; the folder goes when the viewer closes.
    void ExpectViewedFromATemporaryCopy(const std::string &name, const std::string &bytes)
    {
        SelectIn(0, name);
        QTest::keyClick(List(0), Qt::Key_F3);
        EXPECT_EQ(CopyTitle(), "Download");
        ASSERT_TRUE(WaitFor([&] { return Viewer() != nullptr; }));
        kestrin::ViewerWindow *shown = Viewer();
        EXPECT_EQ(shown->windowTitle(), QString::fromStdString(name));
        ASSERT_NE(shown->TextView(), nullptr);
        const QString firstRow = QString::fromStdString(bytes).section('\n', 0, 0);
        EXPECT_TRUE(WaitFor([&] { return shown->TextView()->ShownRows().value(0) == firstRow; }));
        auto *copy = shown->findChild<kestrin::ViewFromServer *>();
        ASSERT_NE(copy, nullptr);
        const std::string folder = copy->Folder();
        EXPECT_EQ(fs::status(folder).permissions() & fs::perms::all, fs::perms::owner_all);
        EXPECT_EQ(ReadFileBytes(folder + "/" + name), bytes);
        EXPECT_FALSE(fs::exists(Local() + "/" + name)) << "nothing lands in a pane's folder";
        shown->close();
        EXPECT_TRUE(WaitFor([&] { return !fs::exists(folder); }));
        EXPECT_TRUE(fAlerts.Shown().empty());
    }
};
