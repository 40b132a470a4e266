#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct archive;
struct archive_entry;

// A zip archive that is written to standard output while it is made: nothing is held back but the buffer of
// the response, and each entry's name for the list at the end. An archive that cannot be whole breaks off: it
// has no end record, a line on standard error says why, and nothing follows in the response.
//
// Sizes and sums stand behind an entry's data (the format's bit 3), large ones in 64 bits; the date is the
// file's modification time, also in local time.
class ArchiveStream {
public:
    // begin: writes the response's header. It is called once, just before the first byte of the archive, and
    // tells whether the request wants a body.
    explicit ArchiveStream(std::function<bool()> begin);
    ~ArchiveStream();
    ArchiveStream(const ArchiveStream&) = delete;
    ArchiveStream& operator=(const ArchiveStream&) = delete;

    // Each of the following is false, now and ever after, when the response has ended: it broke off, its
    // reader has gone, or it wants no body.

    // So many bytes of an open regular file, which was last modified at time (seconds since 1970). A file
    // that cannot be read so far, because it has become shorter or a medium fails, breaks the archive off.
    // Pictures and packed files are stored as they are, the rest is deflated.
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

    std::function<bool()> m_begin;
    std::unique_ptr<archive, int (*)(archive*)> m_archive;
    std::unique_ptr<archive_entry, void (*)(archive_entry*)> m_entry;
    std::vector<char> m_chunk;
    bool m_hasBegun = false;
    bool m_hasEnded = false;
};
