// floor ROOT COUNT BYTES
//
// Does the least work that a list of COUNT results below ROOT needs. It reads every directory once. For every
// listed file it calls fstatat once, relative to the open directory, and writes one row through a buffer. It
// writes BYTES bytes in total. It stores nothing and looks nothing up. All rows have the same text.

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

enum { OUTPUT_SIZE = 65536, LISTING_SIZE = 32768, LONGEST_NAME = 256 };

// The kernel's record of a directory entry.
struct entry {
    unsigned long long inode;
    long long offset;
    unsigned short size;
    unsigned char type;
    char name[];
};

static char output[OUTPUT_SIZE];
static size_t pending;
static char row[OUTPUT_SIZE];
static size_t row_size;
static size_t left; // bytes still to be written
static long newest; // the result is used, so that the compiler cannot remove the call of fstatat

static void flush(void) {
    for (size_t done = 0; done < pending;) {
        const ssize_t count = write(STDOUT_FILENO, output + done, pending - done);
        if (count < 0)
            exit(EXIT_FAILURE);
        done += (size_t)count;
    }
    pending = 0;
}

static void put(size_t size) {
    if (size > left)
        size = left;
    if (pending + size > OUTPUT_SIZE)
        flush();
    memcpy(output + pending, row, size);
    pending += size;
    left -= size;
}

static int is_result(const char* name) {
    const size_t length = strlen(name);
    return length > 5 && memcmp(name + length - 5, ".html", 5) == 0;
}

static void list_file(int directory, const char* name) {
    struct stat status;
    if (fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && status.st_ctime > newest)
        newest = status.st_ctime;
    put(row_size);
}

// The names of the subdirectories, one after the other. Each name ends with a zero byte.
struct names {
    char* text;
    size_t size, space;
};

static void keep(struct names* names, const char* name) {
    const size_t size = strlen(name) + 1;
    if (names->size + size > names->space) {
        names->space = 2 * names->space + LONGEST_NAME;
        names->text = realloc(names->text, names->space);
        if (names->text == NULL)
            exit(EXIT_FAILURE);
    }
    memcpy(names->text + names->size, name, size);
    names->size += size;
}

static void walk(int parent, const char* path) {
    static char listing[LISTING_SIZE];
    struct names below = {NULL, 0, 0};
    const int directory = openat(parent, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directory < 0)
        return;
    long size;
    while ((size = syscall(SYS_getdents64, directory, listing, sizeof listing)) > 0) {
        for (long at = 0; at < size;) {
            const struct entry* const entry = (const struct entry*)(listing + at);
            at += entry->size;
            if (entry->type == DT_DIR && strcmp(entry->name, ".") != 0 && strcmp(entry->name, "..") != 0)
                keep(&below, entry->name);
            else if (entry->type == DT_REG && is_result(entry->name))
                list_file(directory, entry->name);
        }
    }
    for (size_t at = 0; at < below.size; at += strlen(below.text + at) + 1)
        walk(directory, below.text + at);
    free(below.text);
    close(directory);
}

int main(int count, char** arguments) {
    if (count != 4)
        return 64;
    const size_t files = strtoul(arguments[2], NULL, 10);
    left = strtoul(arguments[3], NULL, 10);
    row_size = files == 0 ? 0 : left / files;
    if (row_size > sizeof row)
        return 64;
    memset(row, 'x', sizeof row);
    walk(AT_FDCWD, arguments[1]);
    while (left > 0)
        put(left < sizeof row ? left : sizeof row);
    flush();
    return newest == 1;
}
