// measure ROUNDS NAME TREE [VARIABLE=VALUE...] PROGRAM [ARGUMENT...] [-- NAME TREE ...]...
//
// Runs the programs in turn, ROUNDS times, each with its TREE mounted on /home. Prints one line for each
// program, separated by tabs: name, median CPU time and median wall time in microseconds, least CPU time,
// largest resident set in KiB, median number of page faults, bytes written.
//
// This program reads the output of the others from a pipe, like a web server. So the figures include the cost
// of writing to the pipe, but not the time of the reader. CPU time is the user and system time of the process
// from fork to exit, as wait4 reports it. Wall time says little on a busy machine. This program is static and
// small, because the resident set that wait4 reports begins with that of the parent.

#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { MOST_RIVALS = 32, MOST_ROUNDS = 2000 };

struct rival {
    const char* name;
    const char* tree;
    char** variables; // ends where the program begins
    char** program;   // ends with NULL
    long cpu[MOST_ROUNDS], wall[MOST_ROUNDS], faults[MOST_ROUNDS];
    long resident, bytes;
};

static void fail(const char* what) {
    fprintf(stderr, "measure: %s: %s\n", what, strerror(errno));
    exit(EXIT_FAILURE);
}

static long microseconds(struct timeval time) {
    return time.tv_sec * 1000000L + time.tv_usec;
}

static long now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000L + time.tv_nsec / 1000;
}

static void become(const struct rival* rival, const int output[2]) {
    char** environment = rival->variables;
    char* const saved = *rival->program;
    if (dup2(output[1], STDOUT_FILENO) < 0)
        fail("dup2");
    // The environment has only these variables. A web server passes the request in the same way.
    char* variables[64];
    size_t count = 0;
    while (environment != rival->program && count < 63)
        variables[count++] = *environment++;
    variables[count] = NULL;
    execvpe(saved, rival->program, variables);
    fail(saved);
}

static long drain(int output) {
    static char buffer[65536];
    long total = 0;
    ssize_t count;
    while ((count = read(output, buffer, sizeof buffer)) > 0)
        total += count;
    return total;
}

static void run(struct rival* rival, int round) {
    int output[2];
    if (mount(rival->tree, "/home", NULL, MS_BIND, NULL) != 0)
        fail(rival->tree);
    if (pipe2(output, O_CLOEXEC) < 0)
        fail("pipe");
    const long start = now();
    const pid_t child = fork();
    if (child < 0)
        fail("fork");
    if (child == 0)
        become(rival, output);
    close(output[1]);
    rival->bytes = drain(output[0]);
    close(output[0]);
    int status;
    struct rusage usage;
    if (wait4(child, &status, 0, &usage) < 0)
        fail("wait4");
    if (umount2("/home", MNT_DETACH) != 0)
        fail("umount");
    if (status != 0) {
        fprintf(stderr, "measure: %s ended with status %d\n", rival->name, status);
        exit(EXIT_FAILURE);
    }
    rival->wall[round] = now() - start;
    rival->cpu[round] = microseconds(usage.ru_utime) + microseconds(usage.ru_stime);
    rival->faults[round] = usage.ru_minflt;
    if (usage.ru_maxrss > rival->resident)
        rival->resident = usage.ru_maxrss;
}

static int compare(const void* left, const void* right) {
    const long a = *(const long*)left, b = *(const long*)right;
    return (a > b) - (a < b);
}

static long median(long* values, int count) {
    qsort(values, (size_t)count, sizeof *values, compare);
    return values[count / 2];
}

// Reads one rival from the arguments and returns the arguments after it.
static char** parse(struct rival* rival, char** argument) {
    rival->name = *argument++;
    if (*argument == NULL)
        fail("no tree");
    rival->tree = *argument++;
    rival->variables = argument;
    while (*argument != NULL && strchr(*argument, '=') != NULL)
        ++argument;
    rival->program = argument;
    while (*argument != NULL && strcmp(*argument, "--") != 0)
        ++argument;
    if (argument == rival->program)
        fail("no program");
    if (*argument != NULL)
        *argument++ = NULL;
    return argument;
}

int main(int count, char** arguments) {
    static struct rival rivals[MOST_RIVALS];
    const int rounds = count > 2 ? atoi(arguments[1]) : 0;
    if (rounds < 1 || rounds > MOST_ROUNDS) {
        fprintf(stderr,
                "usage: measure ROUNDS NAME TREE [VARIABLE=VALUE...] PROGRAM [ARGUMENT...] [-- ...]\n");
        return 64;
    }
    int competing = 0;
    for (char** rest = arguments + 2; *rest != NULL && competing < MOST_RIVALS;)
        rest = parse(&rivals[competing++], rest);
    // The first round only warms the caches.
    for (int round = -1; round < rounds; ++round)
        for (int at = 0; at < competing; ++at)
            run(&rivals[at], round < 0 ? 0 : round);
    for (int at = 0; at < competing; ++at) {
        struct rival* const rival = &rivals[at];
        const long cpu = median(rival->cpu, rounds);
        printf("%s\t%ld\t%ld\t%ld\t%ld\t%ld\t%ld\n", rival->name, cpu, median(rival->wall, rounds),
               rival->cpu[0], rival->resident, median(rival->faults, rounds), rival->bytes);
    }
    return 0;
}
