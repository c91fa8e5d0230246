#pragma once

#include "platform/TlsCertificate.h"

#include <string>

namespace kestrin {

// Whether a login of a stored session goes on with a server whose TLS
// certificate the system does not vouch for (self-signed, expired, made out
// to another name). The certificate the user trusts for the session goes;
// any other one, where the user trusts one, is refused with a warning: the
// server may not be the one it was. Without a trusted one the user sees who
// the certificate claims to be and its fingerprint, and connects once,
// trusts it from now on (kept with the session, FtpSecurity), or does not
// connect. What is trusted is read at each question, so a trust given in a
// transfer serves the pane too.
//
// Asks through platform::Alerts, from the thread that logs in.
class FtpCertificateTrust
{
public:
    enum Answer { kDoNotConnect = 0, kTrust = 1, kConnectOnce = 2 };

    FtpCertificateTrust(std::string sessionName, std::string host);

    bool Accept(const platform::TlsCertificate &certificate);

private:
    bool Ask(const platform::TlsCertificate &certificate);
    void WarnChanged(const platform::TlsCertificate &certificate, const std::string &trusted) const;

    std::string fSession;
    std::string fHost;
    // Accepted for once: the logins of this pane or transfer that follow
    // (after a lost connection) go on without asking again.
    std::string fAcceptedOnce;
};

} // namespace kestrin
