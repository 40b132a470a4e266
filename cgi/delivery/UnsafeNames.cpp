#include "cgi/delivery/UnsafeNames.h"

#include "common/CCommUtils.h"
#include "common/ControlBytes.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "fileman/CResultItem.h"

namespace {

// Each of these characters ends an unquoted word of the shell or has a special meaning in it.
constexpr char kShellSpecial[] = " |&;<>()$`\\\"'*?[]{}";

bool hasQuote(const std::string& text) {
    return text.find('\'') != std::string::npos;
}

} // namespace

DownloadPlaces::DownloadPlaces(const _ResultInfo& record)
    : name(record.name), directory(CCommUtils::absFilePath(record.path)),
      destination(std::string(paths::kDownloadDir) + "/" + CResultItem::uniqueName(&record)) {}

const char* downloadObstacle(const DownloadPlaces& places) {
    if (places.name.empty())
        return "its name is empty";
    if (places.name.front() == '-')
        return "its name begins with '-'";
    if (hasQuote(places.name) || hasQuote(places.destination))
        return "its name holds a single quote";
    if (hasControlByte(places.name) || hasControlByte(places.destination) || hasControlByte(places.directory))
        return "its name or directory holds a control character";
    if (places.directory.find_first_of(kShellSpecial) != std::string::npos)
        return "its directory holds a blank or a character special to the shell";
    // Labels are part of the destination, and the configuration may contain any label.
    if (places.destination.find("/../") != std::string::npos)
        return "its labels lead out of the staging directory";
    return nullptr;
}

const char* pdfObstacle(const std::string& path) {
    if (CCommUtils::isStartsWith(CCommUtils::baseFileName(path), "-"))
        return "its name begins with '-'";
    if (hasControlByte(path))
        return "its path holds a control character";
    return nullptr;
}

void reportLeftOut(const char* delivery, const std::string& path, const char* reason) {
    report(delivery, path, std::string("left out, ") + reason);
}
