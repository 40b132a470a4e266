#pragma once

// The start-up thread's function: reads the configuration and scans the storage tree through g_FileMan, when
// there is one. Takes nothing, returns null.
void* read_conf_thread(void* unused);

// Runs read_conf_thread in a thread of its own and waits for it. Without a thread the request goes on with an
// empty configuration.
void runStartUpThread();
