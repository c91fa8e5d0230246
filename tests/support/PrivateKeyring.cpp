#include "PrivateKeyring.h"

#include "ProgramRun.h"

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

// Both daemons die with the test process, however it ends.
void DieWithParent()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

// The bus's daemon, ended when the application that owns it goes.
class BusDaemon : public QProcess
{
public:
    using QProcess::QProcess;
    ~BusDaemon() override
    {
        terminate();
        waitForFinished();
    }
};

struct Bus
{
    std::string address;
    std::string error;
};

Bus StartBus()
{
    Bus bus;
    // Owned by the application, whose end ends the bus.
    auto *daemon = new BusDaemon(QCoreApplication::instance());
    daemon->setChildProcessModifier(&DieWithParent);
    // An abstract socket leaves no file behind, however the bus ends.
    const QString address = QString("unix:abstract=/kestrin/test-bus-%1").arg(getpid());
    daemon->start("dbus-daemon",
                  {"--config-file=" KESTRIN_TEST_BUS_CONFIG,
                   "--address=" + address,
                   "--nofork",
                   "--print-address=1"});
    if (!daemon->waitForStarted()) {
        bus.error = "dbus-daemon is not installed (dbus-daemon)";
        return bus;
    }
    while (!daemon->canReadLine() && daemon->waitForReadyRead(60000)) {
    }
    if (!daemon->canReadLine()) {
        bus.error = "dbus-daemon did not start: "
                    + QString::fromUtf8(daemon->readAllStandardError()).toStdString();
        return bus;
    }
    bus.address = QString::fromUtf8(daemon->readLine()).trimmed().toStdString();
    return bus;
}

} // namespace

std::string PrivateKeyring::UseBus()
{
    static const Bus bus = StartBus();
    if (bus.error.empty())
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.address.c_str(), 1);
    return bus.error;
}

PrivateKeyring::PrivateKeyring()
{
    fUnavailable = UseBus();
    if (!fUnavailable.empty())
        return;
    fDaemon.setChildProcessModifier(&DieWithParent);
    // Unlocked with a password on standard input, which makes the login
    // keyring (the default one) in the test's home when there is none.
    fDaemon.start("gnome-keyring-daemon", {"--foreground", "--unlock", "--components=secrets"});
    if (!fDaemon.waitForStarted()) {
        fUnavailable = "gnome-keyring-daemon is not installed (gnome-keyring)";
        return;
    }
    fDaemon.write("kestrin");
    fDaemon.closeWriteChannel();
    // It serves once its name is on the bus.
    const ProgramRun wait
        = ProgramRun::Of("gdbus",
                         {"wait", "--session", "--timeout", "60", "org.freedesktop.secrets"});
    if (wait.exitCode != 0)
        fUnavailable = "gnome-keyring-daemon did not come up on a private session bus: "
                       + QString::fromUtf8(fDaemon.readAllStandardError()).toStdString()
                       + wait.err.toStdString();
}

PrivateKeyring::~PrivateKeyring()
{
    if (fDaemon.state() == QProcess::NotRunning)
        return;
    fDaemon.terminate();
    if (!fDaemon.waitForFinished(30000))
        fDaemon.kill();
    fDaemon.waitForFinished();
}
