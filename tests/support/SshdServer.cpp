#include "SshdServer.h"

#include "ProgramRun.h"
#include "TempHome.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char *const kSshd = "/usr/sbin/sshd";

std::string Trimmed(const QString &text)
{
    return text.trimmed().toStdString();
}

} // namespace

SshdServer::SshdServer()
{
    if (access(kSshd, X_OK) != 0) {
        fUnavailable = "sshd is not installed";
        return;
    }
    // sshd started by root insists on its privilege separation folder.
    if (geteuid() == 0)
        mkdir("/run/sshd", 0755);
    const std::string base = fDir.path().toStdString();
    if (!MakeKey(base + "/host") || !MakeKey(base + "/user")) {
        fUnavailable = "ssh-keygen cannot make keys";
        return;
    }
    WriteFileBytes(base + "/authorized_keys", ReadFileBytes(base + "/user.pub").value_or(""));
    const std::string config = base + "/sshd_config";
    WriteFileBytes(config,
                   "HostKey " + base
                       + "/host\n"
                         "AuthorizedKeysFile "
                       + base
                       + "/authorized_keys\n"
                         "StrictModes no\n"
                         "UsePAM no\n"
                         "PasswordAuthentication no\n"
                         "KbdInteractiveAuthentication no\n"
                         "PermitRootLogin prohibit-password\n"
                         "Subsystem sftp internal-sftp\n"
                         "LogLevel ERROR\n");
    // -e: errors to the log file rather than syslog, which may be absent.
    fListener
        = std::make_unique<InetdListener>(std::vector<std::string>{kSshd, "-i", "-e", "-f", config},
                                          base + "/sshd.log");
    if (!fListener->Start())
        fUnavailable = "no listening socket on 127.0.0.1";
}

SshdServer::~SshdServer() = default;

bool SshdServer::MakeKey(const std::string &path) const
{
    unlink(path.c_str());
    unlink((path + ".pub").c_str());
    const ProgramRun run = ProgramRun::Of(
        "ssh-keygen",
        {"-q", "-t", "ed25519", "-N", "", "-C", "kestrin-test", "-f", QString::fromStdString(path)});
    return run.exitCode == 0;
}

std::string SshdServer::User()
{
    const passwd *entry = getpwuid(geteuid());
    return entry != nullptr ? entry->pw_name : "";
}

std::string SshdServer::UserKey() const
{
    return fDir.path().toStdString() + "/user";
}

std::string SshdServer::KnownHostsLine() const
{
    const std::string key = ReadFileBytes(fDir.path().toStdString() + "/host.pub").value_or("");
    // "type base64 comment": the comment is not part of a known_hosts line.
    const size_t second = key.find(' ', key.find(' ') + 1);
    return "[127.0.0.1]:" + std::to_string(Port()) + " " + key.substr(0, second) + "\n";
}

std::string SshdServer::Fingerprint() const
{
    const ProgramRun run = ProgramRun::Of("ssh-keygen", {"-l", "-f", fDir.path() + "/host.pub"});
    // "256 SHA256:... comment (ED25519)"
    const QStringList words = run.out.split(' ');
    return words.size() > 1 ? Trimmed(words[1]) : "";
}

bool SshdServer::ReplaceHostKey()
{
    return MakeKey(fDir.path().toStdString() + "/host");
}

std::string SshdServer::Scratch() const
{
    const std::string scratch = fDir.path().toStdString() + "/scratch";
    mkdir(scratch.c_str(), 0755);
    return scratch;
}

void SshdServer::DropSessions()
{
    if (fListener != nullptr)
        fListener->DropSessions();
}
