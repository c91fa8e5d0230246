#include "ftp/FtpWin.h"

#include "PrivateKeyring.h"
#include "TempHome.h"
#include "ftp/FtpSession.h"
#include "ftp/SessionPassword.h"
#include "platform/AlertRecorder.h"
#include "support/TickGaps.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>
#include <vector>

namespace fs = std::filesystem;
using kestrin::FtpSession;
using kestrin::FtpWin;
using kestrin::SessionPassword;

namespace {

const std::string kPlain = "Host=h\nPort=21\nUser=u\nPass=\nRemoteDir=\nLocalDir=\n";

class FtpWinTest : public ::testing::Test
{
protected:
    std::string PathOf(const std::string &fileName) const
    {
        return fHome.ConfigDir() + "/Kestrin/" + fileName;
    }

    // The window, once it knows whether there is a keyring (its question
    // runs on a thread of its own, which is done by then).
    std::unique_ptr<FtpWin> Open(const std::optional<std::string> &fileName,
                                 FtpSession::Kind kind = FtpSession::Kind::Ftp)
    {
        auto window = std::make_unique<FtpWin>(QRect(0, 0, 800, 600), nullptr, fileName, kind);
        for (int i = 0; i < 7; i++)
            fields[i] = window->findChild<QLineEdit *>(QString("text%1").arg(i + 1));
        box = window->findChild<QCheckBox *>("keyring");
        note = window->findChild<QLabel *>("keyringNote");
        EXPECT_TRUE(box != nullptr && note != nullptr);
        EXPECT_TRUE(
            note == nullptr
            || QTest::qWaitFor(
                [this] { return note->text() != "Looking for the desktop keyring..."; }, 30000));
        return window;
    }

    void Type(int field, const char *text) { fields[field]->setText(text); }
    void TypeAll(const std::vector<const char *> &typed)
    {
        for (size_t i = 0; i < typed.size(); i++)
            Type(int(i), typed[i]);
    }
    static bool Show(FtpWin *window)
    {
        window->show();
        return QTest::qWaitForWindowExposed(window);
    }

    // Types the seven fields, ticks the keyring's box and saves: the window
    // closes with nothing to say.
    void SaveInKeyring(FtpWin *window, const std::vector<const char *> &typed)
    {
        TypeAll(typed);
        box->setChecked(true);
        Ok(window);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !window->isVisible(); }, 30000));
        EXPECT_EQ(fAlerts.Count(), 0u);
    }

    // Session "kept", whose password is in the keyring.
    void WriteKept() const
    {
        fs::create_directories(PathOf(""));
        WriteFileBytes(PathOf("kept.ftp"), kPlain);
        WriteFileBytes(PathOf("kept.ftp.kestrin"), "PasswordInKeyring=1\n");
    }

    static void Ok(FtpWin *window)
    {
        QTest::mouseClick(window->findChild<QPushButton *>("bOK"), Qt::LeftButton);
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    QLineEdit *fields[7] = {};
    QCheckBox *box = nullptr;
    QLabel *note = nullptr;
};

// A keyring that takes every call and never answers one, as a keyring does
// while it waits for the user to unlock it, or when it hangs.
class SilentKeyring : public QDBusVirtualObject
{
public:
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        message.setDelayedReply(true);
        held.push_back(message);
        calls++;
        return true;
    }
    // Answers every call held so far with an error. The threads waiting on
    // them must end before the test program does (one still inside libsecret
    // while the program's statics go crashes it); they end here at the latest
    // when libsecret's own time-out of 25 s has passed.
    void Release(QDBusConnection &bus)
    {
        for (const QDBusMessage &message : held)
            bus.send(message.createErrorReply(QDBusError::Failed, "gone"));
        held.clear();
    }
    int calls = 0;
    std::vector<QDBusMessage> held;
};

class FtpWinKeyring : public FtpWinTest
{
protected:
    void SetUp() override
    {
        if (!fKeyring.Unavailable().empty())
            GTEST_SKIP() << fKeyring.Unavailable();
    }

    static FtpSession Site()
    {
        FtpSession session;
        session.name = "site";
        session.host = "127.0.0.1";
        session.port = "2121";
        session.user = "me";
        return session;
    }

    PrivateKeyring fKeyring;
};

TEST_F(FtpWinTest, OkStopsAtTheFirstEmptyRequiredFieldAndFocusesIt)
{
    auto window = Open(std::nullopt);
    EXPECT_EQ(fields[2]->text(), "21");
    const std::pair<int, const char *> steps[] = {
        {0, "You must assign a session name to this connection."},
        {1, "You must assign a host to this connection."},
        {2, "You must assign a port to this connection."},
        {3, "You must assign a user name to this connection."},
    };
    fields[2]->clear();
    for (const auto &[field, text] : steps) {
        fAlerts.Clear();
        Ok(window.get());
        ASSERT_EQ(fAlerts.Shown(), (std::vector<platform::Alert>{{"Info", text, {"OK"}}}));
        EXPECT_EQ(window->focusWidget(), fields[field]);
        Type(field, field == 2 ? "2121" : "x");
    }
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(fs::exists(PathOf("x.ftp")));

    fields[0]->setText("../escaped");
    fAlerts.Clear();
    Ok(window.get());
    EXPECT_EQ(fAlerts.Shown(),
              (std::vector<platform::Alert>{
                  {"Info", "A session name cannot hold a \"/\".", {"OK"}}}));
    EXPECT_EQ(window->focusWidget(), fields[0]);
    EXPECT_FALSE(fs::exists(PathOf("../escaped.ftp")));
}

TEST_F(FtpWinTest, FieldsStandUnderTheirLabelsInOrderAndOKComesBeforeCancel)
{
    auto window = Open(std::nullopt);
    ASSERT_TRUE(Show(window.get()));
    const char *labels[]
        = {"Session:", "Host:", "Port:", "User Name:", "Password:", "Remote Dir:", "Local Dir:"};
    for (int i = 0; i < 7; i++) {
        QLabel *label = nullptr;
        for (QLabel *each : window->findChildren<QLabel *>()) {
            if (each->buddy() == fields[i])
                label = each;
        }
        ASSERT_NE(label, nullptr) << labels[i];
        EXPECT_EQ(label->text(), labels[i]);
        if (i > 0) {
            EXPECT_GT(fields[i]->y(), fields[i - 1]->y()) << labels[i];
        }
    }
    auto *ok = window->findChild<QPushButton *>("bOK");
    auto *cancel = window->findChild<QPushButton *>("bCancel");
    EXPECT_EQ(ok->text(), "OK");
    EXPECT_EQ(cancel->text(), "Cancel");
    EXPECT_LT(ok->x(), cancel->x());
}

TEST_F(FtpWinTest, ANewSessionIsSavedOwnerOnlyWithItsSixKeys)
{
    auto window = Open(std::nullopt);
    EXPECT_EQ(fields[4]->echoMode(), QLineEdit::Normal);
    TypeAll({"site", "ftp.example.org", "2121", "me", "secret", "/pub", ""});
    Ok(window.get());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(fAlerts.Count(), 0u);
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp")),
              "Host=ftp.example.org\nPort=2121\nUser=me\nPass=secret\nRemoteDir=/pub\nLocalDir=\n");
    EXPECT_EQ(fs::status(PathOf("site.ftp")).permissions(), fs::perms(0600));
    // A session with the default TLS choice leaves nothing else.
    EXPECT_EQ(std::distance(fs::directory_iterator(PathOf("")), fs::directory_iterator()), 1);
}

// Below the session's fields, the TLS choice and the certificate trusted
// for the session; they are kept in a file of their own, and the session
// file stays byte for byte what a plain one is.
TEST_F(FtpWinTest, TheTlsChoiceAndTheTrustedCertificateLiveInAFileOfTheirOwn)
{
    auto window = Open(std::nullopt);
    ASSERT_TRUE(Show(window.get()));
    auto *tls = window->findChild<QComboBox *>("tlsChoice");
    ASSERT_NE(tls, nullptr);
    EXPECT_GT(tls->y(), fields[6]->y());
    ASSERT_EQ(tls->count(), 3);
    EXPECT_EQ(tls->currentText(), "TLS if the server offers it");
    EXPECT_EQ(tls->itemText(1), "TLS required");
    EXPECT_EQ(tls->itemText(2), "no TLS");
    EXPECT_FALSE(window->findChild<QPushButton *>("bForget")->isVisible());
    TypeAll({"site", "h", "21", "u"});
    tls->setCurrentIndex(1);
    Ok(window.get());
    EXPECT_EQ(fAlerts.Count(), 0u);
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp")), kPlain);
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp.tls")), "Tls=Required\nCertificate=\n");
    EXPECT_EQ(fs::status(PathOf("site.ftp.tls")).permissions(), fs::perms(0600));
    EXPECT_EQ(std::distance(fs::directory_iterator(PathOf("")), fs::directory_iterator()), 2)
        << "no temporary file stays";

    // A certificate trusted since: shown, and forgotten on request.
    WriteFileBytes(PathOf("site.ftp.tls"), "Tls=Off\nCertificate=AB:CD\n");
    window = Open("site.ftp");
    ASSERT_TRUE(Show(window.get()));
    tls = window->findChild<QComboBox *>("tlsChoice");
    EXPECT_EQ(tls->currentText(), "no TLS");
    auto *trusted = window->findChild<QLabel *>("trustedCertificate");
    auto *forget = window->findChild<QPushButton *>("bForget");
    EXPECT_EQ(trusted->text(), "AB:CD");
    ASSERT_TRUE(forget->isVisible());
    QTest::mouseClick(forget, Qt::LeftButton);
    EXPECT_FALSE(forget->isVisible());
    tls->setCurrentIndex(0);
    Ok(window.get());
    EXPECT_FALSE(fs::exists(PathOf("site.ftp.tls"))) << "the defaults need no file";
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp")), kPlain);

    // Saved under another name, the choice and the trust go with it.
    WriteFileBytes(PathOf("site.ftp.tls"), "Tls=Required\nCertificate=AB:CD\n");
    window = Open("site.ftp");
    Type(0, "copy");
    Ok(window.get());
    EXPECT_EQ(ReadFileBytes(PathOf("copy.ftp.tls")), "Tls=Required\nCertificate=AB:CD\n");
    EXPECT_EQ(ReadFileBytes(PathOf("copy.ftp")), kPlain);
}

TEST_F(FtpWinTest, AMissingKeyShowsTheTextBeforeItAndRenamingKeepsTheOldFile)
{
    fs::create_directories(PathOf(""));
    WriteFileBytes(PathOf("old.ftp"), "Host=h\nPort=2121\nPass=pw\n");
    auto window = Open("old.ftp");
    const char *shown[] = {"old", "h", "2121", "2121", "pw", "pw", "pw"};
    for (int i = 0; i < 7; i++)
        EXPECT_EQ(fields[i]->text().toStdString(), shown[i]) << "text" << i + 1;

    Type(0, "new");
    Ok(window.get());
    EXPECT_EQ(ReadFileBytes(PathOf("old.ftp")), "Host=h\nPort=2121\nPass=pw\n");
    EXPECT_EQ(ReadFileBytes(PathOf("new.ftp")),
              "Host=h\nPort=2121\nUser=2121\nPass=pw\nRemoteDir=pw\nLocalDir=pw\n");
}

TEST_F(FtpWinTest, AFileThatCannotBeMadeIsReportedAndTheWindowCloses)
{
    // A file where the settings folder should be: even root cannot make it.
    fs::create_directories(fHome.ConfigDir());
    WriteFileBytes(fHome.ConfigDir() + "/Kestrin", "");
    auto window = Open(std::nullopt);
    TypeAll({"site", "h", "21", "u"});
    Ok(window.get());
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text, "Could not create the application preferences file.");
    EXPECT_FALSE(window->isVisible());
}

} // namespace

TEST_F(FtpWinKeyring, TheOptionKeepsThePasswordInTheKeyringAndShowsItThere)
{
    auto window = Open(std::nullopt);
    EXPECT_TRUE(box->isEnabled());
    EXPECT_FALSE(box->isChecked());
    EXPECT_EQ(note->text(), "");
    EXPECT_EQ(window->findChild<QLabel *>("label6")->text(),
              "Warning! storing password is insecure.");
    ASSERT_NO_FATAL_FAILURE(
        SaveInKeyring(window.get(), {"site", "127.0.0.1", "2121", "me", "secret", "/pub", ""}));
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp")),
              "Host=127.0.0.1\nPort=2121\nUser=me\nPass=\nRemoteDir=/pub\nLocalDir=\n");
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp.kestrin")), "PasswordInKeyring=1\n");
    EXPECT_EQ(SessionPassword::Lookup(Site()).secret, "secret");

    // Opened again: the password comes from the keyring; a new one goes there.
    window = Open("site.ftp");
    EXPECT_TRUE(box->isChecked());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fields[4]->isReadOnly(); }, 30000));
    EXPECT_EQ(fields[4]->text(), "secret");
    fields[4]->setText("changed");
    Ok(window.get());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->isVisible(); }, 30000));
    EXPECT_EQ(SessionPassword::Lookup(Site()).secret, "changed");
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp")),
              "Host=127.0.0.1\nPort=2121\nUser=me\nPass=\nRemoteDir=/pub\nLocalDir=\n");

    // Cleared: the password goes back into the file and out of the keyring.
    window = Open("site.ftp");
    ASSERT_TRUE(QTest::qWaitFor([&] { return fields[4]->text() == "changed"; }, 30000));
    box->setChecked(false);
    Ok(window.get());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadFileBytes(PathOf("site.ftp")),
              "Host=127.0.0.1\nPort=2121\nUser=me\nPass=changed\nRemoteDir=/pub\nLocalDir=\n");
    EXPECT_FALSE(fs::exists(PathOf("site.ftp.kestrin")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !SessionPassword::Lookup(Site()).secret.has_value(); },
                                30000));
}

// An SFTP session keeps its password in the keyring as an FTP one does,
// apart from the FTP session of its name; removing it forgets its own.
TEST_F(FtpWinKeyring, AnSftpSessionKeepsItsPasswordApartFromTheFtpOneOfItsName)
{
    ASSERT_EQ(SessionPassword::Keep(Site(), "ftp word"), "");
    auto window = Open(std::nullopt, FtpSession::Kind::Sftp);
    ASSERT_NE(box, nullptr);
    EXPECT_TRUE(box->isEnabled());
    ASSERT_NO_FATAL_FAILURE(
        SaveInKeyring(window.get(), {"site", "127.0.0.1", "22", "me", "secret", "/srv", ""}));
    EXPECT_EQ(ReadFileBytes(PathOf("site.sftp")),
              "Host=127.0.0.1\nPort=22\nUser=me\nPass=\nRemoteDir=/srv\nLocalDir=\n");
    EXPECT_EQ(ReadFileBytes(PathOf("site.sftp.kestrin")), "PasswordInKeyring=1\n");
    FtpSession sftp = Site();
    sftp.kind = FtpSession::Kind::Sftp;
    EXPECT_EQ(SessionPassword::Lookup(sftp).secret, "secret");
    EXPECT_EQ(SessionPassword::Lookup(Site()).secret, "ftp word");

    window = Open("site.sftp");
    EXPECT_TRUE(box->isChecked());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fields[4]->isReadOnly(); }, 30000));
    EXPECT_EQ(fields[4]->text(), "secret");
    window->close();

    ASSERT_TRUE(FtpSession::Remove("site.sftp"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !SessionPassword::Lookup(sftp).secret.has_value(); },
                                30000));
    EXPECT_EQ(SessionPassword::Lookup(Site()).secret, "ftp word");
}

// No Secret Service on the bus: the box cannot be ticked and says why; a
// session whose password is in the keyring keeps it there when saved.
TEST_F(FtpWinTest, WithoutAKeyringTheOptionIsDisabledAndSaysWhy)
{
    const std::string noBus = PrivateKeyring::UseBus();
    if (!noBus.empty())
        GTEST_SKIP() << noBus;
    const QString why = "No desktop keyring: no Secret Service (such as GNOME Keyring) answers on "
                        "the session bus.";
    auto window = Open(std::nullopt);
    EXPECT_EQ(note->text(), why);
    EXPECT_FALSE(box->isEnabled());
    EXPECT_EQ(box->toolTip(), why);
    EXPECT_EQ(window->findChild<QLabel *>("label6")->text(),
              "Warning! storing password is insecure.");
    TypeAll({"plain", "h", "21", "u", "pw"});
    Ok(window.get());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadFileBytes(PathOf("plain.ftp")),
              "Host=h\nPort=21\nUser=u\nPass=pw\nRemoteDir=\nLocalDir=\n");
    EXPECT_FALSE(fs::exists(PathOf("plain.ftp.kestrin")));

    WriteKept();
    window = Open("kept.ftp");
    EXPECT_TRUE(box->isChecked());
    EXPECT_FALSE(box->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fields[4]->isReadOnly(); }, 30000));
    Ok(window.get());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadFileBytes(PathOf("kept.ftp")), kPlain);
    EXPECT_EQ(ReadFileBytes(PathOf("kept.ftp.kestrin")), "PasswordInKeyring=1\n");
}

// While the keyring keeps the window's questions unanswered, the window
// goes on painting and says what it waits for; closing it leaves the
// answers to nobody.
TEST_F(FtpWinTest, AKeyringThatDoesNotAnswerNeverHoldsUpTheWindow)
{
    const std::string noBus = PrivateKeyring::UseBus();
    if (!noBus.empty())
        GTEST_SKIP() << noBus;
    SilentKeyring keyring;
    {
        QDBusConnection bus = QDBusConnection::connectToBus(QString::fromLocal8Bit(qgetenv(
                                                                "DBUS_SESSION_BUS_ADDRESS")),
                                                            "silent-keyring");
        ASSERT_TRUE(bus.registerService("org.freedesktop.secrets"));
        ASSERT_TRUE(bus.registerVirtualObject("/org/freedesktop/secrets",
                                              &keyring,
                                              QDBusConnection::SubPath));
    }
    WriteKept();

    TickGaps gaps;
    auto window = std::make_unique<FtpWin>(QRect(0, 0, 800, 600), nullptr, "kept.ftp");
    // Whether there is a keyring, and the password: both asked at once.
    ASSERT_TRUE(QTest::qWaitFor([&] { return keyring.calls >= 2; }, 30000));
    auto *password = window->findChild<QLineEdit *>("text5");
    EXPECT_TRUE(password->isReadOnly());
    EXPECT_EQ(password->placeholderText(), "Reading the desktop keyring...");
    EXPECT_EQ(window->findChild<QLabel *>("keyringNote")->text(),
              "Looking for the desktop keyring...");
    EXPECT_FALSE(window->findChild<QCheckBox *>("keyring")->isEnabled());
    QTest::mouseClick(window->findChild<QPushButton *>("bCancel"), Qt::LeftButton);
    EXPECT_FALSE(window->isVisible());
    EXPECT_LT(gaps.Longest(), TickGaps::kBlockedMs);

    // The two questions answered at last: their threads are done once the
    // window has heard of both.
    QDBusConnection bus("silent-keyring");
    keyring.Release(bus);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return !password->isReadOnly()
                   && window->findChild<QLabel *>("keyringNote")->text()
                          != "Looking for the desktop keyring...";
        },
        30000));
    window.reset();
    QDBusConnection::disconnectFromBus("silent-keyring");
}
