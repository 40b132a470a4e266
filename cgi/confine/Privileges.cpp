#include "cgi/confine/Privileges.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>

#include "common/Report.h"

bool privileges::drop() {
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    const uid_t user = ::getuid();
    const gid_t group = ::getgid();
    // The group first: the user may not change it afterwards.
    if ((::getegid() != group && ::setresgid(group, group, group) != 0) ||
        (::geteuid() != user && ::setresuid(user, user, user) != 0)) {
        reportErrno("drop", "the identity of the program's file", errno);
        return false;
    }
    return true;
}
