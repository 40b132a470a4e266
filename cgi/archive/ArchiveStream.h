#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct archive;
struct archive_entry;

// Writes a zip archive to standard output while it reads the files. It keeps in memory only the buffer of the
// response and the name of each entry, for the directory at the end of the archive. If the archive cannot be
// completed, it breaks off: it has no end record, a line on standard error gives the reason, and the response
// ends.
//
// The size and the checksum of an entry follow its data (bit 3 of the format), with 64 bits if necessary. The
// date of an entry is the time of its last modification, also in local time.
class ArchiveStream {
public:
    // begin writes the header of the response. It is called once, just before the first byte of the archive.
    // For a HEAD request it stops the response, and no archive follows.
    explicit ArchiveStream(std::function<void()> begin);
    ~ArchiveStream();
    ArchiveStream(const ArchiveStream&) = delete;
    ArchiveStream& operator=(const ArchiveStream&) = delete;

    // The following functions return false if the response has ended: the archive broke off, the reader
    // closed the connection, or it is a HEAD request. After that they write nothing.

    // Adds size bytes of an open regular file, last modified at time (seconds since 1970). If the file has
    // become shorter or cannot be read, the archive breaks off. Pictures and compressed files are stored, all
    // other files are deflated.
    bool addFile(const std::string& name, int file, long long size, std::int64_t time);
    bool addDirectory(const std::string& name, std::int64_t time);
    bool addText(const std::string& name, std::string_view text, std::int64_t time);
    // Writes the end record.
    bool finish();

    // Returns true if begin was called.
    bool hasBegun() const { return m_hasBegun; }
    bool hasEnded() const { return m_hasEnded; }

private:
    bool start();
    bool startEntry(const std::string& name, unsigned type, long long size, std::int64_t time);
    bool write(const std::string& name, std::string_view data);
    bool writeContent(const std::string& name, int file, long long size);
    bool finishEntry(const std::string& name);
    bool breakOff(const std::string& name, std::string_view why);
    bool breakOffArchive(const std::string& name);

    std::function<void()> m_begin;
    std::unique_ptr<archive, int (*)(archive*)> m_archive;
    std::unique_ptr<archive_entry, void (*)(archive_entry*)> m_entry;
    std::vector<char> m_chunk;
    bool m_hasBegun = false;
    bool m_hasEnded = false;
};
