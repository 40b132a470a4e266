#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct archive;
struct archive_entry;

// A zip archive that is written to standard output while it is made. Memory holds the buffer of the response
// and, for the list at the end of the archive, the name of each entry. An archive that cannot be whole breaks
// off: it has no end record, a line on standard error says why, and nothing follows in the response.
//
// Size and check sum of an entry follow its data (bit 3 of the format), with 64 bits where they need them.
// The date is the time of the last modification, in local time too.
class ArchiveStream {
public:
    // begin writes the header of the response. It is called once, just before the first byte of the archive.
    // It stops the response when the request is a HEAD request; then no archive follows.
    explicit ArchiveStream(std::function<void()> begin);
    ~ArchiveStream();
    ArchiveStream(const ArchiveStream&) = delete;
    ArchiveStream& operator=(const ArchiveStream&) = delete;

    // The following return false when the response has ended: the archive broke off, the reader has gone, or
    // the request is a HEAD request. From then on they write nothing.

    // Adds size bytes of an open regular file, last modified at time (seconds since 1970). A file that cannot
    // be read so far, because it has become shorter or the medium fails, breaks the archive off. Pictures and
    // packed files are stored as they are, all others are deflated.
    bool addFile(const std::string& name, int file, long long size, std::int64_t time);
    bool addDirectory(const std::string& name, std::int64_t time);
    bool addText(const std::string& name, std::string_view text, std::int64_t time);
    // Writes the end record.
    bool finish();

    // Whether begin was called.
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
