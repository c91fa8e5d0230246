#pragma once

#include <QProcess>
#include <string>

// A desktop keyring of the test's own: GNOME Keyring's daemon, unlocked, on a
// session bus that this test process started and nothing else uses. GLib keeps
// the first session bus it connects to, so the bus serves the process to its
// end; it activates no services, so a keyring answers on it only while a
// PrivateKeyring lives. Make one after the test's TempHome (which points the
// session bus nowhere until the test ends): the keyring's files go to its home.
class PrivateKeyring
{
public:
    PrivateKeyring();
    ~PrivateKeyring();

    PrivateKeyring(const PrivateKeyring &) = delete;
    PrivateKeyring &operator=(const PrivateKeyring &) = delete;

    // Why no keyring runs here, or empty.
    std::string Unavailable() const { return fUnavailable; }

    // Makes the private bus the process's session bus, with no keyring on
    // it unless a PrivateKeyring is started: the bus of a desktop without
    // one. Why it could not, or empty.
    static std::string UseBus();

private:
    QProcess fDaemon;
    std::string fUnavailable;
};
