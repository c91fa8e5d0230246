// A pane's conversation with its server: results and log lines reach the GUI
// thread, a newer request cuts an older one short, PASV refused falls back to
// active, and a server that breaks off or falls silent is given up on without
// holding anything up; in TLS, the question about a certificate the system
// does not vouch for, and a trusted certificate that changed.

#include "RealServers.h"
#include "ScriptedServer.h"
#include "SilentServer.h"
#include "TempHome.h"
#include "ftp/FtpCertificateTrust.h"
#include "ftp/FtpConversation.h"
#include "ftp/FtpSecurity.h"
#include "platform/AlertRecorder.h"
#include "support/TickGaps.h"

#include <QStringList>
#include <QTest>
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

using kestrin::FtpCertificateTrust;
using kestrin::FtpConversation;
using kestrin::FtpRequest;
using kestrin::FtpResult;
using kestrin::FtpSecurity;
using kestrin::FtpSession;
using kestrin::FtpTls;

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
};

void LogIn(ScriptedServer::Session &s)
{
    s.Send("220 hi\r\n");
    s.ReadLine(); // USER
    s.Send("331 password\r\n");
    s.ReadLine(); // PASS
    s.Send("230 in\r\n");
    s.ReadLine(); // CWD /pub
    s.Send("250 ok\r\n");
    s.ReadLine(); // PWD
    s.Send("257 \"/pub\" is here\r\n");
    s.ReadLine(); // TYPE A
    s.Send("200 ok\r\n");
}

} // namespace

TEST(FtpConversationScripted, PassiveRefusedListsInActiveMode)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        LogIn(s);
        s.ReadLine(); // PASV
        s.Send("502 not here\r\n");
        const std::string port = s.ReadLine();
        unsigned h[6] = {};
        if (sscanf(port.c_str(), "PORT %u,%u,%u,%u,%u,%u", &h[0], &h[1], &h[2], &h[3], &h[4], &h[5])
            != 6)
            return;
        s.Send("200 PORT ok\r\n");
        s.ReadLine(); // LIST
        platform::TcpSocket data;
        if (!s.ConnectData(h[4] * 256 + h[5], &data))
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
        LogIn(s);
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data))
            return;
        data.SendAll("drwxr-xr-x 1 u g 0 Jan  1  2020 half", 35);
        // Gone, data and control alike, before the listing ends.
    });
    FtpConversation conversation(SessionOn(server.Port()), kShortTimeout);
    Outcome outcome;
    outcome.Submit(conversation);
    ASSERT_TRUE(outcome.Wait());
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
    const auto list = [](ScriptedServer::Session &s, const std::string &listing) {
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data))
            return;
        data.SendAll(listing.data(), listing.size());
        data.Close();
        s.Send("226 done\r\n");
    };
    ScriptedServer server({[&](ScriptedServer::Session &s) {
                               LogIn(s);
                               list(s, "-rw-r--r-- 1 u g 3 Jan  1  2020 a.txt\r\n");
                               s.ReadLine(); // CWD sub, never answered
                               s.WaitForClose();
                           },
                           [&](ScriptedServer::Session &s) {
                               LogIn(s);
                               list(s, "-rw-r--r-- 1 u g 3 Jan  1  2020 b.txt\r\n");
                               s.WaitForClose();
                           }});
    auto conversation = std::make_unique<FtpConversation>(SessionOn(server.Port()), kShortTimeout);
    Outcome first;
    first.Submit(*conversation);
    ASSERT_TRUE(first.Wait());
    ASSERT_EQ(first.result->connectCode, 0);

    TickGaps gaps;
    Outcome silent;
    silent.Submit(*conversation, FtpRequest::Of(FtpRequest::Step::Enter, "/pub", "sub"));
    ASSERT_TRUE(silent.Wait());
    EXPECT_EQ(silent.result->connectCode, 2);
    EXPECT_EQ(silent.result->folder, "/pub");
    EXPECT_EQ(silent.result->listCode, 0);
    EXPECT_EQ(silent.result->listing, first.result->listing);
    EXPECT_EQ(conversation->Status(),
              "ftp: Failed to connect.  Please check you internet connection");
    EXPECT_FALSE(silent.log.contains("USER anonymous\r\n")) << "no second wait for the server";

    Outcome again;
    again.Submit(*conversation, FtpRequest::Of(FtpRequest::Step::Stay, "/pub"));
    ASSERT_TRUE(again.Wait());
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
    {
        FtpConversation conversation(SessionOn(server.Port(), "kestrin", "wrong"));
        Outcome outcome;
        outcome.Submit(conversation);
        ASSERT_TRUE(outcome.Wait());
        EXPECT_EQ(outcome.result->connectCode, 530);
        EXPECT_EQ(conversation.Status(), "ftp: Bad username or password.");
    }
    {
        // A port nothing listens on: the listener is closed before use.
        platform::TcpSocket closed;
        platform::SocketAddress local;
        closed.Open();
        closed.BindEphemeral(0x7f000001);
        closed.LocalAddress(&local);
        FtpConversation conversation(SessionOn(local.port));
        Outcome outcome;
        outcome.Submit(conversation);
        ASSERT_TRUE(outcome.Wait());
        EXPECT_NE(outcome.result->connectCode, 0);
        EXPECT_EQ(conversation.Status(),
                  "ftp: Failed to connect.  Please check you internet connection");
    }
    {
        FtpConversation conversation(SessionOn(server.Port(), "kestrin", "secret"));
        Outcome outcome;
        outcome.Submit(conversation);
        ASSERT_TRUE(outcome.Wait());
        EXPECT_EQ(outcome.result->connectCode, 0);
        EXPECT_EQ(outcome.result->listCode, 0);
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
        outcome.Submit(conversation);
        EXPECT_TRUE(outcome.Wait());
        if (status != nullptr)
            *status = conversation.Status();
        return outcome.result.value_or(FtpResult{});
    }

    TempHome home;
    platform::AlertRecorder alerts;
    VsftpdServer server{{.tls = true}};
};

bool Holds(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

size_t Occurrences(const std::string &text, const std::string &part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        count++;
    return count;
}

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
                                        std::string("self-signed certificate"),
                                        std::string("session \"secure\"")})
            EXPECT_TRUE(Holds(shown[0].text, part)) << part << "\n" << shown[0].text;
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
    const size_t logins = Occurrences(server.ProtocolLog(), "\"USER ");

    ASSERT_TRUE(server.RenewCertificate());
    std::string status;
    EXPECT_EQ(Connect(&status).connectCode, FtpTls::kCertificateRefused);
    EXPECT_EQ(status, "ftp: The server's certificate was not accepted.");
    ASSERT_EQ(alerts.Count(), 1u);
    const platform::Alert warning = alerts.Shown()[0];
    EXPECT_EQ(warning.title, "Certificate Changed");
    EXPECT_EQ(warning.type, B_STOP_ALERT);
    EXPECT_EQ(warning.buttons, std::vector<std::string>{"OK"});
    EXPECT_TRUE(Holds(warning.text, "SHA-256 fingerprint now:\n" + server.Fingerprint()));
    EXPECT_TRUE(Holds(warning.text, "The one you trust:\n" + old));
    EXPECT_EQ(Stored(), "Tls=IfOffered\nCertificate=" + old + "\n");
    // Refused before anything of the login was said.
    EXPECT_EQ(Occurrences(server.ProtocolLog(), "\"USER "), logins);
}
