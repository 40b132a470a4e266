/* Careful file-system operations, for the programs of the instrument that are not part of the result manager.
 * Usable from C99 and C++; link libtrcfg_utils.a. Each returns 0 or -1 and logs (trcfg_utils_proc.h) success
 * at level 2 and failure at level 0, with the number of the step that failed. Paths may be null or empty:
 * that is a failure. */
#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Makes the directory that contains `path`, and those above it, with `mode`. What stands there and is neither
 * a directory nor a link to one is removed first. Several processes may make the same directory at once. */
int tr_mkdir_parent(const char* path, mode_t mode);

/* The same for `path` itself and what is above it. */
int tr_mkdir(const char* path, mode_t mode);

/* Removes a directory tree, however deep, or with `force` anything. Without `force` files stay, and so do the
 * directories that hold them. Symbolic links are removed, never followed. Carries on after a failure.
 * Nothing there is no failure, whoever removed it. Refuses the root directory and names that end in "." or
 * "..". */
int tr_rmdir(const char* path, int force);

/* Makes a named pipe in place of what stands at `path`. Missing directories above are made with mode 0644,
 * which only root can fill: any other user fails here unless they exist. */
int tr_mkfifo(const char* path, mode_t mode);

/* Makes the symbolic link `link` to `target` in place of what stands at `link`. Directories as for tr_mkfifo.
 */
int tr_mksymlink(const char* target, const char* link);

/* Copies the regular file `src` into a new file `dst` in place of what stands there. The copy is made beside
 * `dst`, as ".tr_<number>", flushed to disk and then renamed: an old file stands there until the new one is
 * whole, and stays when anything fails. Directories as for tr_mkfifo. Refuses to remove `src` itself (it is
 * `dst` or lies below it). */
int tr_install_file(const char* src, const char* dst, mode_t mode);

/* Creates or empties the regular file `path`, writes `text` into it (may be null) and flushes it to disk. */
int tr_newmark_file(const char* path, const char* text, mode_t mode);

/* Reads, then writes a kernel parameter file. Reads when `readBuf` is given and `*readLen` is not 0: at most
 * that many bytes, whose number goes back into `*readLen`. Writes when `writeBuf` is given and `writeLen` is
 * not 0. */
int tr_sysctl_readwrite(const char* path, void* readBuf, size_t* readLen, const void* writeBuf,
                        size_t writeLen);

#ifdef __cplusplus
}
#endif
