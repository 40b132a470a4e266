// What the sources of the support library share for their own messages in the log. The log itself:
// trcfg_utils_proc.h.
#pragma once

// Levels of the library's own messages.
constexpr int kLogFailure = 0;
constexpr int kLogSuccess = 2;

// Source names in log lines.
constexpr const char* kProcSource = "trcfg_utils_proc";
constexpr const char* kFilesysSource = "trcfg_utils_filesys";

inline const char* printable(const char* text) {
    return text == nullptr ? "(null)" : text;
}

// Closes the descriptor of the system log. The next entry opens it again.
void releaseSyslogDescriptor();
