#pragma once

#include <QList>
#include <QString>

namespace doctor {

enum class Verdict {
    Good,
    Note,        ///< works as far as can be seen, but worth knowing
    Fault,       ///< keeps the program from doing something
    NotLookedAt, ///< follows from a fault that another finding names
};

/// What one check found. Exactly the faults have a cure, and a fault that only follows from another
/// one is not looked at, so that a reader does one thing at a time.
struct Finding {
    Verdict verdict = Verdict::Good;
    QString subject; ///< what was looked at, for example "USB speed"
    QString text;    ///< what was found, without a full stop
    QString cure;    ///< what to do, a whole sentence
};

using Findings = QList<Finding>;

} // namespace doctor
