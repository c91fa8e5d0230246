#include "mainwindow/Terminal.h"

#include "platform/Alerts.h"
#include "platform/File.h"
#include "platform/Launcher.h"
#include "platform/Paths.h"

#include <QFileInfo>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>
#include <unistd.h>

namespace kestrin {

namespace {

// Users may have edited anything around the block, so it is looked for
// byte for byte and never rewritten.
constexpr char kProfileBlock[] = "if [ \"$FOLDER_PATH\" != \"\" ]; then \n"
                                 "    cd \"$FOLDER_PATH\" \n"
                                 "    unset -v FOLDER_PATH \n"
                                 " else \n"
                                 "    cd \"$HOME\" \n"
                                 " fi \n";
constexpr std::string_view kBlock(kProfileBlock, sizeof kProfileBlock - 1);
static_assert(kBlock.size() == 112);

constexpr char kFolderVariable[] = "FOLDER_PATH";

void AlertHey(const char *text)
{
    platform::Alerts::Go({"Hey", text, {"Damn!"}, B_INFO_ALERT});
}

// Each emulator has its own way of being told the command to run; Debian's
// x-terminal-emulator alternatives all take -e.
const char *CommandOption(const std::string &terminal)
{
    const QString name = QFileInfo(QString::fromStdString(terminal)).fileName();
    if (name == "gnome-terminal")
        return "--";
    if (name == "xfce4-terminal")
        return "-x";
    return "-e";
}

std::string Environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

} // namespace

void Terminal::SetupTerminal()
{
    std::string home;
    if (platform::FindDirectory(platform::DirectoryWhich::Home, &home) != B_OK || home.empty())
        return;
    const std::string path = home + "/.profile";

    platform::File file(path, B_READ_WRITE | B_CREATE_FILE);
    off_t size = 0;
    if (file.InitCheck() != B_OK || file.GetSize(&size) != B_OK)
        return;
    std::string content(size_t(size), '\0');
    size_t got = 0;
    while (got < content.size()) {
        const ssize_t read = file.Read(content.data() + got, content.size() - got);
        // A file we cannot read whole might hold the block already; appending
        // a second one is worse than not appending.
        if (read < 0)
            return;
        if (read == 0)
            break;
        got += size_t(read);
    }
    content.resize(got);
    if (content.find(kBlock) != std::string::npos)
        return;

    platform::File end(path, B_READ_WRITE | B_OPEN_AT_END);
    if (end.InitCheck() != B_OK)
        return;
    end.Write(kBlock.data(), kBlock.size());
}

bool Terminal::configure_argv(std::vector<std::string> *argv)
{
    std::vector<std::string> candidates;
    const std::string chosen = Environment("TERMINAL");
    if (!chosen.empty())
        candidates.push_back(chosen);
    for (const char *known :
         {"x-terminal-emulator", "gnome-terminal", "konsole", "xfce4-terminal", "xterm"})
        candidates.push_back(known);

    const std::string terminal = platform::Launcher::FindProgram(candidates);
    if (terminal.empty()) {
        AlertHey("Couldn't locate the terminal");
        return false;
    }
    std::string shell = Environment("SHELL");
    if (shell.empty())
        shell = "/bin/sh";
    *argv = {terminal, CommandOption(terminal), shell, "-l"};
    return true;
}

char **Terminal::my_putenv(char **env, const char *entry)
{
    // A started program may read its environment for as long as it likes, so
    // these arrays are never freed while Kestrin runs. They are owned here,
    // rather than dropped, so that a leak checker sees them as kept, not lost;
    // they go only when static objects are destroyed at exit.
    static std::mutex lock;
    static std::vector<std::unique_ptr<char *[]>> arrays;
    static std::vector<std::unique_ptr<char[]>> entries;

    size_t count = 0;
    while (env != nullptr && env[count] != nullptr)
        count++;
    auto array = std::make_unique<char *[]>(count + 2);
    for (size_t i = 0; i < count; i++)
        array[i] = env[i];
    const size_t length = std::strlen(entry);
    auto copy = std::make_unique<char[]>(length + 1);
    std::memcpy(copy.get(), entry, length + 1);
    array[count] = copy.get();
    array[count + 1] = nullptr;

    char **result = array.get();
    const std::lock_guard<std::mutex> guard(lock);
    arrays.push_back(std::move(array));
    entries.push_back(std::move(copy));
    return result;
}

int Terminal::LaunchTerminal(const std::vector<std::string> &argv, const std::string &folder)
{
    const std::string entry = std::string(kFolderVariable) + "=" + folder;
    char **environment = my_putenv(environ, entry.c_str());

    // The launcher adds variables to Kestrin's own environment, so the
    // launch carries only what was added here: the entries past ours.
    size_t own = 0;
    while (environ != nullptr && environ[own] != nullptr)
        own++;
    platform::Launch launch;
    if (!argv.empty()) {
        launch.program = argv[0];
        launch.arguments.assign(argv.begin() + 1, argv.end());
    }
    launch.workingDirectory = folder;
    for (char **added = environment + own; *added != nullptr; added++) {
        const std::string_view variable(*added);
        const size_t equals = variable.find('=');
        launch.environment.emplace_back(variable.substr(0, equals),
                                        equals == std::string_view::npos
                                            ? std::string_view()
                                            : variable.substr(equals + 1));
    }

    if (platform::Launcher::Start(launch) != B_OK) {
        AlertHey("Couldn't launch the terminal");
        return -1;
    }
    return 1;
}

void Terminal::Open(const std::string &folder)
{
    std::vector<std::string> argv;
    if (!configure_argv(&argv))
        return;
    // Set up on use rather than at start: reading ~/.profile can wait until
    // someone wants a terminal, and the check that the block is there is
    // cheap enough to make each time.
    SetupTerminal();
    LaunchTerminal(argv, folder);
}

} // namespace kestrin
