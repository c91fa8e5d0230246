#pragma once

#include "ftp/FtpTls.h"

#include <string>

namespace kestrin {

// What Kestrin keeps of a stored FTP session beyond its six keys: the TLS
// choice and the SHA-256 fingerprint of a certificate the user trusts for
// it. They live in a file of their own, "<name>.ftp.tls" beside
// "<name>.ftp", which stays exactly as it always was; the file is written
// whole under a temporary name and renamed into place. A session with the
// defaults (TLS if the server offers it, no certificate) has none.
struct FtpSecurity
{
    FtpTls::Choice tls = FtpTls::Choice::IfOffered;
    std::string trustedCertificate;

    static std::string FileNameOf(const std::string &sessionName);
    // The defaults for a session without the file, or without a name.
    static FtpSecurity Read(const std::string &sessionName);
    // Writes the file, or removes it when everything is the default; false
    // when that failed.
    bool Write(const std::string &sessionName) const;
    static bool Remove(const std::string &sessionName);

    bool IsDefault() const
    {
        return tls == FtpTls::Choice::IfOffered && trustedCertificate.empty();
    }
};

} // namespace kestrin
