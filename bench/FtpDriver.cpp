// kestrin-ftp-driver get|put PORT REMOTE LOCAL [tls]
// Moves one whole file between this machine and the FTP server on
// 127.0.0.1:PORT with Kestrin's FTP client: anonymous login, binary type,
// passive data connection; with "tls", explicit TLS required for the login
// and the data, whatever certificate the server shows (as curl -k). "get"
// writes REMOTE to the path LOCAL, "put" stores the file LOCAL as REMOTE.
// Log lines go nowhere; progress calls are answered as the copy engine
// answers them, so their cost is measured too.

#include "ftp/clsFTP.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int KeepGoing(int, int, const char *, void *)
{
    return 1;
}

int Usage()
{
    fprintf(stderr, "usage: kestrin-ftp-driver get|put PORT REMOTE LOCAL [tls]\n");
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    const bool tls = argc == 6 && std::string(argv[5]) == "tls";
    if (argc != 5 && !tls)
        return Usage();
    const std::string mode = argv[1];
    const unsigned port = unsigned(strtoul(argv[2], nullptr, 10));
    if ((mode != "get" && mode != "put") || port == 0 || port > 65535)
        return Usage();

    kestrin::clsFTP ftp("127.0.0.1", port, nullptr, 0, 60000, KeepGoing, nullptr);
    if (tls)
        ftp.UseTls(kestrin::FtpTls::Choice::Required,
                   [](const platform::TlsCertificate &) { return true; });
    int result = ftp.Connect("anonymous", "kestrin@localhost", nullptr);
    if (result != 0) {
        fprintf(stderr, "kestrin-ftp-driver: login failed with %d: %s\n", result, ftp.ReplyText());
        return 1;
    }
    if (mode == "get") {
        const std::string local = argv[4];
        const size_t slash = local.rfind('/');
        const std::string folder = slash == std::string::npos ? "." : local.substr(0, slash + 1);
        const std::string name = slash == std::string::npos ? local : local.substr(slash + 1);
        result = ftp.Download(argv[3], folder.c_str(), name.c_str(), true, true);
    } else {
        result = ftp.Upload(argv[4], argv[3], true, true);
    }
    if (result != 0)
        fprintf(stderr,
                "kestrin-ftp-driver: %s failed with %d: %s\n",
                argv[1],
                result,
                ftp.ReplyText());
    ftp.Leave();
    return result == 0 ? 0 : 1;
}
