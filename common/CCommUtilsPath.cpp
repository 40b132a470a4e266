#include "common/CCommUtils.h"

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
