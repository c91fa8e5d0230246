// Kestrin on a session bus of its own: a dbus-daemon started for each test.

#include "MainWindowTestSupport.h"
#include "ProgramRun.h"

#include "app/AppInfo.h"
#include "fileops/GetInfo.h"
#include "mainwindow/FileManagerBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

using kestrin::FileManagerBus;

namespace {

const QString kVersionLine = QString("%1 %2\n").arg(kestrin::kProductName, kestrin::kVersion);

QString Uri(const std::string &path)
{
    return QUrl::fromLocalFile(QString::fromStdString(path)).toString();
}

// Holds each alert open until `answered` holds, at most a few seconds, as
// a modal box holds the GUI thread until the user answers it.
class ModalAlerts : public platform::AlertRecorder
{
public:
    explicit ModalAlerts(std::function<bool()> answered)
        : fAnswered(std::move(answered))
    {}

    int Show(const platform::Alert &alert) override
    {
        fAnsweredFirst.push_back(QTest::qWaitFor(fAnswered, 3000));
        return AlertRecorder::Show(alert);
    }

    // Per alert, whether `answered` held by the time it was shown.
    std::vector<bool> fAnsweredFirst;

private:
    std::function<bool()> fAnswered;
};

// Kestrin started again as another process, in a settings folder of its own
// and with the start-up marker on: a start that opens a window prints its
// paint times and quits, rather than running on.
struct SecondStart : ProgramRun
{
    bool wroteSettings = false;
};

SecondStart StartAgain(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QTemporaryDir config;
    QProcessEnvironment own = environment;
    own.insert("XDG_CONFIG_HOME", config.path());
    own.insert("KESTRIN_STARTUP_MARKER", "1");
    SecondStart result{ProgramRun::Of(KESTRIN_EXECUTABLE, arguments, own, 30000)};
    if (!result.ended)
        result.err.prepend("still running; ");
    result.wroteSettings = QFileInfo::exists(config.path() + "/Kestrin/Kestrin.pref");
    return result;
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
        PanesOn({Home(), Home()});
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

    QProcessEnvironment OnTheBus() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DBUS_SESSION_BUS_ADDRESS", fAddress);
        return environment;
    }

    QDBusConnection Bus(const QString &name)
    {
        return QDBusConnection::connectToBus(fAddress, name);
    }

    // Serves the window as main does: the name claimed first, then the object.
    void Serve()
    {
        ASSERT_EQ(FileManagerBus::HandOverToRunning(Bus("kestrin"), {}), FileManagerBus::HandOver::Alone)
            << "no Kestrin runs yet: this one claims the name";
        fService = std::make_unique<FileManagerBus>(Bus("kestrin"), fKestrin.get());
    }

    // Calls a method of the desktop's interface as another application does,
    // the event loop running meanwhile.
    QDBusPendingCall Send(const QString &method, const QStringList &uris)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(FileManagerBus::kFileManagerName,
                                                           FileManagerBus::kObjectPath,
                                                           "org.freedesktop.FileManager1",
                                                           method);
        call << uris << QString("");
        return Bus("caller").asyncCall(call);
    }

    void Call(const QString &method, const QStringList &uris)
    {
        const QDBusPendingCall pending = Send(method, uris);
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
    EXPECT_TRUE(WaitFor([] { return Shown<kestrin::GetInfo>().size() == 1; }))
        << Shown<kestrin::GetInfo>().size();
    EXPECT_EQ(List(1)->CurrentPath(), Home() + "/two") << "properties leave the pane as it is";
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(FileManagerBusTest, ASecondStartHandsItsFolderToTheFirstAndEnds)
{
    Serve();
    QProcess second;
    second.setProcessEnvironment(OnTheBus());
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

TEST_F(FileManagerBusTest, TheRunningKestrinAnswersBeforeItAlertsAboutAMissingFolder)
{
    Serve();
    QDBusPendingCall pending = Send("ShowFolders", {Uri(Home() + "/gone")});
    ModalAlerts alerts([&pending] { return pending.isFinished(); });
    ASSERT_TRUE(WaitFor([&] { return alerts.Count() == 1; }));
    const platform::Alert expected{"Kestrin",
                                   "There is no folder \"" + Home() + "/gone\" to show.",
                                   {"OK"},
                                   B_WARNING_ALERT};
    EXPECT_EQ(alerts.Shown().front(), expected);
    EXPECT_TRUE(alerts.fAnsweredFirst.front()) << "the caller waited on the alert";
    ASSERT_TRUE(WaitFor([&] { return pending.isFinished(); }));
    EXPECT_FALSE(pending.isError()) << pending.error().message().toStdString();
}

TEST_F(FileManagerBusTest, ASecondStartNeverOpensAWindowBesideTheOneHoldingTheName)
{
    Serve();
    // A missing folder: the running one alerts, the second start just ends.
    const SecondStart handed = StartAgain({QString::fromStdString(Home() + "/gone")}, OnTheBus());
    EXPECT_EQ(handed.exitCode, 0) << handed.err.toStdString();
    EXPECT_FALSE(handed.out.contains("kestrin-startup")) << "a window of its own";
    EXPECT_FALSE(handed.wroteSettings);
    EXPECT_TRUE(WaitFor([&] { return fAlerts.Count() == 1; }));

    // The name is held by one that does not take the folders: the second
    // start says so and ends, still without a window.
    fService.reset();
    QDBusConnection::disconnectFromBus("kestrin");
    QDBusConnection mute = Bus("mute");
    ASSERT_TRUE(mute.registerService(FileManagerBus::kKestrinName));
    const SecondStart refused = StartAgain({QString::fromStdString(Home() + "/one")}, OnTheBus());
    QDBusConnection::disconnectFromBus("mute");
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_FALSE(refused.out.contains("kestrin-startup")) << "a window of its own";
    EXPECT_FALSE(refused.wroteSettings);
    EXPECT_TRUE(refused.err.contains("Kestrin")) << refused.err.toStdString();
}

// Help and the version are answered without the running Kestrin, and need
// neither a bus nor a display: a terminal over ssh has neither.
TEST_F(FileManagerBusTest, HelpVersionAndUnknownOptionsAreAnsweredWithoutTheRunningKestrin)
{
    Serve();
    QTemporaryDir runtime;
    QProcessEnvironment bare = QProcessEnvironment::systemEnvironment();
    for (const char *name :
         {"DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        bare.remove(name);
    bare.insert("XDG_RUNTIME_DIR", runtime.path());
    for (const QProcessEnvironment &environment : {OnTheBus(), bare}) {
        const SecondStart help = StartAgain({"--help"}, environment);
        EXPECT_EQ(help.exitCode, 0) << help.err.toStdString();
        EXPECT_TRUE(help.out.startsWith("Usage: kestrin")) << help.out.toStdString();
        EXPECT_TRUE(help.out.contains("--version")) << help.out.toStdString();
        const SecondStart version = StartAgain({"--version"}, environment);
        EXPECT_EQ(version.exitCode, 0) << version.err.toStdString();
        EXPECT_EQ(version.out.toStdString(), kVersionLine.toStdString());
        EXPECT_FALSE(help.wroteSettings || version.wroteSettings);
    }
    EXPECT_TRUE(StartAgain({"-h"}, OnTheBus()).out.startsWith("Usage: kestrin"));

    const SecondStart unknown = StartAgain({QString::fromStdString(Home() + "/one"), "--frobnicate"},
                                           OnTheBus());
    EXPECT_NE(unknown.exitCode, 0);
    EXPECT_TRUE(unknown.err.contains("--frobnicate")) << unknown.err.toStdString();
    EXPECT_TRUE(unknown.out.isEmpty()) << unknown.out.toStdString();
    EXPECT_FALSE(unknown.wroteSettings);
    EXPECT_EQ(fAlerts.Count(), 0u) << "the running Kestrin was handed an option";
    EXPECT_EQ(List(0)->CurrentPath(), Home());
}

} // namespace
