#pragma once

// The function of the start-up thread: reads the configuration and scans the storage tree through g_FileMan,
// if that is set. The argument is not used; the result is null.
void* read_conf_thread(void* unused);

// Runs read_conf_thread in a new thread and waits for it. When the system cannot start a thread, the function
// runs in the caller's thread.
void runStartUpThread();
