#include "RealServers.h"

#include "TempHome.h"

#include <QStringList>
#include <arpa/inet.h>
#include <cctype>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <optional>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

using platform::SocketAddress;
using platform::TcpSocket;

namespace {

constexpr uint32_t kLoopback = 0x7f000001;
const char *const kVsftpd = "/usr/sbin/vsftpd";

// Runs `program` to its end; its standard output, or nullopt when it failed.
std::optional<std::string> Output(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput().toStdString();
}

std::string TlsSettings(const std::string &base)
{
    return "ssl_enable=YES\n"
           "allow_anon_ssl=YES\n"
           "force_anon_logins_ssl=YES\n"
           "force_anon_data_ssl=YES\n"
           "force_local_logins_ssl=YES\n"
           "force_local_data_ssl=YES\n"
           "require_ssl_reuse=YES\n"
           "rsa_cert_file="
           + base + "/cert.pem\nrsa_private_key_file=" + base + "/key.pem\n";
}

} // namespace

VsftpdServer::VsftpdServer(unsigned bytesPerSecond)
    : VsftpdServer(Options{bytesPerSecond})
{}

bool VsftpdServer::RenewCertificate()
{
    const QString base = fDir.path();
    // A key on a curve: made at once, where RSA keys take a while.
    const QStringList make = QString("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 "
                                     "-nodes -days 2 -subj /CN=kestrin-test")
                                 .split(' ')
                             + QStringList{"-keyout", base + "/key.pem", "-out", base + "/cert.pem"};
    if (!Output("openssl", make))
        return false;
    const std::optional<std::string> told
        = Output("openssl",
                 {"x509", "-noout", "-fingerprint", "-sha256", "-in", base + "/cert.pem"});
    const size_t equals = told ? told->find('=') : std::string::npos;
    if (equals == std::string::npos)
        return false;
    fFingerprint = told->substr(equals + 1);
    while (!fFingerprint.empty() && isspace(static_cast<unsigned char>(fFingerprint.back())))
        fFingerprint.pop_back();
    return true;
}

std::string VsftpdServer::ProtocolLog() const
{
    return ReadFileBytes(fDir.path().toStdString() + "/protocol.log").value_or("");
}

size_t VsftpdServer::Logged(const std::string &part) const
{
    const std::string log = ProtocolLog();
    size_t count = 0;
    for (size_t at = log.find(part); at != std::string::npos; at = log.find(part, at + 1))
        count++;
    return count;
}

VsftpdServer::VsftpdServer(const Options &options)
{
    if (access(kVsftpd, X_OK) != 0) {
        fUnavailable = "vsftpd is not installed";
        return;
    }
    const std::string base = fDir.path().toStdString();
    mkdir((base + "/root").c_str(), 0755);
    mkdir((base + "/root/upload").c_str(), 0777);
    mkdir((base + "/empty").c_str(), 0755);
    chmod((base + "/root").c_str(), 0555);
    if (options.tls && !RenewCertificate()) {
        fUnavailable = "openssl cannot make a certificate";
        return;
    }
    const unsigned bytesPerSecond = options.bytesPerSecond;
    fConfig = base + "/vsftpd.conf";
    WriteFileBytes(fConfig,
                   "listen=NO\n"
                   "listen_ipv6=NO\n"
                   "run_as_launching_user=YES\n"
                   "seccomp_sandbox=NO\n"
                   "isolate=NO\n"
                   "isolate_network=NO\n"
                   "anonymous_enable=YES\n"
                   "no_anon_password="
                       + std::string(options.askPassword ? "NO" : "YES")
                       + "\n"
                         "local_enable=NO\n"
                         "anon_root="
                       + base
                       + "/root\n"
                         "allow_writeable_chroot=YES\n"
                         "write_enable=YES\n"
                         "anon_upload_enable=YES\n"
                         "anon_mkdir_write_enable=YES\n"
                         "anon_other_write_enable=YES\n"
                         "anon_world_readable_only=NO\n"
                         "anon_umask=022\n"
                         "pasv_enable=YES\n"
                         "pasv_address=127.0.0.1\n"
                         "port_enable=YES\n"
                         "connect_from_port_20=NO\n"
                         "xferlog_enable=YES\n"
                         "xferlog_std_format=NO\n"
                         "log_ftp_protocol=YES\n"
                         "vsftpd_log_file="
                       + base
                       + "/protocol.log\n"
                         "dirmessage_enable=NO\n"
                         "anon_max_rate="
                       + std::to_string(bytesPerSecond)
                       + "\n"
                         "secure_chroot_dir="
                       + base + "/empty\n" + (options.tls ? TlsSettings(base) : ""));
    fListener = std::make_unique<InetdListener>(std::vector<std::string>{kVsftpd, fConfig},
                                                base + "/vsftpd.log");
    if (!fListener->Start()) {
        fUnavailable = "no listening socket on 127.0.0.1";
        return;
    }
}

VsftpdServer::~VsftpdServer()
{
    fListener.reset();
    // The served root is read-only so that writes outside "upload" fail; only
    // root could empty it as it is.
    chmod(Root().c_str(), 0755);
}

std::string VsftpdServer::Root() const
{
    return fDir.path().toStdString() + "/root";
}

std::string VsftpdServer::Scratch() const
{
    const std::string scratch = fDir.path().toStdString() + "/scratch";
    mkdir(scratch.c_str(), 0755);
    return scratch;
}

void VsftpdServer::DropSessions()
{
    if (fListener != nullptr)
        fListener->DropSessions();
}

void VsftpdServer::Stop()
{
    if (fListener != nullptr)
        fListener->Stop();
}

bool VsftpdServer::Start()
{
    return fListener != nullptr && fListener->Start(fListener->Port());
}

PyftpdlibServer::PyftpdlibServer(const std::string &root, unsigned idleSeconds)
    : fRoot(root.empty() ? fDir.path().toStdString() : root)
{
    static const char *const script = R"(
import sys
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer
authorizer = DummyAuthorizer()
authorizer.add_user("kestrin", "secret", sys.argv[1], perm="elradfmwT")
FTPHandler.authorizer = authorizer
FTPHandler.auth_failed_timeout = 0
if int(sys.argv[2]) > 0:
    FTPHandler.timeout = int(sys.argv[2])
server = FTPServer(("127.0.0.1", 0), FTPHandler)
print(server.address[1], flush=True)
server.serve_forever()
)";
    fProcess.setProcessChannelMode(QProcess::SeparateChannels);
    fProcess.setStandardErrorFile(QProcess::nullDevice());
    // Debian's own interpreter, where python3-pyftpdlib installs, before any
    // other python3 on PATH.
    const QString python = access("/usr/bin/python3", X_OK) == 0 ? "/usr/bin/python3" : "python3";
    fProcess.start(python,
                   {"-c", script, QString::fromStdString(fRoot), QString::number(idleSeconds)});
    if (!fProcess.waitForStarted(5000)) {
        fUnavailable = "python3 is not installed";
        return;
    }
    while (!fProcess.canReadLine() && fProcess.waitForReadyRead(10000)) {
    }
    const QByteArray line = fProcess.readLine().trimmed();
    fPort = line.toUInt();
    if (fPort == 0)
        fUnavailable = "pyftpdlib is not installed (python3-pyftpdlib)";
}

PyftpdlibServer::~PyftpdlibServer()
{
    if (fProcess.state() != QProcess::NotRunning) {
        fProcess.kill();
        fProcess.waitForFinished(5000);
    }
}
