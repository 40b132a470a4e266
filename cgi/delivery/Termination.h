#pragma once

#include <sys/types.h>

// While this lives, SIGTERM, SIGINT and SIGHUP do not end the process: a web server that has all bytes of a
// response ends the CGI process at once, and what the delivery staged would stay behind. Children do not
// inherit it (exec resets handlers), they stay killable.
class TerminationDeferral {
public:
    TerminationDeferral();
    TerminationDeferral(const TerminationDeferral&) = delete;
    TerminationDeferral& operator=(const TerminationDeferral&) = delete;
    ~TerminationDeferral();

    // A signal that arrives from now on goes on to the child too, so that a request nobody waits for any more
    // does not finish its work; 0 for no child.
    static void passOnTo(pid_t child);
};
