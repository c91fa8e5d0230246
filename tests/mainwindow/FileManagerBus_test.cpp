// Kestrin on a session bus of its own: a dbus-daemon started for each test.

#include "MainWindowTestSupport.h"

#include "fileops/GetInfo.h"
#include "mainwindow/FileManagerBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QProcess>
#include <QUrl>

using kestrin::FileManagerBus;

namespace {

QString Uri(const std::string &path)
{
    return QUrl::fromLocalFile(QString::fromStdString(path)).toString();
}

class FileManagerBusTest : public KestrinFixture
{
protected:
    void SetUp() override
    {
        fDaemon.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        ASSERT_TRUE(fDaemon.waitForStarted()) << "dbus-daemon is missing";
        ASSERT_TRUE(WaitFor([this] { return fDaemon.canReadLine(); }));
        fAddress = QString::fromUtf8(fDaemon.readLine()).trimmed();
        fs::create_directories(Home() + "/one");
        fs::create_directories(Home() + "/two/sub");
        WriteFileBytes(Home() + "/one/note.txt", "words");
        Profile("NumPanes", "2");
        Profile("Pane0", Home());
        Profile("Pane1", Home());
        Start();
    }

    void TearDown() override
    {
        fService.reset();
        QDBusConnection::disconnectFromBus("kestrin");
        QDBusConnection::disconnectFromBus("caller");
        KestrinFixture::TearDown();
        fDaemon.terminate();
        fDaemon.waitForFinished();
    }

    QDBusConnection Bus(const QString &name)
    {
        return QDBusConnection::connectToBus(fAddress, name);
    }

    // Serves the window as main does: the name claimed first, then the object.
    void Serve()
    {
        ASSERT_FALSE(FileManagerBus::HandOverToRunning(Bus("kestrin"), {}))
            << "no Kestrin runs yet: this one claims the name";
        fService = std::make_unique<FileManagerBus>(Bus("kestrin"), fKestrin.get());
    }

    // Calls a method of the desktop's interface as another application does,
    // the event loop running meanwhile.
    void Call(const QString &method, const QStringList &uris)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(FileManagerBus::kFileManagerName,
                                                           FileManagerBus::kObjectPath,
                                                           "org.freedesktop.FileManager1",
                                                           method);
        call << uris << QString("");
        const QDBusPendingCall pending = Bus("caller").asyncCall(call);
        ASSERT_TRUE(WaitFor([&] { return pending.isFinished(); }));
        ASSERT_FALSE(pending.isError()) << pending.error().message().toStdString();
    }

    bool Shows(size_t pane, const std::string &folder)
    {
        const kestrin::DirView *list = List(pane);
        return list->CurrentPath() == folder && !list->IsListing() && list->CountItems() > 0;
    }

    std::string Selected(size_t pane)
    {
        std::string path;
        List(pane)->GetItemPath(&path);
        return path;
    }

    QProcess fDaemon;
    QString fAddress;
    std::unique_ptr<FileManagerBus> fService;
};

TEST_F(FileManagerBusTest, ShowFoldersShowItemsAndPropertiesReachTheFocusedPane)
{
    Serve();
    fKestrin->Window()->FocusPane(fKestrin->Window()->Panes()[1]);

    // Something other than a local file is passed over; the rest is shown.
    Call("ShowFolders", {"sftp://example.invalid/x", Uri(Home() + "/two")});
    ASSERT_TRUE(WaitFor([&] { return Shows(1, Home() + "/two"); }));
    EXPECT_EQ(List(0)->CurrentPath(), Home()) << "only the focused pane changes";

    Call("ShowItems", {Uri(Home() + "/one/note.txt")});
    ASSERT_TRUE(WaitFor([&] { return Shows(1, Home() + "/one"); }));
    EXPECT_TRUE(WaitFor([&] { return Selected(1) == Home() + "/one/note.txt"; })) << Selected(1);

    // A folder as an item: its parent, with it selected, not its contents.
    Call("ShowItems", {Uri(Home() + "/two/sub")});
    ASSERT_TRUE(WaitFor([&] { return Shows(1, Home() + "/two"); }));
    EXPECT_TRUE(WaitFor([&] { return Selected(1) == Home() + "/two/sub"; })) << Selected(1);

    Call("ShowItemProperties", {Uri(Home() + "/one/note.txt")});
    int infos = 0;
    for (QWidget *window : QApplication::topLevelWidgets())
        infos += qobject_cast<kestrin::GetInfo *>(window) != nullptr && window->isVisible();
    EXPECT_EQ(infos, 1);
    EXPECT_EQ(List(1)->CurrentPath(), Home() + "/two") << "properties leave the pane as it is";
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(FileManagerBusTest, ASecondStartHandsItsFolderToTheFirstAndEnds)
{
    Serve();
    QProcess second;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DBUS_SESSION_BUS_ADDRESS", fAddress);
    second.setProcessEnvironment(environment);
    second.setWorkingDirectory(QString::fromStdString(Home()));
    // A relative path is the second start's, resolved where it was started.
    second.start(KESTRIN_EXECUTABLE, {"one", Uri(Home() + "/two")});
    ASSERT_TRUE(second.waitForStarted());
    const bool ended = WaitFor([&] { return second.state() == QProcess::NotRunning; }, 30000);
    if (!ended)
        second.kill();
    ASSERT_TRUE(ended) << "the second start runs on instead of handing over";
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0);
    // As on a first start, the last argument is the one left shown.
    EXPECT_TRUE(WaitFor([&] { return Shows(0, Home() + "/two"); })) << List(0)->CurrentPath();
}

} // namespace
