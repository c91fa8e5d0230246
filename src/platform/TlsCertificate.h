#pragma once

#include <string>

namespace platform {

// What a server's TLS certificate says of itself, and whether the system
// vouches for it: a chain to the system's trust store that names the host
// the connection was made to.
struct TlsCertificate
{
    // Who it claims to be and who issued it, as RFC 2253 texts
    // ("CN=ftp.example.com,O=Example").
    std::string subject;
    std::string issuer;
    // The host names and addresses it names (subjectAltName), ", " between.
    std::string names;
    // "Nov 24 07:20:34 2026 GMT"
    std::string validFrom;
    std::string validUntil;
    // SHA-256 of the certificate, upper-case hex bytes with ":" between.
    std::string fingerprint;
    bool verified = false;
    // Why it is not verified ("self-signed certificate"); empty when it is.
    std::string problem;
};

} // namespace platform
