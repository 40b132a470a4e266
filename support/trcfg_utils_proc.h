/* A log with levels, a clock, waiting, and processes, for the programs of the instrument that are not part of
 * the result manager. Usable from C99 and C++; link libtrcfg_utils.a. On failure a function returns -1 or a
 * null pointer, and logs the failure. Nothing here is safe for use by several threads at once. */
#pragma once

#include <sys/time.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    /* Bytes that the caller of tr_get_tmpnam provides. */
    TR_TMPNAM_SIZE = 20,
    /* Bytes that the caller of tr_pid2basename provides. */
    TR_BASENAME_SIZE = 256,
    /* Bytes that the caller of tr_pid2argv provides. */
    TR_ARGV_SIZE = 4096
};

/* ---- Log ---- */

/* The highest level that is logged. A call with a higher level, or below 0, writes nothing. The initial value
 * is 0: only failures are logged. */
extern int __tarn_log_level;
/* Level names by number: "err", "wrn", "inf", "dbg0" to "dbg4". */
extern const char* const __tarn_log_prefix[8];
/* 1 after a trcfg_open for the system log, until trcfg_close. */
extern int __tarn_use_syslog;
/* If not 0, every line contains the low 24 bits of the processor clock. */
extern int tarnlog_with_clock;
/* Source file, function and line of the call that is logged. The call site sets them just before the call. */
extern const char* __tarn_log_file;
extern const char* __tarn_log_func;
extern int __tarn_log_line;

/* If useSyslog is not 0, sends the log to the system log (facility user) under the name `ident`, of which a
 * copy of at most 255 bytes is kept. For a null ident the name is empty and the process id is added. With any
 * useSyslog, a non-empty environment variable "tarnlog_with_clock" sets the flag of that name to its decimal
 * value. */
void trcfg_open(int useSyslog, const char* ident);

/* Sends the log to standard error again. */
void trcfg_close(void);

/* Returns the number of the level with exactly this name, or -1 for a null or unknown name. */
int tarnlog_str2level(const char* name);

/* Makes `name` the highest level that is logged, and returns its number. For an unknown name it returns -1,
 * and nothing is logged any more. */
int tarnlog_set_level(const char* name);

/* Writes one line for the call site in the three variables above, at any level. `level` is limited to 0..8,
 * and the message to 255 bytes. errno does not change. Call it through TARN_LOG. */
void __tarnlog_internal(int level, const char* fmt, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 2, 3)))
#endif
    ;

/* The part at the call site: returns 1 and sets the three variables if `level` is logged. */
static inline int tarnlog_enter(int level, const char* file, const char* func, int line) {
    if (level < 0 || level > __tarn_log_level)
        return 0;
    __tarn_log_file = file;
    __tarn_log_func = func;
    __tarn_log_line = line;
    return 1;
}

/* Logs a printf message with the given source and function name. The arguments are evaluated only if the
 * level is logged. */
#define TARN_LOG_AS(source, func, level, ...)                                                                \
    do {                                                                                                     \
        if (tarnlog_enter((level), (source), (func), __LINE__))                                              \
            __tarnlog_internal((level), __VA_ARGS__);                                                        \
    } while (0)

/* The same with the source and function name of the call. */
#define TARN_LOG(level, ...) TARN_LOG_AS(__FILE__, __func__, level, __VA_ARGS__)

/* ---- Time and input ---- */

/* Reads the monotonic clock into `out` (may be null) as seconds and microseconds. Returns the seconds. */
time_t tr_get_clock(struct timeval* out);

/* Waits until `fd` (any number, also above FD_SETSIZE) is readable or at its end. With a null time-out it
 * polls once. Signals do not end the wait. Returns 1 if readable, 0 after the time-out, -1 for a descriptor
 * that is not open or a negative time-out. */
int tr_read_wait(int fd, const struct timeval* timeout);

/* Writes an unused name "/tmp/.tr_<number>" into `buf` (TR_TMPNAM_SIZE bytes). It creates no file: open the
 * name with O_EXCL. Returns `buf`, also if it is null. */
char* tr_get_tmpnam(char* buf);

/* ---- Processes ---- */

/* Finds the processes whose executable, or whose first argument, has the base name of `program`. An
 * executable that was replaced or removed counts under its old name. If the executable is not readable, only
 * the first argument counts. Stores at most `max` ids and returns their number. Returns -1 without a program
 * name or without /proc. */
int tr_get_pidarr(const char* program, pid_t* out, int max);

/* Returns the first of them, or -1 if there is none. */
pid_t tr_get_pidof(const char* program);

/* Writes the base name of a process's executable into `buf` (TR_BASENAME_SIZE bytes). Returns 0. Returns -1
 * if there is no such process or its executable is not readable. */
int tr_pid2basename(int pid, char* buf);

/* Writes the arguments of a process, each with its NUL, and one more NUL into `buf`. It writes at most
 * TR_ARGV_SIZE bytes and cuts the rest off. Returns the number of bytes before the last NUL (0 for a process
 * without arguments), or -1 on failure. */
int tr_pid2argv(int pid, char* buf);

/* Stops and reaps the child `*pid`. If `doKill` is set it first sends SIGTERM. Then it waits at most
 * `timeoutUs` microseconds, and if `doKill` is set it then sends SIGSEGV. Returns 0 and sets `*pid` to 0 as
 * soon as the child is gone, or -1 if it still runs. Returns 0 at once for a null pointer or an id below 1.
 * Logs at `level`, with one line for each second of waiting. */
int tr_proc_killwait(int level, pid_t* pid, int doKill, int timeoutUs);

/* For a child after fork: runs the program `app`. Its arguments are its base name and the words of `args`
 * (may be null), which are separated by blanks; there is no quoting. Returns only on failure, with 0. Logs at
 * `level`. */
int tr_proc_invoke(int level, const char* app, const char* args);

/* For a child after fork: closes every descriptor except standard error and the `keepCount` int descriptors
 * that follow. Redirects standard input and output to /dev/null unless they are among these. The system log
 * can still be used. Returns 0, or -1 if /dev/null cannot be opened. Logs at `level`. */
int tr_proc_clean(int level, int keepCount, ...);

#ifdef __cplusplus
}
#endif
