#pragma once

#include <chrono>

// Touches a lock file every second as long as this lives, whatever the process waits for: others see by the
// file's time that its holder works. It is a timer's signal, so that it ends with a process that is killed or
// stopped, needs no thread, and is not passed on to commands. One at a time in a process.
class SignOfLife {
public:
    static constexpr std::chrono::seconds kInterval{1};

    // lock: stays open as long as this lives.
    explicit SignOfLife(int lock);
    SignOfLife(const SignOfLife&) = delete;
    SignOfLife& operator=(const SignOfLife&) = delete;
    ~SignOfLife();
};
