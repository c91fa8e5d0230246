#pragma once

#include <QTemporaryDir>
#include <map>
#include <optional>
#include <string>

// A fresh home folder for one test: HOME points into a temporary folder and the
// XDG_* variables are cleared, so settings, trash and add-on paths all land
// inside it; the session bus is pointed nowhere. The old environment comes
// back when the object goes.
class TempHome
{
public:
    TempHome();
    ~TempHome();

    TempHome(const TempHome &) = delete;
    TempHome &operator=(const TempHome &) = delete;

    // The temporary folder that holds the home (and room for other test data).
    std::string Root() const;
    std::string Home() const;
    // ~/.config, where Kestrin's settings live unless XDG_CONFIG_HOME says otherwise.
    std::string ConfigDir() const;
    // Where transfers make their work folders (none may stay after one).
    std::string TransferWork() const;

    // Sets or clears (nullopt) one environment variable until the end of the test.
    void SetEnv(const char *name, const std::optional<std::string> &value);

private:
    QTemporaryDir fDir;
    std::map<std::string, std::optional<std::string>> fSaved;
};

// Writes `bytes` to `path` exactly, replacing any file there.
void WriteFileBytes(const std::string &path, const std::string &bytes);
// The whole content of `path`, or nullopt when it cannot be read.
std::optional<std::string> ReadFileBytes(const std::string &path);
// A temporary folder on tmpfs where there is one: tens of thousands of
// entries are made there in a fraction of the time a journalling disk takes.
QTemporaryDir ScratchFolder();
