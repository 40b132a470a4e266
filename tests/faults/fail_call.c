// A library to preload into the program. It makes call number FAULT_NUMBER of the C library function
// FAULT_CALL fail with FAULT_ERROR, and then writes a byte to the file FAULT_MARK as a sign. Calls of child
// processes do not fail.

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static const char* failing_call;
static long calls_left;
static int error_number;
static int mark;     // opened before the program confines itself
static int is_short; // the call does half of its work and does not fail

__attribute__((constructor)) static void read_environment(void) {
    const char *number = getenv("FAULT_NUMBER"), *error = getenv("FAULT_ERROR");
    unsetenv("LD_PRELOAD");
    failing_call = getenv("FAULT_CALL");
    mark = (int)syscall(SYS_openat, AT_FDCWD, getenv("FAULT_MARK"), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    calls_left = number == NULL ? 0 : atol(number);
    error_number = error == NULL ? 0 : atoi(error);
    is_short = error_number == 0;
}

static int fails(const char* name) {
    if (failing_call == NULL || strcmp(name, failing_call) != 0 || --calls_left != 0)
        return 0;
    syscall(SYS_write, mark, "x", 1);
    errno = error_number;
    return 1;
}

// Calls with large-file support have a second name. This file is compiled with that name.
#define REAL(name, symbol) ((__typeof__(&(name)))dlsym(RTLD_NEXT, symbol))
#define WRAP_AS(symbol, name, result, failure, parameters, arguments)                                        \
    result name parameters {                                                                                 \
        return fails(#name) ? (failure) : REAL(name, symbol) arguments;                                      \
    }
#define WRAP(name, result, parameters, arguments) WRAP_AS(#name, name, result, -1, parameters, arguments)
#define WRAP64(name, result, parameters, arguments)                                                          \
    WRAP_AS(#name "64", name, result, -1, parameters, arguments)
#define WRAP_OPEN(name, parameters, arguments)                                                               \
    int name parameters {                                                                                    \
        va_list list;                                                                                        \
        va_start(list, flags);                                                                               \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(list, mode_t) : 0;                               \
        va_end(list);                                                                                        \
        return fails(#name) ? -1 : REAL(name, #name "64") arguments;                                         \
    }

WRAP_OPEN(open, (const char* path, int flags, ...), (path, flags, mode))
WRAP_OPEN(openat, (int fd, const char* path, int flags, ...), (fd, path, flags, mode))
WRAP(getdents64, ssize_t, (int fd, void* buffer, size_t size), (fd, buffer, size))
WRAP(read, ssize_t, (int fd, void* buffer, size_t size), (fd, buffer, size))
WRAP64(fstatat, int, (int fd, const char* path, struct stat* to, int flags), (fd, path, to, flags))
WRAP64(lstat, int, (const char* path, struct stat* to), (path, to))
WRAP64(fstat, int, (int fd, struct stat* to), (fd, to))
WRAP(access, int, (const char* path, int mode), (path, mode))
WRAP(poll, int, (struct pollfd * fds, nfds_t count, int wait), (fds, count, wait))
WRAP(flock, int, (int fd, int operation), (fd, operation))
WRAP(futimens, int, (int fd, const struct timespec times[2]), (fd, times))
WRAP(mkdir, int, (const char* path, mode_t mode), (path, mode))
WRAP(rmdir, int, (const char* path), (path))
WRAP(unlink, int, (const char* path), (path))
WRAP(rename, int, (const char* from, const char* to), (from, to))
WRAP(chmod, int, (const char* path, mode_t mode), (path, mode))
WRAP(dup2, int, (int from, int to), (from, to))
WRAP64(sendfile, ssize_t, (int to, int from, off_t* offset, size_t size), (to, from, offset, size))
WRAP(system, int, (const char* command), (command))
WRAP(fork, pid_t, (void), ())
WRAP(close, int, (int fd), (fd))
WRAP(waitpid, pid_t, (pid_t child, int* status, int options), (child, status, options))
WRAP_AS("pthread_create", pthread_create, int, error_number,
        (pthread_t * thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument),
        (thread, attributes, start, argument))

ssize_t write(int fd, const void* text, size_t size) {
    const int hit = fd != STDERR_FILENO && fails("write");
    return hit && !is_short ? -1 : REAL(write, "write")(fd, text, hit ? (size + 1) / 2 : size);
}

extern void* __libc_malloc(size_t size);

void* malloc(size_t size) {
    return fails("malloc") ? NULL : __libc_malloc(size);
}

// No pause: a delivery waits before its clean-up, but here nobody reads in that time.
int clock_nanosleep(clockid_t clock, int flags, const struct timespec* time, struct timespec* rest) {
    (void)clock, (void)flags, (void)time, (void)rest;
    return 0;
}

int nanosleep(const struct timespec* time, struct timespec* rest) {
    return clock_nanosleep(CLOCK_MONOTONIC, 0, time, rest);
}
