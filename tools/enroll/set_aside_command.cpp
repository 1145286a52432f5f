#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/report.h"
#include "enroll/sitting_files.h"
#include "enroll/sitting_place.h"

namespace enroll {

using namespace Qt::StringLiterals;

int setAsideCommand(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(
        console, u"set-aside: moves samples to faces/set-aside, where they are not read."_s);
    line.addArgument(u"FILE"_s, u"A sample, as `check` names it or by its path."_s);
    line.addFurtherArguments(u"FILE"_s, u"More of them."_s);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    int refused = 0;
    const QStringList files = QStringList{line.argument(u"FILE"_s)} + line.furtherArguments();
    for (const QString& file : files) {
        QString movedTo;
        if (const QString problem = setAside(samplesFolder(), file, movedTo); !problem.isEmpty()) {
            console.complain(problem);
            ++refused;
        } else {
            console.say(u"%1 is now %2"_s.arg(file, movedTo));
        }
    }
    if (refused < files.size())
        console.say(restartSentence());
    return refused == 0 ? tool::Succeeded : tool::Failed;
}

} // namespace enroll
