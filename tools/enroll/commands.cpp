#include "enroll/commands.h"

#include "common/command_line.h"
#include "common/console.h"

#include <array>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

struct Command {
    const char* name;
    int (*run)(const QStringList&, tool::Console&);
    const char* use;
    const char* purpose;
};

constexpr std::array commands{
    Command{"take", takeCommand, "take [--sitting NAME] [--auto] [--seconds N] [--into DIR]",
            "takes samples of the owner with the sensor"},
    Command{"import", importCommand, "import [--sitting NAME] [--into DIR] PICTURE...",
            "cuts samples out of photographs, as the program cuts them"},
    Command{"check", checkCommand, "check [--csv FILE] [FOLDER]",
            "grades the samples that are there and says what is missing"},
    Command{"why", whyCommand, "why [PICTURE]", "says why the owner was not recognised"},
    Command{"strangers", strangersCommand, "strangers [PICTURE... | --seconds N]",
            "says how often somebody else would be taken for the owner"},
    Command{"set-aside", setAsideCommand, "set-aside FILE...",
            "moves samples to where they are not read"},
};

const Command* commandNamed(const QString& name) {
    for (const Command& command : commands)
        if (name == QLatin1StringView(command.name))
            return &command;
    return nullptr;
}

} // namespace

bool isCommand(const QString& name) {
    return commandNamed(name) != nullptr;
}

int runCommand(const QStringList& arguments, tool::Console& console) {
    const Command* command = commandNamed(arguments.value(0));
    if (!command) {
        console.complain(u"\"%1\" is no command; --help lists them."_s.arg(arguments.value(0)));
        return tool::WrongUse;
    }
    return command->run(arguments, console);
}

QString commandsHelp() {
    QString help = u"Teaches the Control Center what its owner looks like. Without a command a "
                   "window leads through it.\n\nCommands (each has a --help of its own):\n"_s;
    for (const Command& command : commands)
        help += u"  %1\n      %2\n"_s.arg(QLatin1StringView(command.use),
                                          QLatin1StringView(command.purpose));
    return help + u"\nExit status: 0 good, 1 thin or refused, 2 wrong use, 3 no sensor."_s;
}

} // namespace enroll
