/* Safe file-system operations, for the programs of the instrument that are not part of the result manager.
 * Usable from C99 and C++; link libtrcfg_utils.a. Each function returns 0 or -1. It logs (trcfg_utils_proc.h)
 * a success at level 2, and a failure at level 0 with the number of the failed step. A path that is null or
 * empty is a failure. */
#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Makes the directory that contains `path`, and its parents, with `mode`. An object in the way that is
 * neither a directory nor a link to one is removed first. Several processes may make the same directory at
 * once. */
int tr_mkdir_parent(const char* path, mode_t mode);

/* The same for `path` itself and its parents. */
int tr_mkdir(const char* path, mode_t mode);

/* Removes a directory tree of any depth. With `force` it removes any object. Without `force` files stay, and
 * so do the directories that contain them. Symbolic links are removed, never followed. It continues after a
 * failure. A missing path is not a failure, even if another process removed it. It refuses the root directory
 * and names that end in "." or "..". */
int tr_rmdir(const char* path, int force);

/* Makes a named pipe at `path` and replaces any object there. Missing parents are made with mode 0644. Only
 * root can create files in such a directory: for any other user the call fails unless the parents exist. */
int tr_mkfifo(const char* path, mode_t mode);

/* Makes the symbolic link `link` to `target` and replaces any object at `link`. Parents as for tr_mkfifo. */
int tr_mksymlink(const char* target, const char* link);

/* Copies the regular file `src` to `dst` and replaces any object there. The copy is written beside `dst` as
 * ".tr_<number>", flushed to disk and then renamed: an old file stays until the new one is complete, and
 * stays if any step fails. Parents as for tr_mkfifo. Refuses a call that would remove `src` itself, because
 * it is `dst` or below it. */
int tr_install_file(const char* src, const char* dst, mode_t mode);

/* Creates or empties the regular file `path`, writes `text` into it (may be null) and flushes it to disk. */
int tr_newmark_file(const char* path, const char* text, mode_t mode);

/* Reads, then writes a kernel parameter file. It reads at most `*readLen` bytes if `readBuf` is not null and
 * `*readLen` is not 0, and stores the number of bytes in `*readLen`. It writes if `writeBuf` is not null and
 * `writeLen` is not 0. */
int tr_sysctl_readwrite(const char* path, void* readBuf, size_t* readLen, const void* writeBuf,
                        size_t writeLen);

#ifdef __cplusplus
}
#endif
