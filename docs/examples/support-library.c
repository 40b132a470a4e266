/* Keeps a helper program running beside a named pipe, and tidies up behind it. */
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <trcfg_utils_filesys.h>
#include <trcfg_utils_proc.h>

/* Starts `app` without the descriptors of this program. */
static pid_t start(const char* app, const char* args) {
    const pid_t pid = fork();
    if (pid == 0) {
        tr_proc_clean(3, 0);
        tr_proc_invoke(3, app, args);
        _exit(127);
    }
    return pid;
}

int main(void) {
    const struct timeval shortly = {0, 20000};
    char name[TR_BASENAME_SIZE] = "";
    pid_t helper;
    int commands;
    int tries;

    trcfg_open(0, NULL);       /* standard error; trcfg_open(1, "name") for the system log */
    tarnlog_set_level("dbg0"); /* failures, successes, and what the calls below log at level 3 */

    if (tr_mkdir("run", 0755) != 0 || tr_mkfifo("run/commands", 0600) != 0)
        return 1;
    commands = open("run/commands", O_RDWR);
    TARN_LOG_AS("example", __func__, 2, "starting the helper");
    helper = start("/bin/sleep", "30");
    for (tries = 0; tries < 100 && strcmp(name, "sleep") != 0; ++tries) {
        if (tr_read_wait(commands, &shortly) == 1)
            TARN_LOG_AS("example", __func__, 2, "a command has come");
        tr_pid2basename(helper, name);
    }

    tr_proc_killwait(3, &helper, 1, 500000);
    tr_install_file("none", "run/copy", 0644);
    tr_rmdir("run", 1);
    trcfg_close();
    return helper == 0 ? 0 : 1;
}

/* Says:
 * inf(trcfg_utils_filesys:.... tr_mkdir) directory run have been made
 * inf(trcfg_utils_filesys:.... tr_mkfifo) fifo device run/commands have been made
 * inf(example:.... main) starting the helper
 * dbg0(trcfg_utils_proc:.... tr_proc_invoke) run app(/bin/sleep) in proc=N with args(30) ...
 * dbg0(trcfg_utils_proc:.... tr_proc_killwait) kill process(pid=N) by SIGTERM.
 * dbg0(trcfg_utils_proc:.... tr_proc_killwait) process(pid=N) were killed by SIGTERM!
 * dbg0(trcfg_utils_proc:.... tr_proc_killwait) done!
 * err(trcfg_utils_filesys:.... tr_install_file) file "none" --> "run/copy" install failed!(ret=12)
 * inf(trcfg_utils_filesys:.... tr_rmdir) storage path(full_name=run) have been removed
 */
