#include "ftp/FtpTls.h"

#include "platform/TcpSocket.h"
#include "platform/TlsClient.h"

namespace kestrin {

namespace {

constexpr int kAuthAccepted = 234;
constexpr int kCommandOk = 200;
// Below this a code is the client's own (time-out, no connection), not a
// reply.
constexpr int kFirstReplyCode = 100;

} // namespace

FtpTls::FtpTls() = default;
FtpTls::~FtpTls() = default;

void FtpTls::Use(Choice choice, Check check)
{
    fChoice = choice;
    fCheck = std::move(check);
}

int FtpTls::Negotiate(platform::TcpSocket &control,
                      const std::string &host,
                      const Command &command,
                      const Log &log)
{
    fState = State::Off;
    fProtected = false;
    fClient.reset();
    if (fChoice == Choice::Off)
        return 0;
    const int code = command("AUTH TLS\r\n");
    if (code < kFirstReplyCode)
        return code;
    if (code != kAuthAccepted)
        return Refused(code, log);

    fClient = std::make_unique<platform::TlsClient>(host);
    platform::TlsCertificate peer;
    std::string why;
    const status_t secured = control.StartTls(*fClient, &peer, &why);
    if (secured != B_OK) {
        log(secured == B_TIMED_OUT ? "TLS failed: the server did not answer."
                                   : "TLS failed: " + why + ".");
        return kFailed;
    }
    if (!Accepted(peer, log))
        return kCertificateRefused;
    command("PBSZ 0\r\n");
    fProtected = command("PROT P\r\n") == kCommandOk;
    if (!fProtected && fChoice == Choice::Required) {
        log("The server keeps data connections in clear (PROT P refused), which the session "
            "does not allow: not logging in.");
        return kNotOffered;
    }
    if (!fProtected)
        log("The server keeps data connections in clear (PROT P refused): files and listings "
            "travel unencrypted.");
    fState = State::Secured;
    return 0;
}

int FtpTls::Refused(int code, const Log &log)
{
    if (fChoice == Choice::Required) {
        log("The server refused TLS (" + std::to_string(code)
            + "), which the session requires: not logging in, no password sent.");
        return kNotOffered;
    }
    log("The server refused TLS (" + std::to_string(code)
        + "): this connection, password included, is not encrypted.");
    fState = State::Refused;
    return 0;
}

bool FtpTls::Accepted(const platform::TlsCertificate &peer, const Log &log) const
{
    log("TLS: the server's certificate names " + peer.subject + ", SHA-256 " + peer.fingerprint
        + (peer.verified ? ", verified." : ", not verified: " + peer.problem + "."));
    if (peer.verified)
        return true;
    if (fCheck && fCheck(peer))
        return true;
    log("The server's certificate was not accepted: not logging in.");
    return false;
}

status_t FtpTls::SecureData(platform::TcpSocket &data, std::string *why)
{
    if (!fProtected || fClient == nullptr)
        return B_OK;
    return data.StartTls(*fClient, nullptr, why);
}

const char *FtpTls::ProblemText(int code)
{
    // A refused certificate was the user's own answer, or came with a
    // warning of its own.
    switch (code) {
    case kNotOffered:
        return "The server does not offer TLS, which this session requires.\nKestrin did not "
               "log in: no password was sent.";
    case kFailed:
        return "Kestrin could not make a secure (TLS) connection to the server.\nNo password "
               "was sent.";
    default:
        return nullptr;
    }
}

} // namespace kestrin
