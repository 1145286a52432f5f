#pragma once

#include "common/console.h"
#include "record/record_tool.h"

#include <QBuffer>
#include <QStringList>

#include <functional>

/// One run of lumeno-record in this process: its status and what it wrote.
struct RecordToolRun {
    explicit RecordToolRun(
        const QStringList& arguments, const std::function<bool()>& stopped = [] { return false; }) {
        QBuffer outputBuffer;
        QBuffer errorsBuffer;
        outputBuffer.open(QIODevice::WriteOnly);
        errorsBuffer.open(QIODevice::WriteOnly);
        {
            tool::Console console(QStringLiteral("lumeno-record"), outputBuffer, errorsBuffer);
            status = record::runRecordTool(QStringList{QStringLiteral("lumeno-record")} + arguments,
                                           console, stopped);
        }
        output = QString::fromLocal8Bit(outputBuffer.data());
        errors = QString::fromLocal8Bit(errorsBuffer.data());
    }

    int status = -1;
    QString output;
    QString errors;
};
