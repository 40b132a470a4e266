#pragma once

#include <ctime>
#include <string>

// Tells the dates of files, directory by directory.
//
// The system would walk down a file's whole path for each of them, which costs a fifth of a listing. So it is
// asked relative to the directory, as long as that is still open from the reading of its listing. A directory
// that was read earlier is not opened again: the working directory is that one while dates are read, and what
// it was before afterwards; nothing runs beside a request that could notice.
class DateReader {
public:
    // A stretch of work that asks for dates. The working directory is what it was when the outermost ends.
    class Session {
    public:
        explicit Session(DateReader& reader) : m_reader(reader) { ++m_reader.m_sessions; }
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;
        ~Session() {
            if (--m_reader.m_sessions == 0)
                m_reader.leave();
        }

    private:
        DateReader& m_reader;
    };

    // From now on read is asked for files of this directory. descriptor: of the directory, while read is
    // called; -1 when it is not open.
    void setDirectory(const std::string& directory, int descriptor);

    // Status-change time, kUnknownTime when the system does not tell.
    std::time_t read(const char* fileName);

private:
    bool mayBeRelative() const;
    void enter();
    void leave();

    std::string m_directory;
    std::string m_start;  // the working directory as it was; empty when it still is that
    int m_filesAsked = 0; // of the directory
    int m_sessions = 0;
    int m_descriptor = -1;
    bool m_isInside = false; // the working directory is m_directory
};
