#pragma once

#include <csignal>

// Calls handler when the signal arrives. An interrupted system call is restarted: without that, output would
// be lost, because stdio does not continue a write after EINTR.
inline void setSignalHandler(int signalNumber, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signalNumber, &action, nullptr);
}
