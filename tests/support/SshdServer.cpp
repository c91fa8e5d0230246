#include "SshdServer.h"

#include "ProgramRun.h"
#include "TempHome.h"

#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char *const kSshd = "/usr/sbin/sshd";
const char *const kUnshare = "/usr/bin/unshare";
const char *const kPassword = "kestrin sesame";
// kPassword's SHA-512 crypt, as `openssl passwd -6 -salt kestrintest` makes it.
const char *const kPasswordHash = "$6$kestrintest$347SJZHAcBbn0HVnaqP3kVk8R5/oph4vz28bPkf6xMH6ceMt"
                                  "I/a5Rzulrl0Ux.n7iKnb6XmpfwJU.47MUYL0C.";

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
    // The user's line of shadow(5): the password, then the ageing fields of
    // an account that never expires.
    WriteFileBytes(base + "/shadow", User() + ":" + kPasswordHash + ":19000:0:99999:7:::\n");
    const bool ownShadow = CanHaveOwnShadow();
    if (!ownShadow && geteuid() != 0) {
        fUnavailable = "sshd run by " + User()
                       + " cannot read /etc/shadow, so finds the account "
                         "locked, and no user namespace of its own is allowed here to give it a "
                         "shadow file it can read";
        return;
    }
    // Without a shadow file of its own, sshd would take the machine's real
    // passwords: it takes none then.
    if (!ownShadow)
        fPasswordUnavailable = "sshd cannot have a mount namespace of its own here, where a "
                               "known password lies over /etc/shadow";
    const std::string config = WriteConfig(ownShadow);
    // -e: errors to the log file rather than syslog, which may be absent.
    std::vector<std::string> argv = {kSshd, "-i", "-e", "-f", config};
    if (ownShadow)
        argv = WithOwnShadow(argv);
    fListener = std::make_unique<InetdListener>(argv, base + "/sshd.log");
    if (!fListener->Start())
        fUnavailable = "no listening socket on 127.0.0.1";
}

SshdServer::~SshdServer() = default;

std::string SshdServer::WriteConfig(bool passwords) const
{
    const std::string base = fDir.path().toStdString();
    const std::string config = base + "/sshd_config";
    WriteFileBytes(config,
                   "HostKey " + base + "/host\n" + "AuthorizedKeysFile " + base
                       + "/authorized_keys\n"
                         "StrictModes no\n"
                         "UsePAM no\n"
                       + "PasswordAuthentication " + (passwords ? "yes" : "no")
                       + "\n"
                         "KbdInteractiveAuthentication no\n"
                         "PermitRootLogin yes\n"
                         "Subsystem sftp internal-sftp\n"
                         "LogLevel ERROR\n");
    return config;
}

bool SshdServer::MakeKey(const std::string &path) const
{
    unlink(path.c_str());
    unlink((path + ".pub").c_str());
    const ProgramRun run = ProgramRun::Of(
        "ssh-keygen",
        {"-q", "-t", "ed25519", "-N", "", "-C", "kestrin-test", "-f", QString::fromStdString(path)});
    return run.exitCode == 0;
}

std::vector<std::string> SshdServer::WithOwnShadow(const std::vector<std::string> &command) const
{
    std::vector<std::string> argv = {kUnshare, "--mount"};
    std::string then = "exec \"$@\"";
    if (geteuid() != 0) {
        // Only root mounts: the root of a user namespace of its own, here,
        // over the mounts of its own namespace. sshd then runs as the user
        // again, in a namespace nested in that one, so it is root nowhere
        // and takes itself for the user it is.
        argv = {kUnshare, "--user", "--map-root-user", "--mount"};
        then = std::string("exec ") + kUnshare + " --user --map-user=" + std::to_string(geteuid())
               + " --map-group=" + std::to_string(getegid()) + " -- \"$@\"";
    }
    const std::string shadow = fDir.path().toStdString() + "/shadow";
    argv.insert(argv.end(),
                {"--", "/bin/sh", "-c", "mount --bind \"$0\" /etc/shadow && " + then, shadow});
    argv.insert(argv.end(), command.begin(), command.end());
    return argv;
}

bool SshdServer::CanHaveOwnShadow() const
{
    if (access(kUnshare, X_OK) != 0)
        return false;
    const std::vector<std::string> argv = WithOwnShadow(
        {"grep", "-qF", kPasswordHash, "/etc/shadow"});
    QStringList arguments;
    for (size_t i = 1; i < argv.size(); i++)
        arguments << QString::fromStdString(argv[i]);
    return ProgramRun::Of(kUnshare, arguments).exitCode == 0;
}

std::string SshdServer::Password()
{
    return kPassword;
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
    return words.size() > 1 ? words[1].trimmed().toStdString() : "";
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

void SshdServer::PrepareHome(TempHome &home, Trust trust) const
{
    home.SetEnv("SSH_AUTH_SOCK", std::nullopt);
    const std::string folder = home.Home() + "/.ssh";
    std::filesystem::create_directories(folder);
    if (trust != Trust::Nothing)
        std::filesystem::copy_file(UserKey(), folder + "/id_ed25519");
    if (trust == Trust::KeyAndHost)
        WriteFileBytes(folder + "/known_hosts", KnownHostsLine() + "\n");
}
