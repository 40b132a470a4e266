#include "cgi/delivery/Packing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/Shell.h"
#include "common/Report.h"
#include "common/WriteAll.h"

namespace {

constexpr mode_t kArchiveMode = 0600;
constexpr char kOptions[] = "ZIPOPT";
// The exit status of zip for an option that it does not know.
constexpr int kUnknownOption = 16;

// An archive without entries: only the record that ends every archive.
constexpr std::string_view kEmptyArchive("PK\5\6\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22);

bool createEmptyArchive(const std::string& path) {
    UniqueFd file = createOwnFile(path, kArchiveMode);
    return file && writeAll(file.get(), kEmptyArchive) && file.reset() == 0;
}

// The directory in which zip works. Its name begins with a dot, so the "*" of the packing command does not
// match it.
class Workshop {
public:
    explicit Workshop(const std::string& stagingDirectory) : m_directory(stagingDirectory + "/.zip") {
        m_isReady = removeTree(m_directory) && claimDirectory(m_directory);
    }
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;
    ~Workshop() { removeTree(m_directory); }

    bool isReady() const { return m_isReady; }
    std::string archive() const { return m_directory + "/archive.zip"; }
    std::string options() const { return "-b " + m_directory + " -O " + archive(); }

private:
    std::string m_directory;
    bool m_isReady;
};

// Returns the exit status of zip. A zip that does not know the options is run again without them.
int runZip(const StagingArea& area, const std::string& command, const Workshop& workshop) {
    ::setenv(kOptions, workshop.options().c_str(), 1);
    const int status = area.run(command);
    ::unsetenv(kOptions);
    return status == kUnknownOption ? area.runBesideArchive(command) : status;
}

// A zip that ran without the options has made the archive at the path in the command.
bool isPackedInPlace(const std::string& archive) {
    struct stat status = {};
    return ::lstat(archive.c_str(), &status) == 0 && isOwnFile(status) &&
           status.st_size > static_cast<off_t>(kEmptyArchive.size());
}

} // namespace

bool pack(const StagingArea& area, const std::string& command) {
    const std::string& archive = area.places().archive;
    const Workshop workshop(area.places().directory);
    if (!workshop.isReady() || !createEmptyArchive(archive))
        return false;
    if (const int status = runZip(area, command, workshop); status != 0) {
        report("pack", archive, "the packer failed with status " + std::to_string(status));
        return false;
    }
    if (::access(workshop.archive().c_str(), F_OK) == 0)
        return moveOver(workshop.archive(), archive);
    if (isPackedInPlace(archive))
        return true;
    report("pack", archive, "the packer made no archive");
    return false;
}
