#pragma once

#include "record/record_tool.h"
#include "tools/tool_run.h"

/// One run of lumeno-record.
struct RecordToolRun : ToolRun {
    explicit RecordToolRun(
        const QStringList& arguments, const std::function<bool()>& stopped = [] { return false; })
        : ToolRun(QStringLiteral("lumeno-record"), record::runRecordTool, arguments, stopped) {}
};
