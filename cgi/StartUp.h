#pragma once

// The start-up thread's function: reads the configuration and scans the storage tree through g_FileMan, when
// there is one. Takes nothing, returns null.
void* read_conf_thread(void* unused);

// Runs read_conf_thread in a thread of its own and waits for it. Where the system has no room for a thread,
// the caller's does the work.
void runStartUpThread();
