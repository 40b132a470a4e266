#include "cgi/archive/ArchiveStream.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <utility>

#include "cgi/answer/Output.h"
#include "cgi/archive/PackedEndings.h"
#include "common/Report.h"
#include "common/Retry.h"

namespace {

constexpr std::size_t kChunk = 65536;

constexpr mode_t kFileMode = 0644;
constexpr mode_t kDirectoryMode = 0755;

// Limits a time to what fits into the archive, which has an unsigned field of 32 bits, and into time_t. This
// file is compiled with the time_t of the platform, like the library, so it may have only 32 bits. All other
// files are compiled with 64 bits.
std::time_t entryTime(std::int64_t time) {
    constexpr std::int64_t kLatest = std::min<std::int64_t>(std::numeric_limits<std::uint32_t>::max(),
                                                            std::numeric_limits<std::time_t>::max());
    return static_cast<std::time_t>(std::clamp<std::int64_t>(time, 0, kLatest));
}

// Writes through the buffer of the response, so that small files do not cause many small writes.
la_ssize_t writeSome(archive* /*archive*/, void* /*stream*/, const void* data, std::size_t size) {
    return std::fwrite(data, 1, size, stdout) == size && !output::isStopped() ? static_cast<la_ssize_t>(size)
                                                                              : -1;
}

} // namespace

ArchiveStream::ArchiveStream(std::function<void()> begin)
    : m_begin(std::move(begin)), m_archive(nullptr, &::archive_write_free),
      m_entry(nullptr, &::archive_entry_free) {}

ArchiveStream::~ArchiveStream() {
    // Otherwise the library would write the end record, and the archive would look complete.
    if (m_archive && !m_hasEnded)
        ::archive_write_fail(m_archive.get());
}

// Sets up the library and the locale. This happens only here, so that a request without any file saves the
// time for it.
bool ArchiveStream::start() {
    if (m_hasBegun)
        return !m_hasEnded;
    m_hasBegun = true;
    m_begin();
    m_hasEnded = output::isStopped();
    if (m_hasEnded)
        return false;
    // In this locale the library marks names as UTF-8 and does not convert them.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        return breakOff("the archive", "no locale for UTF-8");
    m_chunk.resize(kChunk);
    m_archive.reset(::archive_write_new());
    m_entry.reset(::archive_entry_new());
    if (!m_archive || !m_entry)
        return breakOff("the archive", "out of memory");
    // Do not set options by name, because this would link every format of the library.
    if (::archive_write_set_format_zip(m_archive.get()) != ARCHIVE_OK ||
        ::archive_write_set_bytes_per_block(m_archive.get(), 0) != ARCHIVE_OK ||
        ::archive_write_open(m_archive.get(), nullptr, nullptr, &writeSome, nullptr) != ARCHIVE_OK)
        return breakOffArchive("the archive");
    return true;
}

bool ArchiveStream::startEntry(const std::string& name, unsigned type, long long size, std::int64_t time) {
    const bool isFirst = !m_hasBegun;
    if (!start())
        return false;
    const bool isDirectory = type == AE_IFDIR;
    archive_entry* const entry = ::archive_entry_clear(m_entry.get());
    ::archive_entry_copy_pathname(entry, name.c_str());
    ::archive_entry_set_filetype(entry, type);
    ::archive_entry_set_perm(entry, isDirectory ? kDirectoryMode : kFileMode);
    ::archive_entry_set_size(entry, size);
    ::archive_entry_set_mtime(entry, entryTime(time), 0);
    if (hasPackedEnding(name))
        ::archive_write_zip_set_compression_store(m_archive.get());
    else
        ::archive_write_zip_set_compression_deflate(m_archive.get());
    if (::archive_write_header(m_archive.get(), entry) != ARCHIVE_OK)
        return breakOffArchive(name);
    // Send the first bytes at once, so that the browser shows the download even if the first file is long.
    if (isFirst)
        std::fflush(stdout);
    return true;
}

bool ArchiveStream::addFile(const std::string& name, int file, long long size, std::int64_t time) {
    return startEntry(name, AE_IFREG, size, time) && writeContent(name, file, size) && finishEntry(name);
}

bool ArchiveStream::addDirectory(const std::string& name, std::int64_t time) {
    return startEntry(name, AE_IFDIR, 0, time) && finishEntry(name);
}

bool ArchiveStream::addText(const std::string& name, std::string_view text, std::int64_t time) {
    return startEntry(name, AE_IFREG, static_cast<long long>(text.size()), time) && write(name, text) &&
           finishEntry(name);
}

bool ArchiveStream::writeContent(const std::string& name, int file, long long size) {
    ::posix_fadvise(file, 0, 0, POSIX_FADV_SEQUENTIAL);
    while (size > 0) {
        const auto most = static_cast<std::size_t>(std::min(size, static_cast<long long>(m_chunk.size())));
        const ssize_t count = retryInterrupted([&] { return ::read(file, m_chunk.data(), most); });
        if (count < 0)
            return breakOff(name, std::strerror(errno));
        if (count == 0)
            return breakOff(name, "the file has become shorter");
        if (!write(name, {m_chunk.data(), static_cast<std::size_t>(count)}))
            return false;
        size -= count;
    }
    return true;
}

bool ArchiveStream::write(const std::string& name, std::string_view data) {
    return ::archive_write_data(m_archive.get(), data.data(), data.size()) ==
               static_cast<la_ssize_t>(data.size()) ||
           breakOffArchive(name);
}

bool ArchiveStream::finishEntry(const std::string& name) {
    return ::archive_write_finish_entry(m_archive.get()) == ARCHIVE_OK || breakOffArchive(name);
}

bool ArchiveStream::finish() {
    if (!m_hasBegun || m_hasEnded)
        return false;
    if (::archive_write_close(m_archive.get()) != ARCHIVE_OK)
        return breakOffArchive("the archive");
    m_hasEnded = true;
    return std::fflush(stdout) == 0 && !output::isStopped();
}

bool ArchiveStream::breakOff(const std::string& name, std::string_view why) {
    report("pack", name, "the archive breaks off, " + std::string(why));
    m_hasEnded = true;
    output::stop();
    if (m_archive)
        ::archive_write_fail(m_archive.get());
    return false;
}

// Breaks off after an error of the library. If the response cannot be written, this was reported before.
bool ArchiveStream::breakOffArchive(const std::string& name) {
    const char* const why = m_archive ? ::archive_error_string(m_archive.get()) : nullptr;
    if (!output::isStopped())
        return breakOff(name, why == nullptr ? "the library refuses" : why);
    m_hasEnded = true;
    ::archive_write_fail(m_archive.get());
    return false;
}
