#include "common/CCommUtils.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "common/FileDate.h"
#include "common/UniqueFd.h"

namespace {

// Reads the first line of the file: at most 127 bytes, and up to a zero byte. Returns "" on failure.
std::string readFirstLine(const std::string& path) {
    constexpr std::size_t kLongestLine = 127;
    // Without O_NONBLOCK the open of a FIFO would block for ever.
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, kLongestLine> text{};
    std::size_t size = 0;
    while (file && size < text.size()) {
        const ssize_t count = ::read(file.get(), text.data() + size, text.size() - size);
        if (count <= 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    const std::string_view line(text.data(), size);
    return std::string(line.substr(0, line.find_first_of(std::string_view("\n\0", 2))));
}

} // namespace

bool CCommUtils::isFileExists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

bool CCommUtils::isDirExists(const std::string& path) {
    return isFileExists(path);
}

std::string CCommUtils::baseFileName(const std::string& path) {
    // Without a '/' rfind gives npos, and npos + 1 is the start of the path.
    const std::size_t begin = path.rfind('/') + 1;
    return path.substr(begin, path.find('.', begin) - begin);
}

std::string CCommUtils::completeFileName(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(slash + 1);
}

std::string CCommUtils::dirName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string CCommUtils::upDirName(const std::string& path) {
    const std::size_t last = path.rfind('/');
    if (last == std::string::npos)
        return path;
    const std::size_t previous = last == 0 ? std::string::npos : path.rfind('/', last - 1);
    if (previous == std::string::npos)
        return {};
    return path.substr(previous + 1, last - previous - 1);
}

std::string CCommUtils::absFilePath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string CCommUtils::createDateTime(const std::string& path) {
    return formatDateTime(changeTime(path));
}

std::string CCommUtils::readInfo(const std::string& path) {
    return trimRight(readFirstLine(path));
}

std::string CCommUtils::getSoftVer(const std::string& path) {
    const std::string line = readInfo(path);
    return line.substr(line.find(':') + 1);
}
