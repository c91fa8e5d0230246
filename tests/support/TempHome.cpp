#include "TempHome.h"

#include <QDir>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

TempHome::TempHome()
{
    if (!fDir.isValid())
        throw std::runtime_error("cannot create a temporary folder");
    QDir(fDir.path()).mkpath("home");
    SetEnv("HOME", Home());
    SetEnv("XDG_CONFIG_HOME", std::nullopt);
    SetEnv("XDG_DATA_HOME", std::nullopt);
    SetEnv("XDG_CACHE_HOME", std::nullopt);
    // Nothing of a test reaches the desktop's session bus (and its keyring);
    // a test that needs a bus starts its own (PrivateKeyring).
    SetEnv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

TempHome::~TempHome()
{
    for (const auto &[name, value] : fSaved) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
}

std::string TempHome::Root() const
{
    return fDir.path().toStdString();
}

std::string TempHome::Home() const
{
    return Root() + "/home";
}

std::string TempHome::ConfigDir() const
{
    return Home() + "/.config";
}

std::string TempHome::TransferWork() const
{
    return Home() + "/.cache/kestrin/transfers";
}

void TempHome::SetEnv(const char *name, const std::optional<std::string> &value)
{
    if (!fSaved.count(name)) {
        const char *old = getenv(name);
        fSaved[name] = old ? std::optional<std::string>(old) : std::nullopt;
    }
    if (value)
        setenv(name, value->c_str(), 1);
    else
        unsetenv(name);
}

void WriteFileBytes(const std::string &path, const std::string &bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), std::streamsize(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write " + path);
}

std::optional<std::string> ReadFileBytes(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), {});
}

QTemporaryDir ScratchFolder()
{
    if (access("/dev/shm", W_OK) == 0) {
        QTemporaryDir shm("/dev/shm/kestrin-test-XXXXXX");
        if (shm.isValid())
            return shm;
    }
    return QTemporaryDir();
}
