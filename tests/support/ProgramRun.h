#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// A program run to its end while the test's event loop goes on (a running
// Kestrin in the same test keeps answering); killed when it outlasts the
// bound, which only a hung program reaches.
struct ProgramRun
{
    bool ended = false;
    int exitCode = -1; // -1 when it crashed or was killed
    QString out;
    QString err;

    static ProgramRun Of(const QString &program,
                         const QStringList &arguments,
                         const QProcessEnvironment &environment
                         = QProcessEnvironment::systemEnvironment(),
                         int boundMs = 90000);
};
