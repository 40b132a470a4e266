#include "cgi/delivery/Termination.h"

#include <array>
#include <cerrno>
#include <csignal>

#include "common/SignalHandler.h"

namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

// The process group that receives signals. Only passOnTo sets it; the handler reads it.
volatile std::sig_atomic_t g_child = 0;
// The last signal that arrived, or 0.
volatile std::sig_atomic_t g_signal = 0;

void passOn(int signalNumber) {
    const int saved = errno;
    g_signal = signalNumber;
    if (g_child > 0)
        ::kill(-g_child, signalNumber);
    errno = saved;
}

void setHandlers(void (*handler)(int)) {
    for (const int signalNumber : kSignals)
        setSignalHandler(signalNumber, handler);
}

} // namespace

TerminationDeferral::TerminationDeferral() {
    g_signal = 0;
    setHandlers(&passOn);
}

TerminationDeferral::~TerminationDeferral() {
    setHandlers(SIG_DFL);
}

void TerminationDeferral::passOnTo(pid_t child) {
    g_child = child;
    if (child > 0 && g_signal != 0)
        ::kill(-child, g_signal);
}
