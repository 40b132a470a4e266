#include "cgi/delivery/Packing.h"

#include <cstdlib>
#include <string_view>
#include <utility>

#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/RemoveTree.h"
#include "common/CCommUtils.h"
#include "common/Report.h"

namespace {

constexpr char kOptions[] = "ZIPOPT";

// An archive without entries: only the record that ends every archive.
constexpr std::string_view kEmptyArchive("PK\5\6\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22);

// The directory in which zip works. Its name begins with a dot, so the "*" of the packing command does not
// match it.
class Workshop {
public:
    explicit Workshop(std::string newArchive)
        : m_archive(std::move(newArchive)), m_directory(CCommUtils::absFilePath(m_archive)),
          m_isReady(removeTree(m_directory) && claimDirectory(m_directory)) {}
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;
    ~Workshop() { removeTree(m_directory); }

    bool isReady() const { return m_isReady; }
    std::string options() const { return "-b " + m_directory + " -O " + m_archive; }

private:
    std::string m_archive;
    std::string m_directory;
    bool m_isReady;
};

int runZip(const StagingArea& area, const std::string& command, const Workshop& workshop) {
    ::setenv(kOptions, workshop.options().c_str(), 1);
    const int status = area.run(command);
    ::unsetenv(kOptions);
    return status;
}

} // namespace

bool pack(const StagingArea& area, const std::string& command) {
    const std::string& archive = area.places().archive;
    const Workshop workshop(area.places().newArchive);
    if (!workshop.isReady() || !area.createArchive(kEmptyArchive))
        return false;
    if (const int status = runZip(area, command, workshop); status != 0) {
        report("pack", archive, "the packer failed with status " + std::to_string(status));
        return false;
    }
    return area.publishArchive();
}
