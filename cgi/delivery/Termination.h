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

    // Signals go on to every process of the group that this child leads, so that a request nobody waits for
    // any more does not finish its work; also a signal that came before. 0 for no child.
    static void passOnTo(pid_t child);
};
