#include "ftp/ConWin.h"

#include "MessageRecorder.h"
#include "TempHome.h"
#include "ftp/FtpMessages.h"
#include "ftp/FtpWin.h"
#include "platform/AlertRecorder.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using kestrin::ConWin;

namespace {

class ConWinTest : public ::testing::Test
{
protected:
    ConWinTest() { fs::create_directories(Folder()); }

    std::string Folder() const { return fHome.ConfigDir() + "/Kestrin"; }
    void WriteSession(const std::string &fileName) const
    {
        WriteFileBytes(Folder() + "/" + fileName, "Host=h\nPort=21\nUser=u\n");
    }

    std::unique_ptr<ConWin> Open()
    {
        auto window = std::make_unique<ConWin>(QRect(0, 0, 800, 600), &fMain);
        fList = window->findChild<QListWidget *>("lvConnections");
        return window;
    }

    std::vector<std::string> Rows() const
    {
        std::vector<std::string> rows;
        for (int i = 0; i < fList->count(); i++)
            rows.push_back(fList->item(i)->text().toStdString());
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    bool RowsAre(const std::vector<std::string> &expected) const { return Rows() == expected; }

    void Select(const char *name) const
    {
        const auto found = fList->findItems(name, Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1);
        fList->setCurrentItem(found.first());
    }

    // The session file the main window was asked to open in message `i`.
    std::string SessionSent(size_t i) const
    {
        std::string session;
        EXPECT_EQ(fMain.messages[i].what, kestrin::kMsgOpenFtpSession);
        EXPECT_EQ(fMain.messages[i].FindString("session", &session), B_OK);
        return session;
    }

    static void Click(QWidget *window, const char *button)
    {
        QTest::mouseClick(window->findChild<QPushButton *>(button), Qt::LeftButton);
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    MessageRecorder fMain;
    QListWidget *fList = nullptr;
};

const platform::Alert kNoSelection{"Hey", "Please select a session first.", {"OK"}};

TEST_F(ConWinTest, ListsSessionFilesOnlyAndFollowsTheFolder)
{
    for (const char *name : {"site.ftp.bak", "site.FTP", "a.b.ftp", "x.ftp"})
        WriteSession(name);
    auto window = Open();
    EXPECT_EQ(Rows(), (std::vector<std::string>{"a.b", "x"}));

    // Saved and removed from elsewhere: the list follows without being asked.
    WriteSession("later.ftp");
    EXPECT_TRUE(QTest::qWaitFor([&] { return RowsAre({"a.b", "later", "x"}); })) << Rows().size();
    fs::remove(Folder() + "/x.ftp");
    EXPECT_TRUE(QTest::qWaitFor([&] { return RowsAre({"a.b", "later"}); })) << Rows().size();
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(ConWinTest, ConnectNeedsASelectionAndHandsTheSessionFileToTheMainWindow)
{
    WriteSession("work.ftp");
    WriteSession("home.ftp");
    auto window = Open();
    fList->clearSelection();
    for (const char *button : {"bConnect", "bEdit", "bDelete"})
        Click(window.get(), button);
    ASSERT_EQ(fAlerts.Shown(), std::vector<platform::Alert>(3, kNoSelection));
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->findChild<kestrin::FtpWin *>(), nullptr);

    Select("work");
    Click(window.get(), "bConnect");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fMain.messages.empty(); }));
    EXPECT_EQ(SessionSent(0), "work.ftp");
    EXPECT_FALSE(window->isVisible());

    // A double-click on a row connects as well.
    auto second = Open();
    second->show();
    const QRect row = fList->visualItemRect(fList->findItems("home", Qt::MatchExactly).first());
    QTest::mouseClick(fList->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(fList->viewport(), Qt::LeftButton, {}, row.center());
    ASSERT_TRUE(QTest::qWaitFor([&] { return fMain.messages.size() == 2; }));
    EXPECT_EQ(SessionSent(1), "home.ftp");
    EXPECT_EQ(fAlerts.Count(), 3u);
}

// Without the mouse: the list has the focus and a selected row from the
// start and after every change of the folder, and Return connects.
TEST_F(ConWinTest, TheKeyboardAloneChoosesAndConnects)
{
    WriteSession("one.ftp");
    auto window = Open();
    QApplication::setActiveWindow(window.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_EQ(QApplication::focusWidget(), fList);
    const auto selected = [this] {
        const QList<QListWidgetItem *> rows = fList->selectedItems();
        return rows.size() == 1 ? rows.first()->text().toStdString() : std::string();
    };
    EXPECT_EQ(selected(), "one");

    // A row chosen with the keys stays chosen when the folder changes; when
    // it goes, the first row is chosen.
    WriteSession("two.ftp");
    ASSERT_TRUE(QTest::qWaitFor([&] { return fList->count() == 2; }));
    const std::string last = fList->item(1)->text().toStdString();
    QTest::keyClick(fList, Qt::Key_End);
    EXPECT_EQ(selected(), last);
    WriteSession("three.ftp");
    ASSERT_TRUE(QTest::qWaitFor([&] { return fList->count() == 3; }));
    EXPECT_EQ(selected(), last);
    fs::remove(Folder() + "/" + last + ".ftp");
    ASSERT_TRUE(QTest::qWaitFor([&] { return fList->count() == 2; }));
    EXPECT_EQ(selected(), fList->item(0)->text().toStdString());

    QTest::keyClick(fList, Qt::Key_End);
    const std::string chosen = selected();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fMain.messages.empty(); }));
    EXPECT_EQ(SessionSent(0), chosen + ".ftp");
    EXPECT_EQ(fMain.messages.size(), 1u) << "one Return, one connection";
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(ConWinTest, DeleteRemovesTheFileOnlyWhenConfirmed)
{
    WriteSession("old.ftp");
    // Kestrin's own file of the session goes with it: a new session of the
    // same name must not find a certificate trusted.
    WriteFileBytes(Folder() + "/old.ftp.tls", "Tls=IfOffered\nCertificate=AB:CD\n");
    auto window = Open();
    Select("old");
    fAlerts.QueueAnswer(0); // Cancel
    Click(window.get(), "bDelete");
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0],
              (platform::Alert{"Hey",
                               "Are you sure you want to delete the session: old?",
                               {"Cancel", "Delete"}}));
    EXPECT_TRUE(fs::exists(Folder() + "/old.ftp"));
    EXPECT_TRUE(fs::exists(Folder() + "/old.ftp.tls"));

    fAlerts.QueueAnswer(1); // Delete
    Click(window.get(), "bDelete");
    EXPECT_FALSE(fs::exists(Folder() + "/old.ftp"));
    EXPECT_FALSE(fs::exists(Folder() + "/old.ftp.tls"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return fList->count() == 0; }));
}

TEST_F(ConWinTest, AFolderThatCannotBeWatchedIsReported)
{
    fs::remove_all(Folder());
    auto window = Open();
    EXPECT_EQ(fList->count(), 0);
    const platform::Alert disabled{"Err", "Out of memory. Node Monitoring disabled.", {"Oh Well"}};
    EXPECT_EQ(fAlerts.Shown(), std::vector<platform::Alert>{disabled});
}

} // namespace

// Both kinds of session in one list, each row its kind beside the name; Connect, Edit and
// Delete act on the row's own file, and "New Connection", reached with the keys, asks which
// kind to make first.
TEST_F(ConWinTest, ListsFtpAndSftpSessionsAndNewConnectionAsksTheKind)
{
    WriteSession("work.ftp");
    WriteFileBytes(Folder() + "/work.sftp", "Host=h\nPort=22\nUser=s\n");
    WriteFileBytes(Folder() + "/work.ftp.tls", "Tls=IfOffered\nCertificate=AB:CD\n");
    auto window = Open();
    EXPECT_TRUE(RowsAre({"work", "work (SFTP)"}));
    QApplication::setActiveWindow(window.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    // New Connection, reached with the keys alone.
    auto *newButton = window->findChild<QPushButton *>("bNew");
    for (int tabs = 0; tabs < 8 && QApplication::focusWidget() != newButton; tabs++)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), newButton);
    fAlerts.QueueAnswer(2); // SFTP
    QTest::keyClick(newButton, Qt::Key_Space);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].buttons, (std::vector<std::string>{"Cancel", "FTP", "SFTP"}));
    auto *made = window->findChild<kestrin::FtpWin *>();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->findChild<QLineEdit *>("text3")->text(), "22");
    const std::pair<const char *, const char *> typed[] = {{"text1", "box"},
                                                           {"text2", "127.0.0.1"},
                                                           {"text4", "me"},
                                                           {"text6", "/srv"}};
    for (const auto &[field, text] : typed)
        made->findChild<QLineEdit *>(field)->setText(text);
    Click(made, "bOK");
    EXPECT_EQ(ReadFileBytes(Folder() + "/box.sftp"),
              "Host=127.0.0.1\nPort=22\nUser=me\nPass=\nRemoteDir=/srv\nLocalDir=\n");
    EXPECT_EQ(fs::status(Folder() + "/box.sftp").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(QTest::qWaitFor([&] { return RowsAre({"box (SFTP)", "work", "work (SFTP)"}); }));

    fAlerts.Clear();

    // Edit opens the selected row's own file.
    for (const auto &[row, user] : {std::pair{"work (SFTP)", "s"}, std::pair{"work", "u"}}) {
        Select(row);
        Click(window.get(), "bEdit");
        auto *settings = window->findChild<kestrin::FtpWin *>();
        ASSERT_NE(settings, nullptr) << row;
        EXPECT_EQ(settings->findChild<QLineEdit *>("text1")->text(), "work") << row;
        EXPECT_EQ(settings->findChild<QLineEdit *>("text4")->text(), user) << row;
        delete settings;
    }

    Select("work (SFTP)");
    fAlerts.QueueAnswer(1); // Delete
    Click(window.get(), "bDelete");
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text, "Are you sure you want to delete the session: work (SFTP)?");
    EXPECT_FALSE(fs::exists(Folder() + "/work.sftp"));
    // The FTP session of the same name keeps its file and its certificate.
    EXPECT_TRUE(fs::exists(Folder() + "/work.ftp"));
    EXPECT_TRUE(fs::exists(Folder() + "/work.ftp.tls"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return RowsAre({"box (SFTP)", "work"}); }));

    // Cancel makes nothing; FTP opens the window of an FTP session.
    fAlerts.QueueAnswer(0);
    Click(window.get(), "bNew");
    EXPECT_EQ(window->findChildren<kestrin::FtpWin *>().size(), 0u);
    fAlerts.QueueAnswer(1);
    Click(window.get(), "bNew");
    auto *settings = window->findChild<kestrin::FtpWin *>();
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->findChild<QLineEdit *>("text3")->text(), "21");

    Select("box (SFTP)");
    Click(window.get(), "bConnect");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fMain.messages.empty(); }));
    EXPECT_EQ(SessionSent(0), "box.sftp");
}
