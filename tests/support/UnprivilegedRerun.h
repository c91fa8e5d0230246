#pragma once

#include <QTemporaryDir>
#include <string>
#include <sys/types.h>
#include <vector>

// What permission bits keep out can only be checked by someone they keep
// out, and root, who runs the suite in CI, is kept out of nothing. A test of
// them begins with `if (UnprivilegedRerun::Delegated()) return;`. Run by root,
// Delegated() runs this one test again as user nobody, in a fresh process of
// the same program (a fork of this threaded one could not run it safely),
// with a home and temporary folder of its own; it reports that run's outcome,
// with its whole output on a failure, as this test's, and returns true. Run by
// anyone else it returns false, and the test makes its checks itself.
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
