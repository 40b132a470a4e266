#include "cgi/staging/SignOfLife.h"

#include <sys/stat.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>

#include "common/SignalHandler.h"

namespace {

// The descriptor for the handler, or -1. It is set only while the timer runs.
volatile std::sig_atomic_t g_lock = -1;

void touch(int /*signalNumber*/) {
    const int saved = errno;
    ::futimens(g_lock, nullptr);
    errno = saved;
}

void setTimer(std::chrono::seconds interval) {
    const timeval every = {static_cast<time_t>(interval.count()), 0};
    const itimerval timer = {every, every};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

SignOfLife::SignOfLife(int lock) {
    g_lock = lock;
    touch(0);
    setSignalHandler(SIGALRM, &touch);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    setTimer(kInterval);
}

SignOfLife::~SignOfLife() {
    setTimer(std::chrono::seconds(0));
    g_lock = -1;
}
