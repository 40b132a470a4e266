// Preloaded into the program: when it first reads a directory, this tries what a request must not do, as code
// would that a parser's fault let in, and writes a line "tried WHAT: errno NUMBER" each to standard error.
// Children are left alone.

#include <arpa/inet.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

static const char* const stored = "/home/victim.html";
static int is_spinning;
static char other_area[32];

__attribute__((constructor)) static void start(void) {
    unsetenv("LD_PRELOAD");
    is_spinning = getenv("TRY_TO_SPIN") != NULL;
    snprintf(other_area, sizeof other_area, "%s", getenv("TRY_AREA"));
}

static int opened(const char* path, int flags) {
    const int fd = open(path, flags, 0600);
    if (fd >= 0)
        close(fd);
    return fd;
}

static int connected(void) {
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons(9)};
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connect(socket(AF_INET, SOCK_STREAM, 0), (struct sockaddr*)&address, sizeof address);
}

// The child's status is the reason why it could not become a shell.
static int executed(void) {
    int status = 0;
    const pid_t child = fork();
    if (child == 0) {
        execl("/usr/bin/id", "id", (char*)NULL);
        _exit(errno);
    }
    waitpid(child, &status, 0);
    errno = WEXITSTATUS(status);
    return errno == 0 ? 0 : -1;
}

static void tell(const char* what, int result) {
    fprintf(stderr, "tried %s: errno %d\n", what, result < 0 ? errno : 0);
}

static void try_all(void) {
    tell("write a result", opened(stored, O_WRONLY));
    tell("cut a result", truncate(stored, 0));
    tell("remove a result", unlink(stored));
    tell("rename a result", rename(stored, "/home/other.html"));
    tell("move a result away", rename(stored, "/tmp/other.html"));
    tell("create a result", opened("/home/new.html", O_WRONLY | O_CREAT));
    tell("make a directory in the storage", mkdir("/home/new", 0700));
    tell("make a link in the storage", symlink("/etc", "/home/link"));
    tell("read a file elsewhere", opened("/etc/debian_version", O_RDONLY));
    tell("read a directory elsewhere", opened("/root", O_RDONLY | O_DIRECTORY));
    tell("run a program", executed());
    tell("connect", connected());
    tell("create a file in /tmp", opened("/tmp/new", O_WRONLY | O_CREAT));
    tell("write a file in /tmp", opened("/tmp/kept", O_WRONLY));
    tell("remove a file in /tmp", unlink("/tmp/kept"));
    char path[64];
    snprintf(path, sizeof path, "%s/kept", other_area);
    tell("write in another staging area", opened(path, O_WRONLY));
    tell("move a file out of another staging area", rename(path, "/tmp/other"));
    tell("remove a file in another staging area", unlink(path));
    snprintf(path, sizeof path, "%s/new", other_area);
    tell("make a directory in another staging area", mkdir(path, 0700));
}

ssize_t getdents64(int fd, void* buffer, size_t size) {
    static int is_done;
    if (!is_done) {
        is_done = 1;
        while (is_spinning) {
        }
        try_all();
    }
    return ((__typeof__(&getdents64))dlsym(RTLD_NEXT, "getdents64"))(fd, buffer, size);
}
