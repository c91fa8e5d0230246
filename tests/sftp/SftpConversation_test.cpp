// A pane's SFTP conversation on its worker: the login's questions reach the
// user as alerts, results arrive on the GUI thread, and a newer request
// replaces an older one.

#include "SshdServer.h"
#include "TempHome.h"
#include "platform/AlertRecorder.h"
#include "sftp/SftpConversation.h"
#include "sftp/SftpQuestions.h"

#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using kestrin::FtpSession;
using kestrin::SftpConversation;
using kestrin::SftpQuestions;
using kestrin::SftpRequest;
using kestrin::SftpResult;

namespace {

class SftpConversationTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        home.SetEnv("SSH_AUTH_SOCK", std::nullopt);
        fs::create_directories(home.Home() + "/.ssh");
        session.name = "box";
        session.host = "127.0.0.1";
        session.port = std::to_string(server.Port());
        session.user = SshdServer::User();
        session.remoteDir = server.Scratch();
    }

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

    TempHome home;
    SshdServer server;
    platform::AlertRecorder alerts;
    FtpSession session;
};

} // namespace

TEST_F(SftpConversationTest, TheUserIsAskedAboutTheHostAndForAPassword)
{
    // Refused: the host key alert names the fingerprint, and nothing more is asked.
    {
        SftpConversation conversation(session, SftpQuestions::ThroughAlerts(session));
        const std::optional<SftpResult> result = Answer(conversation, {});
        ASSERT_TRUE(result);
        EXPECT_NE(result->connectError, "");
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
    fs::copy_file(server.UserKey(), home.Home() + "/.ssh/id_ed25519");
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
    fs::copy_file(server.UserKey(), home.Home() + "/.ssh/id_ed25519");
    // The first login may be cut before or after it trusted the host; the
    // second asks again in the first case.
    alerts.QueueAnswer(SftpQuestions::kTrust);
    alerts.QueueAnswer(SftpQuestions::kTrust);
    fs::create_directories(session.remoteDir + "/sub");
    SftpConversation conversation(session, SftpQuestions::ThroughAlerts(session));
    bool firstAnswered = false;
    conversation.Submit({}, nullptr, [&](SftpResult &) { firstAnswered = true; });
    SftpRequest enter;
    enter.step = SftpRequest::Step::Enter;
    enter.base = fs::canonical(session.remoteDir).string();
    enter.name = "sub";
    const std::optional<SftpResult> result = Answer(conversation, enter);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->folder, enter.base + "/sub");
    EXPECT_FALSE(firstAnswered);
}
