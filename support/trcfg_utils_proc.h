/* Leveled log, clock, waiting and processes, for the programs of the instrument that are not part of the
 * result manager. Usable from C99 and C++; link libtrcfg_utils.a. Functions report failure as -1 or a null
 * pointer and log it themselves. Nothing here is synchronised between threads. */
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

/* Highest level that is logged; a call above it, or below 0, writes nothing. At start 0: failures only. */
extern int __tarn_log_level;
/* Level names by number: "err", "wrn", "inf", "dbg0" to "dbg4". */
extern const char* const __tarn_log_prefix[8];
/* 1 from a trcfg_open that asked for the system log until trcfg_close. */
extern int __tarn_use_syslog;
/* Non-zero: every line carries the low 24 bits of the processor clock. */
extern int tarnlog_with_clock;
/* Source file, function and line of the call being logged; set by the call site just before the call. */
extern const char* __tarn_log_file;
extern const char* __tarn_log_func;
extern int __tarn_log_line;

/* With useSyslog non-zero sends the log to the system log, facility user, under `ident` (a copy is kept, of
 * at most 255 bytes) or, for a null ident, under an empty name and with the process id. In either case a
 * non-empty environment variable "tarnlog_with_clock" sets the flag of that name to its decimal value. */
void trcfg_open(int useSyslog, const char* ident);

/* Goes back from the system log to standard error. */
void trcfg_close(void);

/* Number of the level called `name` (exact match), -1 for a null or unknown name. */
int tarnlog_str2level(const char* name);

/* Logs up to the level called `name` and returns its number; an unknown name gives -1 and silences the log.
 */
int tarnlog_set_level(const char* name);

/* Writes one line about the call site in the three variables above, whatever the current level. `level` is
 * clamped to 0..8, the message cut to 255 bytes. errno stays as it was. Call it through TARN_LOG. */
void __tarnlog_internal(int level, const char* fmt, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 2, 3)))
#endif
    ;

/* The call site's half: true, with the three variables set, when `level` is to be logged. */
static inline int tarnlog_enter(int level, const char* file, const char* func, int line) {
    if (level < 0 || level > __tarn_log_level)
        return 0;
    __tarn_log_file = file;
    __tarn_log_func = func;
    __tarn_log_line = line;
    return 1;
}

/* Logs a printf message under a source and function name of the caller's choice. The arguments are evaluated
 * only when the level is logged. */
#define TARN_LOG_AS(source, func, level, ...)                                                                \
    do {                                                                                                     \
        if (tarnlog_enter((level), (source), (func), __LINE__))                                              \
            __tarnlog_internal((level), __VA_ARGS__);                                                        \
    } while (0)

/* The same under the names of the place where it stands. */
#define TARN_LOG(level, ...) TARN_LOG_AS(__FILE__, __func__, level, __VA_ARGS__)

/* ---- Time and input ---- */

/* Reads the monotonic clock into `out` (may be null), in seconds and microseconds. Returns the seconds. */
time_t tr_get_clock(struct timeval* out);

/* Waits until `fd` (any number, above FD_SETSIZE too) is readable or at its end. A null time-out polls once.
 * Signals do not end the wait. Returns 1 when readable, 0 after the time-out, -1 for a descriptor that is not
 * open or a negative time-out. */
int tr_read_wait(int fd, const struct timeval* timeout);

/* Writes a name "/tmp/.tr_<number>" that no file has yet into `buf` (TR_TMPNAM_SIZE bytes). Nothing is
 * created: open it with O_EXCL. Returns `buf`, null for a null `buf`. */
char* tr_get_tmpnam(char* buf);

/* ---- Processes ---- */

/* Finds the processes whose executable, or whose first argument, has the base name of `program`. Executables
 * that were replaced or removed since count under their old name, those that may not be read only by the
 * first argument. Stores at most `max` ids and returns how many, -1 when there is no program name or no
 * /proc. */
int tr_get_pidarr(const char* program, pid_t* out, int max);

/* The first of them, -1 if there is none. */
pid_t tr_get_pidof(const char* program);

/* Base name of the executable of a process into `buf` (TR_BASENAME_SIZE bytes). Returns 0, or -1 when there
 * is no such process or its executable may not be read. */
int tr_pid2basename(int pid, char* buf);

/* Arguments of a process, each with its NUL, and one more NUL into `buf` (TR_ARGV_SIZE bytes; what does not
 * fit is cut off). Returns the number of bytes before that last NUL (0 for a process that has none), -1 on
 * failure. */
int tr_pid2argv(int pid, char* buf);

/* Stops and reaps the child `*pid`: waits `timeoutUs` microseconds at most, after SIGTERM if `doKill`, and
 * then sends SIGSEGV if `doKill`. Logs at `level`. Returns 0 and sets `*pid` to 0 when the child is gone, -1
 * while it is there; 0 at once for a null pointer or an id below 1. Returns as soon as the child has ended;
 * the log has a line for each second of waiting. */
int tr_proc_killwait(int level, pid_t* pid, int doKill, int timeoutUs);

/* For a child after fork: becomes the program `app`, with its base name and the pieces of `args` (may be
 * null) between blanks as arguments; there is no quoting. Returns only on failure, with 0. Logs at `level`.
 */
int tr_proc_invoke(int level, const char* app, const char* args);

/* For a child after fork: closes every descriptor but standard error and the `keepCount` int descriptors that
 * follow, and points standard input and output at /dev/null unless they are among these. The system log stays
 * usable. Returns 0, or -1 when /dev/null cannot be had. Logs at `level`. */
int tr_proc_clean(int level, int keepCount, ...);

#ifdef __cplusplus
}
#endif
