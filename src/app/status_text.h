#pragma once

#include <QString>
#include <QStringBuilder>

/// A line of this program with a text of somebody else in it: a driver's message, a service's
/// error. That text may be anything and of any length; ours around it is short.
struct StatusText {
    QString beginning;
    QString foreign;
    QString ending;

    QString whole() const { return beginning % foreign % ending; }
    bool operator==(const StatusText&) const = default;
};
