#include "sftp/SftpQuestions.h"

#include "platform/Alerts.h"

namespace kestrin {

SftpFolderClient::Questions SftpQuestions::ThroughAlerts(const FtpSession &session)
{
    const std::string server = session.host + " (port " + std::to_string(session.PortNumber())
                               + ")";
    SftpFolderClient::Questions questions;
    questions.trustHost = [server, name = session.name](const platform::SshHostKey &key) {
        const std::string text = "The server " + server + " of the session \"" + name
                                 + "\" is not among your known hosts.\n\nIts " + key.type
                                 + " key has the fingerprint\n" + key.fingerprint
                                 + "\n\nConnect only if this is the fingerprint of the server's "
                                   "key, as its administrator gave it to you. Trusting it adds "
                                   "the key to ~/.ssh/known_hosts.";
        return platform::Alerts::Go({"Host Key",
                                     text,
                                     {"Don't Connect", "Trust"},
                                     B_WARNING_ALERT,
                                     B_WIDTH_FROM_LABEL})
               == kTrust;
    };
    questions.passphrase = [](const std::string &keyPath) {
        return platform::Alerts::AskSecret(
            {"Passphrase", "The key " + keyPath + " is locked. Its passphrase:", {"Skip", "OK"}});
    };
    questions.password = [user = session.user, server] {
        return platform::Alerts::AskSecret(
            {"Password", "The password of " + user + " on " + server + ":", {"Cancel", "Connect"}});
    };
    questions.warnChanged = [](const std::string &why) {
        platform::Alerts::Go({"Host Key Changed", why, {"OK"}, B_STOP_ALERT});
    };
    return questions;
}

} // namespace kestrin
