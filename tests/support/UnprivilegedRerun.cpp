#include "UnprivilegedRerun.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

// The steps of becoming nobody and starting the program, as the forked
// process reports the one it failed at.
enum Step : int { kRedirect, kEnterFolder, kDropGroups, kSetGroup, kSetUser, kStart };
const char *const kStepText[] = {"redirecting its output",
                                 "entering its folder",
                                 "leaving root's groups",
                                 "taking nobody's group",
                                 "becoming nobody",
                                 "starting the test program"};

// Per-user variables that would lead the new process into root's folders,
// and gtest's own, which could shard the one test away or have its report
// written over this process's.
const char *const kDroppedVariables[] = {"HOME=",
                                         "TMPDIR=",
                                         "XDG_RUNTIME_DIR=",
                                         "XDG_CONFIG_HOME=",
                                         "XDG_DATA_HOME=",
                                         "XDG_CACHE_HOME=",
                                         "XDG_STATE_HOME=",
                                         "GTEST_"};

[[noreturn]] void Fail(int failure, int step)
{
    const int report[2] = {step, errno};
    [[maybe_unused]] const ssize_t written = write(failure, report, sizeof report);
    _exit(127);
}

std::string ReadAll(int fd)
{
    std::string bytes;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(fd, buffer, sizeof buffer);
        if (count > 0)
            bytes.append(buffer, size_t(count));
        else if (count == 0 || errno != EINTR)
            return bytes;
    }
}

std::vector<char *> Pointers(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

bool UnprivilegedRerun::Delegated()
{
    if (geteuid() != 0)
        return false;
    const ::testing::TestInfo *info = ::testing::UnitTest::GetInstance()->current_test_info();
    UnprivilegedRerun rerun(std::string(info->test_suite_name()) + "." + info->name());
    rerun.Run();
    rerun.Report();
    return true;
}

UnprivilegedRerun::UnprivilegedRerun(std::string test)
    : fTest(std::move(test))
    , fWorkPath(fWork.path().toStdString())
{
    if (const passwd *nobody = getpwnam("nobody")) {
        fUid = nobody->pw_uid;
        fGid = nobody->pw_gid;
    }
}

bool UnprivilegedRerun::HandOverFolder()
{
    // Qt wants a runtime folder that is its user's alone.
    const std::string runtime = fWorkPath + "/runtime";
    if (fWork.isValid() && chown(fWorkPath.c_str(), fUid, fGid) == 0
        && mkdir(runtime.c_str(), 0700) == 0 && chown(runtime.c_str(), fUid, fGid) == 0)
        return true;
    fError = "no folder for it: " + std::string(strerror(errno));
    return false;
}

void UnprivilegedRerun::Run()
{
    if (!HandOverFolder())
        return;
    // All the new process needs is made here: after the fork, only system calls.
    std::vector<std::string> args = {program_invocation_name,
                                     "--gtest_filter=" + fTest,
                                     "--gtest_color=no"};
    std::vector<std::string> variables = Environment();
    const std::vector<char *> argv = Pointers(args), envp = Pointers(variables);
    int output[2], failure[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(failure, O_CLOEXEC) != 0) {
        fError = "no pipe: " + std::string(strerror(errno));
        return; // a test process that has run out of descriptors is done for anyway
    }
    const pid_t child = fork();
    if (child == 0)
        BecomeNobodyAndStart(output[1], failure[1], argv.data(), envp.data());
    const int forkError = errno;
    close(output[1]);
    close(failure[1]);
    if (child < 0) {
        fError = "no process for it: " + std::string(strerror(forkError));
        close(output[0]);
        close(failure[0]);
        return;
    }
    // The failure pipe closes when the program starts, the output pipe when it ends.
    const std::string report = ReadAll(failure[0]);
    fOutput = ReadAll(output[0]);
    close(failure[0]);
    close(output[0]);
    while (waitpid(child, &fStatus, 0) < 0 && errno == EINTR) {
    }
    int step[2];
    if (report.size() == sizeof step) {
        memcpy(step, report.data(), sizeof step);
        fRefused = true;
        fError = std::string(kStepText[step[0]]) + ": " + strerror(step[1]);
    }
}

std::vector<std::string> UnprivilegedRerun::Environment() const
{
    std::vector<std::string> variables;
    for (char **variable = environ; *variable; variable++) {
        bool dropped = false;
        for (const char *prefix : kDroppedVariables)
            dropped = dropped || strncmp(*variable, prefix, strlen(prefix)) == 0;
        if (!dropped)
            variables.emplace_back(*variable);
    }
    variables.push_back("HOME=" + fWorkPath);
    variables.push_back("TMPDIR=" + fWorkPath);
    variables.push_back("XDG_RUNTIME_DIR=" + fWorkPath + "/runtime");
    return variables;
}

void UnprivilegedRerun::BecomeNobodyAndStart(int output,
                                             int failure,
                                             char *const argv[],
                                             char *const envp[]) const
{
    // This process is a copy of one thread of a threaded program: a lock that
    // another thread held stays held, so nothing here may allocate or lock.
    // The raw calls change the ids of this one thread, which is all there is;
    // libc's wrappers would try to reach threads that did not come along.
    if (dup2(output, STDOUT_FILENO) < 0 || dup2(output, STDERR_FILENO) < 0)
        Fail(failure, kRedirect);
    if (chdir(fWorkPath.c_str()) != 0)
        Fail(failure, kEnterFolder);
    if (syscall(SYS_setgroups, 0, nullptr) != 0)
        Fail(failure, kDropGroups);
    if (syscall(SYS_setresgid, fGid, fGid, fGid) != 0)
        Fail(failure, kSetGroup);
    if (syscall(SYS_setresuid, fUid, fUid, fUid) != 0)
        Fail(failure, kSetUser);
    // Killed with the test that waits for it, should that one be killed.
    syscall(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // The program by its link in /proc, which leads nobody to it even when a
    // folder on the way to the build (root's home, say) is closed to nobody.
    execve("/proc/self/exe", argv, envp);
    Fail(failure, kStart);
}

void UnprivilegedRerun::Report() const
{
    if (fRefused)
        GTEST_SKIP() << "root cannot run this test as user nobody here: " << fError;
    if (!fError.empty()) {
        ADD_FAILURE() << "the test could not be run again as user nobody: " << fError;
        return;
    }
    // The verdict is the new process's own: a clean exit alone would also
    // pass a filter that ran nothing.
    const bool clean = WIFEXITED(fStatus) && WEXITSTATUS(fStatus) == 0;
    if (clean && fOutput.find("[       OK ] " + fTest + " (") != std::string::npos)
        return;
    if (clean && fOutput.find("[  SKIPPED ] " + fTest + " (") != std::string::npos)
        GTEST_SKIP() << "as user nobody:\n" << fOutput;
    const std::string ending = WIFSIGNALED(fStatus)
                                   ? "was killed by signal " + std::to_string(WTERMSIG(fStatus))
                                   : "exited with " + std::to_string(WEXITSTATUS(fStatus));
    ADD_FAILURE() << "Run again as user nobody (uid " << fUid << "), the test " << ending << ":\n"
                  << fOutput;
}
