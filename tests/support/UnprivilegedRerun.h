#pragma once

#include <QTemporaryDir>
#include <string>
#include <sys/types.h>
#include <vector>

// What permission bits keep out can only be checked by someone they keep out,
// and they keep out nothing from root, who runs the suite in CI. A test of
// them therefore begins with
//
//     if (UnprivilegedRerun::Delegated())
//         return;
//
// Run by root, Delegated() runs this one test again, in a fresh process of
// the same test program, as user nobody; reports that run's outcome as this
// test's (a failure carries the whole output of that run, so its expectations
// read as they would here); and returns true. Run by anyone else it returns
// false, and the test makes its checks itself.
//
// The new process runs the program from its start: a fork of this one, whose
// Qt threads may hold locks, could not run the test safely, so the fork only
// changes its ids and execs at once. It gets a home and temporary folder of
// its own that nobody may write to, removed afterwards whatever the run left.
class UnprivilegedRerun
{
public:
    static bool Delegated();

private:
    explicit UnprivilegedRerun(std::string test);

    bool HandOverFolder();
    // Runs the test as nobody in the work folder and waits for it.
    void Run();
    void Report() const;
    std::vector<std::string> Environment() const;
    // In the forked process: becomes nobody and starts the program, or tells
    // `failure` at which step it could not.
    [[noreturn]] void BecomeNobodyAndStart(int output,
                                           int failure,
                                           char *const argv[],
                                           char *const envp[]) const;

    std::string fTest;
    uid_t fUid = 65534;
    gid_t fGid = 65534;
    QTemporaryDir fWork;
    std::string fWorkPath;
    // Why the test could not be run at all: a fault here, or (fRefused) a
    // machine that does not let root become nobody.
    std::string fError;
    bool fRefused = false;
    std::string fOutput;
    int fStatus = 0;
};
