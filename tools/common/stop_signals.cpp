#include "common/stop_signals.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::array stopSignals = {SIGINT, SIGTERM, SIGHUP};

// What a signal handler may touch.
std::atomic<bool> stopWasRequested = false;
std::atomic<int> eventFile = -1;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void handleStop(int) {
    const int error = errno;
    stopWasRequested = true;
    const std::uint64_t one = 1;
    // Full means that the event is under way already.
    [[maybe_unused]] const auto written = write(eventFile, &one, sizeof one);
    errno = error;
}

} // namespace

struct StopSignals::Previous {
    std::array<struct sigaction, stopSignals.size()> stops{};
    struct sigaction pipe {};
};

StopSignals::StopSignals() : previous(std::make_unique<Previous>()) {
    const int file = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (file < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    eventFile = file;
    stopWasRequested = false;
    notifier = new QSocketNotifier(file, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &StopSignals::tell);

    struct sigaction stop {};
    stop.sa_handler = handleStop;
    stop.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (std::size_t at = 0; at < stopSignals.size(); ++at) {
        sigaction(stopSignals[at], nullptr, &previous->stops[at]);
        // Whoever starts a tool with nohup wants it to outlive the terminal.
        if (stopSignals[at] == SIGHUP && previous->stops[at].sa_handler == SIG_IGN)
            continue;
        sigaction(stopSignals[at], &stop, nullptr);
    }
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &previous->pipe);
}

StopSignals::~StopSignals() {
    for (std::size_t at = 0; at < stopSignals.size(); ++at)
        sigaction(stopSignals[at], &previous->stops[at], nullptr);
    sigaction(SIGPIPE, &previous->pipe, nullptr);
    delete notifier;
    close(eventFile.exchange(-1));
}

bool StopSignals::requested() {
    return stopWasRequested;
}

void StopSignals::tell() {
    notifier->setEnabled(false);
    Q_EMIT stopRequested();
}

} // namespace tool
