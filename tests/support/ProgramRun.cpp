#include "ProgramRun.h"

#include <QProcess>
#include <QTest>

ProgramRun ProgramRun::Of(const QString &program,
                          const QStringList &arguments,
                          const QProcessEnvironment &environment,
                          int boundMs)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ProgramRun run;
    if (!process.waitForStarted())
        return run;
    run.ended = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, boundMs);
    if (!run.ended) {
        process.kill();
        process.waitForFinished();
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}
