// A pane's SFTP conversation on its worker: the login's questions reach the
// user as alerts, results arrive on the GUI thread, and a newer request
// replaces an older one.

#include "PrivateKeyring.h"
#include "SshdSessionTest.h"
#include "ftp/SessionPassword.h"
#include "platform/AlertRecorder.h"
#include "sftp/SftpConversation.h"
#include "sftp/SftpQuestions.h"

#include <QTest>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using kestrin::FtpSession;
using kestrin::SftpConversation;
using kestrin::SftpQuestions;
using kestrin::SftpRequest;
using kestrin::SftpResult;

namespace {

class SftpConversationTest : public SshdSessionTest
{
protected:
    // Submits `request` and waits for its result on the GUI thread.
    std::optional<SftpResult> Answer(SftpConversation &conversation, SftpRequest request)
    {
        std::optional<SftpResult> answer;
        conversation.Submit(std::move(request), nullptr, [&](SftpResult &result) {
            answer = result;
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 60000));
        return answer;
    }

    platform::AlertRecorder alerts;
};

} // namespace

TEST_F(SftpConversationTest, TheUserIsAskedAboutTheHostAndForAPassword)
{
    // Refused: the host key alert names the fingerprint, and nothing more is asked.
    {
        SftpConversation conversation(session, SftpQuestions::ThroughAlerts(session));
        const std::optional<SftpResult> result = Answer(conversation, {});
        ASSERT_TRUE(result);
        EXPECT_NE(result->connectError.find("not accepted"), std::string::npos);
        EXPECT_EQ(conversation.Status(), "sftp: " + result->connectError);
        ASSERT_EQ(alerts.Count(), 1u);
        EXPECT_EQ(alerts.Shown()[0].title, "Host Key");
        EXPECT_NE(alerts.Shown()[0].text.find(server.Fingerprint()), std::string::npos);
    }
    // Trusted, with no key: the password is asked for; declined, no login.
    alerts.Clear();
    alerts.QueueAnswer(SftpQuestions::kTrust);
    alerts.QueueSecret(std::nullopt);
    {
        SftpConversation conversation(session, SftpQuestions::ThroughAlerts(session));
        const std::optional<SftpResult> result = Answer(conversation, {});
        ASSERT_TRUE(result);
        EXPECT_NE(result->connectError.find("did not let"), std::string::npos);
        ASSERT_EQ(alerts.Count(), 2u);
        EXPECT_EQ(alerts.Shown()[1].title, "Password");
    }
    // A key now: in without a question, the host being known.
    InstallUserKey();
    alerts.Clear();
    SftpConversation conversation(session, SftpQuestions::ThroughAlerts(session));
    std::vector<std::string> log;
    QObject::connect(&conversation, &SftpConversation::LogLine, [&](const QString &line) {
        log.push_back(line.toStdString());
    });
    const std::optional<SftpResult> result = Answer(conversation, {});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->connectError, "");
    EXPECT_EQ(result->folder, fs::canonical(session.remoteDir).string());
    EXPECT_EQ(conversation.Status(), "");
    EXPECT_EQ(alerts.Count(), 0u);
    EXPECT_NE(std::find(log.begin(), log.end(), "Logged in as " + session.user + "."), log.end());

    // The server's key changes: refused with a warning.
    ASSERT_TRUE(server.ReplaceHostKey());
    SftpConversation again(session, SftpQuestions::ThroughAlerts(session));
    const std::optional<SftpResult> refused = Answer(again, {});
    ASSERT_TRUE(refused);
    EXPECT_NE(refused->connectError.find("has changed"), std::string::npos);
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0].title, "Host Key Changed");
}

TEST_F(SftpConversationTest, ANewerRequestReplacesTheOneUnderWay)
{
    InstallUserKey();
    // The first login may be cut before or after it trusted the host; the
    // second asks again in the first case.
    alerts.QueueAnswer(SftpQuestions::kTrust);
    alerts.QueueAnswer(SftpQuestions::kTrust);
    fs::create_directories(session.remoteDir + "/sub");
    SftpConversation conversation(session, SftpQuestions::ThroughAlerts(session));
    bool firstAnswered = false;
    conversation.Submit({}, nullptr, [&](SftpResult &) { firstAnswered = true; });
    const SftpRequest enter = Request(SftpRequest::Step::Enter,
                                      fs::canonical(session.remoteDir).string(),
                                      "sub");
    const std::optional<SftpResult> result = Answer(conversation, enter);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->folder, enter.base + "/sub");
    EXPECT_FALSE(firstAnswered);
}

// A session whose password the desktop keyring keeps: the conversation
// reads it there on its worker and tries it rather than asking for one, and
// hands it on for the transfers. (This server takes keys only, so the
// password does not let the user in.) Where the keyring holds none, the
// log says so and the user is asked.
TEST_F(SftpConversationTest, APasswordInTheKeyringIsTriedRatherThanAsked)
{
    PrivateKeyring keyring;
    if (!keyring.Unavailable().empty())
        GTEST_SKIP() << keyring.Unavailable();
    std::ofstream(home.Home() + "/.ssh/known_hosts") << server.KnownHostsLine() << "\n";
    session.kind = FtpSession::Kind::Sftp;
    session.passwordInKeyring = true;
    ASSERT_EQ(kestrin::SessionPassword::Keep(session, "secret"), "");
    std::atomic<int> asked = 0;
    kestrin::SftpFolderClient::Questions questions;
    questions.password = [&asked]() -> std::optional<std::string> {
        ++asked;
        return std::nullopt;
    };
    const struct
    {
        std::string user;
        int asked;
        std::string pass;
        bool toldNone;
    } cases[] = {
        {SshdServer::User(), 0, "secret", false},
        {SshdServer::User() + "x", 1, "", true},
    };
    for (const auto &row : cases) {
        asked = 0;
        FtpSession stored = session;
        stored.user = row.user;
        SftpConversation conversation(stored, questions);
        QStringList log;
        QObject::connect(&conversation, &SftpConversation::LogLine, [&](const QString &line) {
            log << line;
        });
        EXPECT_EQ(conversation.Session().pass, "");
        const std::optional<SftpResult> result = Answer(conversation, {});
        ASSERT_TRUE(result) << row.user;
        EXPECT_NE(result->connectError, "") << row.user;
        EXPECT_EQ(asked, row.asked) << row.user;
        EXPECT_EQ(conversation.Session().pass, row.pass) << row.user;
        EXPECT_EQ(log.contains("The desktop keyring holds no password for this session."),
                  row.toldNone)
            << log.join("|").toStdString();
    }
}
