#pragma once

#include "common/console.h"

#include <QBuffer>
#include <QString>
#include <QStringList>

#include <functional>

/// One run of a tool in this process: its status and what it wrote.
struct ToolRun {
    using Tool = int (*)(const QStringList& arguments, tool::Console& console,
                         const std::function<bool()>& stopped);

    ToolRun(const QString& name, Tool run, const QStringList& arguments,
            const std::function<bool()>& stopped) {
        QBuffer outputBuffer;
        QBuffer errorsBuffer;
        outputBuffer.open(QIODevice::WriteOnly);
        errorsBuffer.open(QIODevice::WriteOnly);
        {
            tool::Console console(name, outputBuffer, errorsBuffer);
            status = run(QStringList{name} + arguments, console, stopped);
        }
        output = QString::fromLocal8Bit(outputBuffer.data());
        errors = QString::fromLocal8Bit(errorsBuffer.data());
    }

    int status = -1;
    QString output;
    QString errors;
};
