#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace tool {

/// Turns Ctrl-C (SIGINT), SIGTERM and the end of the terminal (SIGHUP) into an event, so that a
/// tool can finish what it has begun. The same signal a second time ends the process at once.
///
/// While one lives, a reader that goes away (SIGPIPE) does not end the process either. At most one
/// at a time, made on the thread that turns its events; its end restores what was before.
class StopSignals : public QObject {
    Q_OBJECT

public:
    StopSignals();
    ~StopSignals() override;

    /// Whether one came. For loops that turn no events; may be called from any thread.
    static bool requested();

Q_SIGNALS:
    /// Sent once, on the object's thread.
    void stopRequested();

private:
    struct Previous;

    void tell();

    std::unique_ptr<Previous> previous;
    QSocketNotifier* notifier = nullptr;
};

} // namespace tool
