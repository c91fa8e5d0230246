// A pane's conversation with its server, against scripted, silent and real
// servers on 127.0.0.1: its results and log lines reach the GUI thread.

#include "PrivateKeyring.h"
#include "RealServers.h"
#include "ScriptedServer.h"
#include "SilentServer.h"
#include "TempHome.h"
#include "ftp/FtpCertificateTrust.h"
#include "ftp/FtpConversation.h"
#include "ftp/FtpListing.h"
#include "ftp/FtpSecurity.h"
#include "ftp/SessionPassword.h"
#include "platform/AlertRecorder.h"
#include "support/TickGaps.h"

#include <QRegularExpression>
#include <QStringList>
#include <QTest>
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <sys/stat.h>

namespace fs = std::filesystem;
using kestrin::FtpCertificateTrust;
using kestrin::FtpConversation;
using kestrin::FtpListingRow;
using kestrin::FtpRequest;
using kestrin::FtpResult;
using kestrin::FtpSecurity;
using kestrin::FtpSession;
using kestrin::FtpTls;
using testing::HasSubstr;

namespace {

constexpr unsigned kShortTimeout = 3000;

FtpSession SessionOn(unsigned port,
                     const std::string &user = "anonymous",
                     const std::string &pass = "kestrin@")
{
    FtpSession session;
    session.name = "test";
    session.host = "127.0.0.1";
    session.port = std::to_string(port);
    session.user = user;
    session.pass = pass;
    session.remoteDir = "/pub";
    return session;
}

// Submits a request and keeps what comes back on the GUI thread.
struct Outcome
{
    std::optional<FtpResult> result;
    QStringList log;

    void Submit(FtpConversation &conversation, FtpRequest request = {})
    {
        QObject::connect(&conversation, &FtpConversation::LogLine, [this](const QString &line) {
            log << line;
        });
        conversation.Submit(std::move(request), nullptr, [this](FtpResult &answer) {
            result = answer;
        });
    }
    bool Wait()
    {
        return QTest::qWaitFor([this] { return result.has_value(); }, 20000);
    }
    bool Run(FtpConversation &conversation, FtpRequest request = {})
    {
        Submit(conversation, std::move(request));
        return Wait();
    }
    qsizetype Count(const QString &line) const { return log.count(line); }
    // Waits until `line` has come `times` times in all.
    bool WaitFor(const QString &line, qsizetype times = 1)
    {
        return QTest::qWaitFor([&] { return Count(line) >= times; }, 20000);
    }
};

// The rows of a conversation's listing, by name.
std::map<std::string, FtpListingRow> RowsOf(const FtpResult &result)
{
    std::map<std::string, FtpListingRow> rows;
    for (FtpListingRow &row : kestrin::GetEntries(result.listing))
        rows[row.name] = std::move(row);
    return rows;
}

void SetTimes(const std::string &path, time_t when, mode_t mode)
{
    const struct timespec times[2] = {{when, 0}, {when, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
    if (mode != 0) {
        ASSERT_EQ(chmod(path.c_str(), mode), 0) << path;
    }
}

// The greeting, USER, PASS, and FEAT answered with `features`.
void LogIn(ScriptedServer::Session &s, const char *features = "502 Command not implemented.\r\n")
{
    s.Send("220 hi\r\n");
    for (const char *reply : {"331 password\r\n", "230 in\r\n", features})
        s.Answer(reply);
}

// CWD /pub, PWD and TYPE A: the way to the first listing.
void GoToPub(ScriptedServer::Session &s)
{
    for (const char *reply : {"250 ok\r\n", "257 \"/pub\" is here\r\n", "200 ok\r\n"})
        s.Answer(reply);
}

void LogInAtPub(ScriptedServer::Session &s)
{
    LogIn(s);
    GoToPub(s);
}

// Answers PASV and the listing command with `listing`.
void List(ScriptedServer::Session &s, const std::string &listing)
{
    platform::TcpSocket data;
    if (!s.SendPassiveData(&data))
        return;
    data.SendAll(listing.data(), listing.size());
    data.Close();
    s.Send("226 done\r\n");
}

} // namespace

TEST(FtpConversationScripted, PassiveRefusedListsInActiveMode)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        LogInAtPub(s);
        s.Answer("502 not here\r\n"); // PASV
        const unsigned port = s.ReadPort();
        s.Send("200 PORT ok\r\n");
        s.ReadLine(); // LIST
        platform::TcpSocket data;
        if (port == 0 || !s.ConnectData(port, &data))
            return;
        s.Send("150 here\r\n");
        data.SendAll("-rw-r--r-- 1 u g 3 Jan  1  2020 a.txt\r\n", 39);
        data.Close();
        s.Send("226 done\r\n");
        s.WaitForClose();
    });
    Outcome outcome;
    {
        FtpConversation conversation(SessionOn(server.Port()), kShortTimeout);
        outcome.Submit(conversation);
        EXPECT_EQ(conversation.Status(), "ftp: Connecting...");
        ASSERT_TRUE(outcome.Wait());
        EXPECT_EQ(conversation.Status(), "");
    }
    EXPECT_EQ(outcome.result->connectCode, 0);
    EXPECT_EQ(outcome.result->folder, "/pub");
    EXPECT_EQ(outcome.result->listCode, 0);
    EXPECT_EQ(outcome.result->listing, "-rw-r--r-- 1 u g 3 Jan  1  2020 a.txt\r");
    EXPECT_TRUE(outcome.log.contains("PASS ******\r\n"));
    EXPECT_TRUE(outcome.log.contains("502 not here"));
    const auto lines = server.Finish();
    EXPECT_EQ(lines.back(), "QUIT\r\n");
}

TEST(FtpConversationScripted, ServerClosingInTheFirstListingFailsTheConnection)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        LogInAtPub(s);
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data))
            return;
        data.SendAll("drwxr-xr-x 1 u g 0 Jan  1  2020 half", 35);
        // Gone, data and control alike, before the listing ends.
    });
    FtpConversation conversation(SessionOn(server.Port()), kShortTimeout);
    Outcome outcome;
    ASSERT_TRUE(outcome.Run(conversation));
    EXPECT_NE(outcome.result->connectCode, 0);
    EXPECT_EQ(outcome.result->folder, "");
    EXPECT_EQ(outcome.result->listing, "");
    EXPECT_EQ(conversation.Status(),
              "ftp: Failed to connect.  Please check you internet connection");
    server.Finish();
}

// A server that stops answering costs one time-out, not two: the request
// gives up with the last listing, and the next one logs in again.
TEST(FtpConversationScripted, ServerSilentPastTheTimeOutIsLeftAndTheNextRequestLogsInAgain)
{
    ScriptedServer server({[](ScriptedServer::Session &s) {
                               LogInAtPub(s);
                               List(s, "-rw-r--r-- 1 u g 3 Jan  1  2020 a.txt\r\n");
                               s.ReadLine(); // CWD sub, never answered
                               s.WaitForClose();
                           },
                           [](ScriptedServer::Session &s) {
                               LogInAtPub(s);
                               List(s, "-rw-r--r-- 1 u g 3 Jan  1  2020 b.txt\r\n");
                               s.WaitForClose();
                           }});
    auto conversation = std::make_unique<FtpConversation>(SessionOn(server.Port()), kShortTimeout);
    Outcome first;
    ASSERT_TRUE(first.Run(*conversation));
    ASSERT_EQ(first.result->connectCode, 0);

    TickGaps gaps;
    Outcome silent;
    ASSERT_TRUE(silent.Run(*conversation, FtpRequest::Of(FtpRequest::Step::Enter, "/pub", "sub")));
    EXPECT_EQ(silent.result->connectCode, 2);
    EXPECT_EQ(silent.result->folder, "/pub");
    EXPECT_EQ(silent.result->listCode, 0);
    EXPECT_EQ(silent.result->listing, first.result->listing);
    EXPECT_EQ(conversation->Status(),
              "ftp: Failed to connect.  Please check you internet connection");
    EXPECT_FALSE(silent.log.contains("USER anonymous\r\n")) << "no second wait for the server";

    Outcome again;
    ASSERT_TRUE(again.Run(*conversation, FtpRequest::Of(FtpRequest::Step::Stay, "/pub")));
    EXPECT_EQ(again.result->connectCode, 0);
    EXPECT_EQ(again.result->listing, "-rw-r--r-- 1 u g 3 Jan  1  2020 b.txt\r");
    EXPECT_EQ(conversation->Status(), "");
    EXPECT_LT(gaps.Longest(), TickGaps::kBlockedMs);
    conversation.reset();
    const auto lines = server.Finish();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "CWD sub\r\n"), 1);
}

TEST(FtpConversationSilent, NewerRequestAndClosingCutTheOlderShort)
{
    // Two connections: the first is cut by the newer request, the second by
    // the conversation going. The client's time-out is a minute; the
    // server holds each connection half that long.
    SilentServer server(2);
    int delivered = 0;
    {
        FtpConversation conversation(SessionOn(server.Port()), 60000);
        const auto count = [&delivered](FtpResult &) { delivered++; };
        conversation.Submit({}, nullptr, count);
        ASSERT_TRUE(QTest::qWaitFor([&] { return server.Accepted() == 1; }, 10000));
        conversation.Submit(FtpRequest::Of(FtpRequest::Step::Stay, "/pub"), nullptr, count);
        ASSERT_TRUE(QTest::qWaitFor([&] { return server.Closed() == 1; }, 10000));
        ASSERT_TRUE(QTest::qWaitFor([&] { return server.Accepted() == 2; }, 10000));
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.Closed() == 2; }, 10000));
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 0);
}

TEST(FtpConversationReal, RefusedLoginAndNoServerSayWhy)
{
    PyftpdlibServer server;
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    const struct
    {
        FtpSession session;
        int connectCode; // -1: any but 0
        std::string status;
    } rows[] = {
        {SessionOn(server.Port(), "kestrin", "wrong"), 530, "ftp: Bad username or password."},
        {SessionOn(ClosedPort()),
         -1,
         "ftp: Failed to connect.  Please check you internet connection"},
        {SessionOn(server.Port(), "kestrin", "secret"), 0, ""},
    };
    for (const auto &row : rows) {
        FtpConversation conversation(row.session);
        Outcome outcome;
        ASSERT_TRUE(outcome.Run(conversation));
        if (row.connectCode < 0) {
            EXPECT_NE(outcome.result->connectCode, 0);
        } else {
            EXPECT_EQ(outcome.result->connectCode, row.connectCode) << row.status;
        }
        EXPECT_EQ(conversation.Status(), row.status);
        if (row.connectCode == 0) {
            EXPECT_EQ(outcome.result->listCode, 0);
        }
    }
}

// The same tree through a server with MLSD (pyftpdlib) and one with only
// LIST (vsftpd): the rows agree, and the machine listing tells the times to
// the second where LIST tells the day.
TEST(FtpConversationReal, MachineAndLsListingsOfOneTreeGiveTheSameRows)
{
    VsftpdServer vsftpd;
    if (!vsftpd.Unavailable().empty())
        GTEST_SKIP() << vsftpd.Unavailable();
    const std::string tree = vsftpd.Root() + "/upload/tree";
    fs::create_directories(tree + "/sub dir");
    const std::map<std::string, std::pair<std::string, time_t>> files = {
        {"plain.txt", {std::string(1234, 'p'), 1577966400}}, // 2020-01-02 12:00:00
        {"with blank.txt", {"blank", 1551694272}},           // 2019-03-04 10:11:12
        {"  leading blanks", {"lead", 1525590489}},          // 2018-05-06 07:08:09
        {"Gr\xc3\xbc\xc3\x9f"
         "e.txt",
         {"utf-8", 1525590499}}, // Grüße.txt
    };
    for (const auto &[name, file] : files) {
        WriteFileBytes(tree + "/" + name, file.first);
        SetTimes(tree + "/" + name, file.second, 0640);
    }
    SetTimes(tree + "/sub dir", 1551657600, 0750);
    fs::create_symlink("plain.txt", tree + "/link");
    SetTimes(tree + "/link", 1551657600, 0);
    PyftpdlibServer pyftpdlib(tree);
    if (!pyftpdlib.Unavailable().empty())
        GTEST_SKIP() << pyftpdlib.Unavailable();

    FtpSession lsSession = SessionOn(vsftpd.Port());
    lsSession.remoteDir = tree;
    FtpSession machineSession = SessionOn(pyftpdlib.Port(), "kestrin", "secret");
    machineSession.remoteDir = "/";
    Outcome ls, machine;
    FtpConversation lsConversation(lsSession), machineConversation(machineSession);
    ls.Submit(lsConversation);
    machine.Submit(machineConversation);
    ASSERT_TRUE(ls.Wait() && machine.Wait());
    EXPECT_EQ(ls.Count("LIST\r\n"), 1);
    EXPECT_EQ(machine.Count("MLSD\r\n"), 1);
    EXPECT_EQ(machine.Count("OPTS MLST type;size;modify;unix.mode;\r\n"), 1);

    std::map<std::string, FtpListingRow> listed = RowsOf(*ls.result);
    std::map<std::string, FtpListingRow> exact = RowsOf(*machine.result);
    // vsftpd lists the link as ls does; pyftpdlib lists what it leads to.
    ASSERT_EQ(listed.count("link -> plain.txt"), 1u);
    EXPECT_EQ(listed["link -> plain.txt"].permissions, "lrwxrwxrwx");
    ASSERT_EQ(exact.count("link"), 1u);
    FtpListingRow link = exact["link"];
    link.name = "plain.txt";
    EXPECT_EQ(link, exact["plain.txt"]);
    listed.erase("link -> plain.txt");
    exact.erase("link");
    // A LIST line cannot tell a name's own leading blanks from the padding
    // before it; the machine listing keeps them.
    ASSERT_EQ(listed.count("leading blanks"), 1u);
    EXPECT_EQ(exact.count("leading blanks"), 0u);
    listed["  leading blanks"] = listed["leading blanks"];
    listed.erase("leading blanks");

    ASSERT_EQ(listed.size(), 5u);
    ASSERT_EQ(exact.size(), listed.size());
    for (const auto &[name, row] : listed) {
        ASSERT_EQ(exact.count(name), 1u) << name;
        const FtpListingRow &told = exact[name];
        EXPECT_EQ(told.size, row.size) << name;
        EXPECT_EQ(told.permissions, row.permissions) << name;
        ASSERT_TRUE(told.modified.has_value()) << name;
        EXPECT_EQ(kestrin::ListedTime(row.date), *told.modified - *told.modified % 86400) << name;
        if (files.count(name) != 0) {
            EXPECT_EQ(*told.modified, files.at(name).second) << name;
        }
    }
    EXPECT_EQ(exact["plain.txt"].size, "1234");
    EXPECT_EQ(exact["sub dir"].permissions, "drwxr-x---");
    EXPECT_EQ(exact["plain.txt"].date, "2020-01-02 12:00:00");
}

// A server that lists UTF8 among its features is asked for UTF-8 names (this
// one sends Latin-1 until asked); one that has no FEAT is asked nothing more.
TEST(FtpConversationScripted, Utf8NamesAndMachineListingsWhereTheServerOffersThem)
{
    ScriptedServer server({[](ScriptedServer::Session &s) {
                               LogIn(s,
                                     "211-Features:\r\n MDTM\r\n UTF8\r\n"
                                     " MLST type*;size*;modify*;perm*;\r\n211 End\r\n");
                               const bool asked = s.ReadLine() == "OPTS UTF8 ON\r\n";
                               s.Send("200 Always in UTF8 mode.\r\n");
                               GoToPub(s);
                               List(s,
                                    std::string("type=file;size=3;modify=20200102120000; Gr")
                                        + (asked ? "\xc3\xbc\xc3\x9f" : "\xfc\xdf") + "e.txt\r\n");
                               s.WaitForClose();
                           },
                           [](ScriptedServer::Session &s) {
                               LogInAtPub(s);
                               List(s, "-rw-r--r-- 1 u g 3 Jan  2  2020 plain.txt\r\n");
                               s.WaitForClose();
                           }});
    Outcome offered, none;
    for (Outcome *outcome : {&offered, &none}) {
        FtpConversation conversation(SessionOn(server.Port()), kShortTimeout);
        ASSERT_TRUE(outcome->Run(conversation));
    }
    const std::vector<std::string> lines = server.Finish();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "OPTS UTF8 ON\r\n"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "MLSD\r\n"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "LIST\r\n"), 1);
    // Every fact a row needs comes unasked, but for a mode the server has not.
    EXPECT_EQ(std::count_if(lines.begin(),
                            lines.end(),
                            [](const std::string &line) { return line.starts_with("OPTS MLST"); }),
              0);
    const std::vector<FtpListingRow> rows = kestrin::GetEntries(offered.result->listing);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].name,
              "Gr\xc3\xbc\xc3\x9f"
              "e.txt");
    EXPECT_EQ(rows[0].modified, 1577966400);
    ASSERT_EQ(kestrin::GetEntries(none.result->listing).size(), 1u);
}

// pyftpdlib ends a session idle for two seconds; a pane that sends NOOP
// every fifth of a second is never ended, and its log shows the NOOPs.
TEST(FtpConversationReal, AnIdlePaneKeepsItsConnectionPastTheServersIdleTimeOut)
{
    TempHome home;
    PyftpdlibServer server(home.Root(), 2);
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    FtpSession session = SessionOn(server.Port(), "kestrin", "secret");
    session.remoteDir = "/";
    FtpConversation conversation(session, 60000, std::chrono::milliseconds(200));
    Outcome outcome;
    ASSERT_TRUE(outcome.Run(conversation));
    ASSERT_EQ(outcome.result->connectCode, 0);
    // Three seconds of NOOPs at the least: past the server's idle time-out.
    ASSERT_TRUE(outcome.WaitFor("NOOP\r\n", 15));
    EXPECT_GE(outcome.Count("200 I successfully did nothing'."), 14);
    // No reply 421, the server's word for an idle session it ends.
    EXPECT_FALSE(outcome.log.join("\n").contains(QRegularExpression("(^|\n)421[ -]")));
    EXPECT_EQ(outcome.Count("USER kestrin\r\n"), 1);
    EXPECT_EQ(conversation.Status(), "");
}

// A server that drops an idle connection anyway (its process ended): the
// next NOOP finds it gone, and the pane logs in again and goes back to its
// folder at once, so the next request needs no login of its own.
TEST(FtpConversationReal, AConnectionDroppedWhileIdleIsMadeAgainAtOnce)
{
    VsftpdServer server;
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    const std::string folder = server.Root() + "/upload";
    FtpSession session = SessionOn(server.Port());
    session.remoteDir = folder;
    FtpConversation conversation(session, 60000, std::chrono::milliseconds(200));
    Outcome outcome;
    ASSERT_TRUE(outcome.Run(conversation));
    ASSERT_EQ(outcome.result->connectCode, 0);
    ASSERT_TRUE(outcome.WaitFor("NOOP\r\n"));

    server.DropSessions();
    ASSERT_TRUE(outcome.WaitFor("The server ended the connection; logging in again."));
    ASSERT_TRUE(outcome.WaitFor("230 Login successful.", 2));
    ASSERT_TRUE(outcome.WaitFor("250 Directory successfully changed.", 2));
    EXPECT_EQ(outcome.Count(QString::fromStdString("CWD " + folder + "\r\n")), 2);

    Outcome again;
    ASSERT_TRUE(again.Run(conversation, FtpRequest::Of(FtpRequest::Step::Stay, folder)));
    EXPECT_EQ(again.result->connectCode, 0);
    EXPECT_EQ(again.result->folder, folder);
    EXPECT_EQ(server.Sessions(), 2u);
    EXPECT_EQ(conversation.Status(), "");
}

// A session whose password the desktop keyring keeps logs in with it, and
// the conversation hands it on for the transfers; one the keyring has no
// password for (its user was changed by hand) says so in the log.
TEST(FtpConversationReal, APasswordInTheKeyringLogsIn)
{
    TempHome home;
    PrivateKeyring keyring;
    if (!keyring.Unavailable().empty())
        GTEST_SKIP() << keyring.Unavailable();
    PyftpdlibServer server;
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    FtpSession session = SessionOn(server.Port(), "kestrin", "");
    session.passwordInKeyring = true;
    ASSERT_EQ(kestrin::SessionPassword::Keep(session, "secret"), "");
    const struct
    {
        const char *user;
        int connectCode;
        std::string pass;
    } rows[] = {{"kestrin", 0, "secret"}, {"anonymous", 530, ""}};
    for (const auto &row : rows) {
        session.user = row.user;
        FtpConversation conversation(session);
        EXPECT_EQ(conversation.Session().pass, "");
        Outcome outcome;
        ASSERT_TRUE(outcome.Run(conversation));
        EXPECT_EQ(outcome.result->connectCode, row.connectCode);
        EXPECT_EQ(conversation.Session().pass, row.pass);
        EXPECT_EQ(outcome.log.contains("The desktop keyring holds no password for this session."),
                  row.pass.empty())
            << outcome.log.join("|").toStdString();
    }
}
namespace {

// A stored session "secure" on vsftpd in TLS, with a certificate of its own.
class FtpConversationTls : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        ASSERT_TRUE(Session().Write());
    }

    FtpSession Session() const
    {
        FtpSession session = SessionOn(server.Port());
        session.name = "secure";
        return session;
    }
    std::optional<std::string> Stored() const
    {
        return ReadFileBytes(home.ConfigDir() + "/Kestrin/secure.ftp.tls");
    }
    // One conversation from login to listing; its status at the end.
    FtpResult Connect(std::string *status = nullptr)
    {
        FtpConversation conversation(Session(), 20000);
        Outcome outcome;
        EXPECT_TRUE(outcome.Run(conversation));
        if (status != nullptr)
            *status = conversation.Status();
        return outcome.result.value_or(FtpResult{});
    }

    TempHome home;
    platform::AlertRecorder alerts;
    VsftpdServer server{{.tls = true}};
};

} // namespace

TEST_F(FtpConversationTls, TheCertificateQuestionAnsweredEachWay)
{
    struct Row
    {
        int answer;
        int connectCode;
        bool trusted;
        // Whether a conversation after it asks again.
        bool asksAgain;
    };
    const Row rows[] = {
        {FtpCertificateTrust::kDoNotConnect, FtpTls::kCertificateRefused, false, true},
        {FtpCertificateTrust::kConnectOnce, 0, false, true},
        {FtpCertificateTrust::kTrust, 0, true, false},
    };
    for (const Row &row : rows) {
        FtpSecurity::Remove("secure");
        alerts.Clear();
        alerts.QueueAnswer(row.answer);
        std::string status;
        const FtpResult result = Connect(&status);
        EXPECT_EQ(result.connectCode, row.connectCode) << row.answer;
        EXPECT_EQ(result.listCode, 0);
        EXPECT_FALSE(result.inClear);
        const std::vector<platform::Alert> shown = alerts.Shown();
        ASSERT_EQ(shown.size(), 1u) << row.answer;
        EXPECT_EQ(shown[0].title, "Certificate");
        EXPECT_EQ(shown[0].buttons,
                  (std::vector<std::string>{"Don't Connect", "Trust Always", "Connect Once"}));
        for (const std::string &part : {server.Fingerprint(),
                                        std::string("It claims to be: CN=kestrin-test"),
                                        std::string("Issued by: CN=kestrin-test"),
                                        std::string("self-signed certificate"),
                                        std::string("session \"secure\"")})
            EXPECT_THAT(shown[0].text, HasSubstr(part));
        if (row.connectCode != 0) {
            EXPECT_EQ(status, "ftp: The server's certificate was not accepted.");
        }
        EXPECT_EQ(Stored(),
                  row.trusted ? std::optional<std::string>(
                      "Tls=IfOffered\nCertificate=" + server.Fingerprint() + "\n")
                              : std::nullopt);

        alerts.Clear();
        alerts.QueueAnswer(FtpCertificateTrust::kDoNotConnect);
        EXPECT_EQ(Connect().connectCode, row.asksAgain ? FtpTls::kCertificateRefused : 0);
        EXPECT_EQ(alerts.Count(), row.asksAgain ? 1u : 0u);
    }
}

TEST_F(FtpConversationTls, AChangedCertificateIsRefusedWithAWarning)
{
    FtpSecurity trusting;
    trusting.trustedCertificate = server.Fingerprint();
    ASSERT_TRUE(trusting.Write("secure"));
    EXPECT_EQ(Connect().connectCode, 0);
    EXPECT_EQ(alerts.Count(), 0u);
    const std::string old = server.Fingerprint();
    const size_t logins = server.Logged("\"USER ");

    ASSERT_TRUE(server.RenewCertificate());
    std::string status;
    EXPECT_EQ(Connect(&status).connectCode, FtpTls::kCertificateRefused);
    EXPECT_EQ(status, "ftp: The server's certificate was not accepted.");
    ASSERT_EQ(alerts.Count(), 1u);
    const platform::Alert warning = alerts.Shown()[0];
    EXPECT_EQ(warning.title, "Certificate Changed");
    EXPECT_EQ(warning.type, B_STOP_ALERT);
    EXPECT_EQ(warning.buttons, std::vector<std::string>{"OK"});
    EXPECT_THAT(warning.text, HasSubstr("SHA-256 fingerprint now:\n" + server.Fingerprint()));
    EXPECT_THAT(warning.text, HasSubstr("The one you trust:\n" + old));
    EXPECT_EQ(Stored(), "Tls=IfOffered\nCertificate=" + old + "\n");
    // Refused before anything of the login was said.
    EXPECT_EQ(server.Logged("\"USER "), logins);
}
