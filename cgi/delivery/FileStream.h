#pragma once

#include <string>

#include "common/UniqueFd.h"

// Sends one file to standard output. The file is opened once, read once and never held in memory.
class FileStream {
public:
    // Links in the storage are followed. Below /tmp another user may have put a file or link at the path:
    // from there only a file with one hard link is sent, owned by this user or root.
    enum class From { Storage, Staging };

    FileStream(const std::string& path, From from);

    bool isOpen() const { return static_cast<bool>(m_file); }
    // Nothing that could be sent exists at the path: no file, or not a regular one.
    bool isMissing() const { return m_isMissing; }
    // The descriptor of the file, -1 when it is not open.
    int descriptor() const { return m_file.get(); }

    // The size in bytes for the response header, taken from the opened file. For a file that is not sent, it
    // is 0 in a staging area, and the size that stat reports in the storage.
    long long size() const { return m_size; }

    // Writes all buffered output, then size() bytes of the file. Sends nothing for a file that could not be
    // opened or is not a regular file. Sends less when the file shrinks or the reader goes away.
    void send();

private:
    std::string m_path;
    UniqueFd m_file;
    long long m_size = 0;
    bool m_isMissing = false;
};

// Ignores SIGPIPE during its lifetime: a reader that goes away must not end the process before the clean-up.
class IgnoreBrokenPipe {
public:
    IgnoreBrokenPipe();
    IgnoreBrokenPipe(const IgnoreBrokenPipe&) = delete;
    IgnoreBrokenPipe& operator=(const IgnoreBrokenPipe&) = delete;
    ~IgnoreBrokenPipe();

private:
    void (*m_previous)(int);
};
