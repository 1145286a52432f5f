#include "common/command_line.h"

#include "common/console.h"

#include <QCoreApplication>

namespace tool {

using namespace Qt::StringLiterals;

QString version() {
    return QStringLiteral(LUMENO_VERSION);
}

CommandLine::CommandLine(Console& toolConsole, const QString& description) : console(toolConsole) {
    parser.setApplicationDescription(description);
    parser.addOption({{u"h"_s, u"help"_s}, u"Shows this help and ends."_s});
    parser.addOption({{u"v"_s, u"version"_s}, u"Shows the version and ends."_s});
}

void CommandLine::addArgument(const QString& name, const QString& description) {
    argumentNames.append(name);
    parser.addPositionalArgument(name, description);
}

void CommandLine::addFurtherArguments(const QString& name, const QString& description) {
    takesFurtherArguments = true;
    parser.addPositionalArgument(name, description, u'[' + name + u"...]"_s);
}

void CommandLine::addSwitch(const QString& name, const QString& description) {
    parser.addOption({name, description});
}

void CommandLine::addText(const QString& name, const QString& valueName,
                          const QString& description) {
    parser.addOption({name, description, valueName});
}

void CommandLine::addNumber(const QString& name, const QString& valueName,
                            const QString& description, qint64 least, qint64 most) {
    parser.addOption({name, description, valueName});
    ranges.insert(name, {least, most});
}

std::optional<int> CommandLine::read(const QStringList& arguments) {
    const bool understood = parser.parse(arguments);
    // Somebody who asks for help may have got the rest wrong.
    if (parser.isSet(u"help"_s)) {
        // The name alone, however the tool was started.
        console.sayText(
            parser.helpText().replace(QCoreApplication::arguments().value(0) + u" [options]"_s,
                                      console.toolName() + u" [options]"_s));
        return Succeeded;
    }
    if (parser.isSet(u"version"_s)) {
        console.say(console.toolName() + u' ' + version());
        return Succeeded;
    }
    const QString wrong = understood ? complaint() : parser.errorText();
    if (wrong.isEmpty())
        return std::nullopt;
    return refuse(wrong);
}

int CommandLine::refuse(const QString& sentence) {
    console.complain(sentence);
    return WrongUse;
}

QString CommandLine::argument(const QString& name) const {
    return parser.positionalArguments().value(argumentNames.indexOf(name));
}

QStringList CommandLine::furtherArguments() const {
    return parser.positionalArguments().mid(argumentNames.size());
}

bool CommandLine::isSet(const QString& name) const {
    return parser.isSet(name);
}

std::optional<QString> CommandLine::text(const QString& name) const {
    if (!parser.isSet(name))
        return std::nullopt;
    return parser.value(name);
}

std::optional<qint64> CommandLine::number(const QString& name) const {
    if (!parser.isSet(name))
        return std::nullopt;
    return parser.value(name).toLongLong();
}

/// What is wrong with arguments and numbers that the parser took; empty when nothing is.
QString CommandLine::complaint() const {
    const QStringList given = parser.positionalArguments();
    if (given.size() < argumentNames.size())
        return argumentNames.at(given.size()) + u" is missing; --help shows how to use it."_s;
    if (given.size() > argumentNames.size() && !takesFurtherArguments)
        return u"\"%1\" is one argument too many."_s.arg(given.at(argumentNames.size()));
    for (auto range = ranges.begin(); range != ranges.end(); ++range) {
        for (const QString& value : parser.values(range.key())) {
            bool isNumber = false;
            const qint64 number = value.toLongLong(&isNumber);
            if (!isNumber || number < range->least || number > range->most)
                return u"--%1 takes a whole number from %2 to %3, not \"%4\"."_s.arg(range.key())
                    .arg(range->least)
                    .arg(range->most)
                    .arg(value);
        }
    }
    return {};
}

} // namespace tool
