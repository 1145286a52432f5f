#pragma once

#include <QStringList>

namespace tool {
class Console;
}

namespace enroll {

/// How the tool ends beyond what every tool's statuses are: 0 good, 1 thin or refused, 2 wrong use.
inline constexpr int noSensor = 3;

/// Runs one command. `arguments`: the command's name and what follows it. Needs an application
/// object; turns events where the sensor is needed. Returns the exit status.
int runCommand(const QStringList& arguments, tool::Console& console);

/// Whether `name` is a command.
bool isCommand(const QString& name);

/// What `lumeno-enroll --help` says about the commands.
QString commandsHelp();

// The commands. Each takes the arguments as runCommand() does.
int takeCommand(const QStringList& arguments, tool::Console& console);
int importCommand(const QStringList& arguments, tool::Console& console);
int checkCommand(const QStringList& arguments, tool::Console& console);
int whyCommand(const QStringList& arguments, tool::Console& console);
int strangersCommand(const QStringList& arguments, tool::Console& console);
int setAsideCommand(const QStringList& arguments, tool::Console& console);

} // namespace enroll
