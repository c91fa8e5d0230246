// kestrin-addon-host ADD-ON DEVICE DIRECTORY NAME PATH [DEVICE DIRECTORY NAME PATH]...
//
// Loads one add-on and calls its process_refs with the folder and entries of
// the command line, so that whatever the add-on does (crash, hang, exit)
// happens in this process and not in Kestrin's. See platform/AddOnHostProtocol.h
// for the arguments, the report and the exit status.

#include "kestrin/addon.h"
#include "platform/AddOnHostProtocol.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace host = platform::addon_host;

// When Kestrin is built with AddressSanitizer this host is too, and the
// sanitizer would turn the add-on's crash into a report and an ordinary exit.
// Kestrin tells a crash by the signal that ends the process, so the signals
// keep their default action. Unused without the sanitizer.
extern "C" const char *__asan_default_options()
{
    return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_abort=0";
}

namespace {

struct Ref
{
    dev_t device = 0;
    ino_t directory = 0;
    std::string name;
    std::string path;
};

bool ParseNumber(const std::string &text, uintmax_t *value)
{
    if (text.empty() || text[0] < '0' || text[0] > '9')
        return false;
    errno = 0;
    char *end = nullptr;
    *value = strtoumax(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0';
}

bool ParseRef(char **arguments, Ref *ref)
{
    std::string device, directory;
    uintmax_t deviceNumber = 0, directoryNumber = 0;
    if (!host::DecodeArgument(arguments[0], &device) || !ParseNumber(device, &deviceNumber)
        || !host::DecodeArgument(arguments[1], &directory)
        || !ParseNumber(directory, &directoryNumber)
        || !host::DecodeArgument(arguments[2], &ref->name)
        || !host::DecodeArgument(arguments[3], &ref->path))
        return false;
    ref->device = static_cast<dev_t>(deviceNumber);
    ref->directory = static_cast<ino_t>(directoryNumber);
    return true;
}

kestrin_entry_ref ToC(const Ref &ref)
{
    return kestrin_entry_ref{ref.device, ref.directory, ref.name.c_str(), ref.path.c_str()};
}

// The report is the one line Kestrin trusts; the add-on never gets this
// descriptor as its standard output.
void Report(int fd, const std::string &line)
{
    const std::string text = line + "\n";
    for (size_t written = 0; written < text.size();) {
        const ssize_t count = write(fd, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        written += size_t(count);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 6 || (argc - 2) % 4 != 0) {
        fprintf(stderr,
                "usage: kestrin-addon-host ADD-ON DEVICE DIRECTORY NAME PATH "
                "[DEVICE DIRECTORY NAME PATH]...\n");
        return host::kExitUsage;
    }
    std::string addOn;
    Ref folder;
    std::vector<Ref> entries(size_t(argc - 6) / 4);
    bool valid = host::DecodeArgument(argv[1], &addOn) && ParseRef(argv + 2, &folder);
    for (size_t i = 0; valid && i < entries.size(); i++)
        valid = ParseRef(argv + 6 + 4 * i, &entries[i]);
    if (!valid) {
        fprintf(stderr, "kestrin-addon-host: malformed arguments\n");
        return host::kExitUsage;
    }

    // The report keeps the real standard output; from here on the add-on's
    // printf lands in standard error, line by line, in the order written.
    const int report = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (report < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        perror("kestrin-addon-host");
        return host::kExitUsage;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);

    // A crashing add-on must not leave a core file in the user's folder.
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);

    void *image = dlopen(addOn.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!image) {
        const char *problem = dlerror();
        fprintf(stderr, "%s\n", problem ? problem : "the add-on cannot be loaded");
        Report(report, host::kReportCannotLoad);
        return host::kExitCannotLoad;
    }
    dlerror();
    auto *processRefs = reinterpret_cast<kestrin_process_refs_func>(dlsym(image, "process_refs"));
    if (!processRefs) {
        Report(report, host::kReportNoEntryPoint);
        return host::kExitNoEntryPoint;
    }

    // Best effort, and only now that the add-on is loaded from where it was
    // named: its relative paths then mean the folder. When the folder cannot
    // be entered, the add-on still has every path it needs.
    [[maybe_unused]] const int entered = chdir(folder.path.c_str());

    const kestrin_entry_ref folderRef = ToC(folder);
    std::vector<kestrin_entry_ref> entryRefs;
    entryRefs.reserve(entries.size());
    for (const Ref &entry : entries)
        entryRefs.push_back(ToC(entry));

    const int result = processRefs(&folderRef, entryRefs.data(), entryRefs.size(), nullptr);
    fflush(stdout);
    fflush(stderr);
    if (result != 0) {
        Report(report, std::string(host::kReportFailed) + " " + std::to_string(result));
        return host::kExitFailed;
    }
    Report(report, host::kReportDone);
    return host::kExitDone;
}
