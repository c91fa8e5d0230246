#include "ftp/FtpCertificateTrust.h"

#include "ftp/FtpSecurity.h"
#include "platform/Alerts.h"

namespace kestrin {

namespace {

std::string Described(const platform::TlsCertificate &certificate)
{
    std::string text = "It claims to be: " + certificate.subject + "\n";
    if (!certificate.names.empty())
        text += "Names: " + certificate.names + "\n";
    text += "Issued by: " + certificate.issuer + "\n";
    text += "Valid from " + certificate.validFrom + " until " + certificate.validUntil + "\n";
    return text;
}

} // namespace

FtpCertificateTrust::FtpCertificateTrust(std::string sessionName, std::string host)
    : fSession(std::move(sessionName))
    , fHost(std::move(host))
{}

bool FtpCertificateTrust::Accept(const platform::TlsCertificate &certificate)
{
    if (certificate.verified)
        return true;
    if (certificate.fingerprint.empty())
        return false;
    const std::string trusted = FtpSecurity::Read(fSession).trustedCertificate;
    if (!trusted.empty()) {
        if (trusted == certificate.fingerprint)
            return true;
        WarnChanged(certificate, trusted);
        return false;
    }
    if (certificate.fingerprint == fAcceptedOnce)
        return true;
    return Ask(certificate);
}

bool FtpCertificateTrust::Ask(const platform::TlsCertificate &certificate)
{
    const std::string text = "The server " + fHost + " of the session \"" + fSession
                             + "\" sent a certificate that cannot be verified ("
                             + certificate.problem + ").\n\n" + Described(certificate)
                             + "SHA-256 fingerprint:\n" + certificate.fingerprint
                             + "\n\nConnect only if this is the fingerprint of the server's "
                               "certificate, as its administrator gave it to you.";
    const int answer = platform::Alerts::Go({"Certificate",
                                             text,
                                             {"Don't Connect", "Trust Always", "Connect Once"},
                                             B_WARNING_ALERT,
                                             B_WIDTH_FROM_LABEL});
    if (answer == kConnectOnce) {
        fAcceptedOnce = certificate.fingerprint;
        return true;
    }
    if (answer != kTrust)
        return false;
    FtpSecurity security = FtpSecurity::Read(fSession);
    security.trustedCertificate = certificate.fingerprint;
    // A session that is not stored keeps nothing: the trust serves once.
    if (!security.Write(fSession))
        fAcceptedOnce = certificate.fingerprint;
    return true;
}

void FtpCertificateTrust::WarnChanged(const platform::TlsCertificate &certificate,
                                      const std::string &trusted) const
{
    const std::string text = "The server " + fHost + " of the session \"" + fSession
                             + "\" sent another certificate than the one you trust for it.\n\n"
                             + Described(certificate) + "SHA-256 fingerprint now:\n"
                             + certificate.fingerprint + "\nThe one you trust:\n" + trusted
                             + "\n\nSomeone may stand between you and the server, so Kestrin "
                               "does not connect. If the server's certificate was replaced on "
                               "purpose, forget the trusted one in the session's settings (Edit) "
                               "and connect again.";
    platform::Alerts::Go({"Certificate Changed", text, {"OK"}, B_STOP_ALERT});
}

} // namespace kestrin
