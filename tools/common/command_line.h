#pragma once

#include <QCommandLineParser>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace tool {

class Console;

/// How a tool's process ends. Tools may have further statuses from 3 on.
enum ExitStatus {
    Succeeded = 0,
    Failed = 1,   ///< after a complaint that says what
    WrongUse = 2, ///< the command line was refused
};

/// The version of this tree, as "0.4.0".
QString version();

/// A tool's command line: named arguments that must all be there, in their order, and options. It
/// always has --help (-h) and --version (-v).
///
/// Use: describe the arguments and options, call read(), end with what it returns if that is
/// something, then ask for values.
class CommandLine {
public:
    /// `description`: what the tool does, for --help. The console must outlive this object.
    CommandLine(Console& console, const QString& description);

    /// The next argument, for example "FOLDER".
    void addArgument(const QString& name, const QString& description);
    /// Any number of arguments behind the named ones, also none.
    void addFurtherArguments(const QString& name, const QString& description);
    /// An option without a value, for example "lossless" for --lossless.
    void addSwitch(const QString& name, const QString& description);
    /// An option with any text, shown in the help as "--name VALUENAME".
    void addText(const QString& name, const QString& valueName, const QString& description);
    /// An option with a whole number from `least` to `most`.
    void addNumber(const QString& name, const QString& valueName, const QString& description,
                   qint64 least, qint64 most);

    /// Reads the whole argument list, program path included. Returns the status to end with at
    /// once: Succeeded after help or version went to the standard output, WrongUse after one
    /// sentence about what is wrong went to the standard error. Nothing when the tool may run. To
    /// be called once, while there is an application object.
    std::optional<int> read(const QStringList& arguments);

    /// Complains about a use that only the tool knows to be wrong. Returns WrongUse.
    int refuse(const QString& sentence);

    /// An argument by its name.
    QString argument(const QString& name) const;
    QStringList furtherArguments() const;
    bool isSet(const QString& name) const;
    /// The last value that was given for a text option; nothing without it.
    std::optional<QString> text(const QString& name) const;
    /// The last value that was given for a number option; nothing without it.
    std::optional<qint64> number(const QString& name) const;

private:
    struct Range {
        qint64 least = 0;
        qint64 most = 0;
    };

    QString complaint() const;

    Console& console;
    QCommandLineParser parser;
    QStringList argumentNames;
    bool takesFurtherArguments = false;
    QMap<QString, Range> ranges; ///< of the number options
};

} // namespace tool
