#pragma once

#include <string>

#include "common/UniqueFd.h"

// One file on its way to standard output: opened once, read once, never held in memory.
class FileStream {
public:
    // Links in the storage are followed. Below /tmp anybody may have put something in the way: from there
    // only a file of this user (or root) with one name is sent.
    enum class From { Storage, Staging };

    FileStream(const std::string& path, From from);

    // Bytes, for the response's header: of the opened file. Of what is not sent: 0 from staging, from the
    // storage what stat says.
    long long size() const { return m_size; }

    // Sends what the header announced, after all buffered output. Nothing for a file that could not be opened
    // or is no regular file; less when the file shrinks or the reader goes away.
    void send();

private:
    std::string m_path;
    UniqueFd m_file;
    long long m_size = 0;
};

// A reader that goes away must not end the process (SIGPIPE) before it has tidied up: ignored as long as this
// lives.
class IgnoreBrokenPipe {
public:
    IgnoreBrokenPipe();
    IgnoreBrokenPipe(const IgnoreBrokenPipe&) = delete;
    IgnoreBrokenPipe& operator=(const IgnoreBrokenPipe&) = delete;
    ~IgnoreBrokenPipe();

private:
    void (*m_previous)(int);
};
