#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

/// One run of the real lumeno-enroll in the working folder, with its output read at the end.
struct ToolRun {
    int status = -1; ///< -1: it crashed, was killed or did not end in time.
    QString output;
    QString errors;

    bool says(const QString& text) const { return output.contains(text) || errors.contains(text); }
};

/// The environment of a run: what is attached, and its faults.
inline QProcessEnvironment sensorEnvironment(const QString& attached, const QString& faults = {}) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("LUMENO_HOME"));
    environment.insert(QStringLiteral("LUMENO_VIRTUAL_KINECT"), attached);
    environment.insert(QStringLiteral("LUMENO_VIRTUAL_KINECT_FAULTS"), faults);
    return environment;
}

inline ToolRun runTool(const QStringList& arguments, const QProcessEnvironment& environment,
                       int timeoutMs = 100000,
                       const QString& program = QStringLiteral(LUMENO_ENROLL)) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ToolRun run;
    if (process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    run.output = QString::fromUtf8(process.readAllStandardOutput());
    run.errors = QString::fromUtf8(process.readAllStandardError());
    return run;
}

inline ToolRun runTool(const QStringList& arguments, const QString& attached = {},
                       const QString& faults = {}, int timeoutMs = 100000) {
    return runTool(arguments, sensorEnvironment(attached, faults), timeoutMs);
}
