#pragma once

#include <sys/types.h>

// During its lifetime SIGTERM, SIGINT and SIGHUP do not end the process. A web server that has all bytes of a
// response ends the CGI process at once, and the staged files would stay behind. Children do not inherit
// this, because exec resets signal handlers: they can still be killed.
class TerminationDeferral {
public:
    TerminationDeferral();
    TerminationDeferral(const TerminationDeferral&) = delete;
    TerminationDeferral& operator=(const TerminationDeferral&) = delete;
    ~TerminationDeferral();

    // Passes signals on to the process group that this child leads, so that its work stops when nobody waits
    // for the answer any more. A signal that came earlier is passed on too. 0 means no child.
    static void passOnTo(pid_t child);
};
