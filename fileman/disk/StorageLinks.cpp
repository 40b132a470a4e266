#include "fileman/disk/StorageLinks.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <string_view>

#include "common/Retry.h"

namespace {

// As many as the system follows.
constexpr int kMostLinks = 40;

constexpr int kPass = O_PATH | O_DIRECTORY;

// The names that a path consists of, the last one first, behind those that are there.
void putOnTop(std::vector<std::string>& names, std::string_view path) {
    while (!path.empty()) {
        const std::size_t slash = path.rfind('/');
        const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
        path.remove_suffix(slash == std::string_view::npos ? path.size() : path.size() - slash);
        if (!name.empty() && name != ".")
            names.emplace_back(name);
    }
}

UniqueFd openIn(int directory, const char* name, int flags) {
    return UniqueFd(
        retryInterrupted([&] { return ::openat(directory, name, flags | O_NOFOLLOW | O_CLOEXEC); }));
}

// Where a link leads; nothing for what is no link. errno stays.
std::optional<std::string> targetOf(int directory, const std::string& name) {
    const int error = errno;
    std::array<char, PATH_MAX> target;
    const ssize_t size = ::readlinkat(directory, name.c_str(), target.data(), target.size());
    errno = error;
    if (size < 0)
        return std::nullopt;
    return std::string(target.data(), static_cast<std::size_t>(size));
}

} // namespace

StorageLinks::StorageLinks(const std::string& path)
    : m_descriptor(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    putOnTop(m_place, path);
    std::reverse(m_place.begin(), m_place.end());
}

// Nothing, too, for a place above the storage directory: nothing is read there.
UniqueFd StorageLinks::openPlace(const std::vector<std::string>& place) const {
    if (place.size() < m_place.size())
        return {};
    UniqueFd here = openIn(m_descriptor.get(), ".", kPass);
    for (std::size_t index = m_place.size(); here && index < place.size(); ++index)
        here = openIn(here.get(), place[index].c_str(), kPass);
    return here;
}

UniqueFd StorageLinks::open(const std::string& path, int flags) const {
    std::vector<std::string> rest; // the next name last
    putOnTop(rest, path);
    std::vector<std::string> place; // from "/" to here
    UniqueFd here;                  // nothing as long as place lies above the storage
    int links = 0;
    while (!rest.empty()) {
        const std::string name = std::move(rest.back());
        rest.pop_back();
        const bool isLeaving = name == "..";
        if (isLeaving || place.size() < m_place.size()) {
            if (!isLeaving && name != m_place[place.size()])
                break;
            // Not by the system's "..": the directory may have been moved out of the storage meanwhile.
            if (!isLeaving)
                place.push_back(name);
            else if (!place.empty())
                place.pop_back();
            here = openPlace(place);
        } else if (UniqueFd next = openIn(here.get(), name.c_str(), rest.empty() ? flags : kPass)) {
            if (rest.empty())
                return next;
            place.push_back(name);
            here = std::move(next);
        } else if (const auto target = targetOf(here.get(), name)) {
            if (++links > kMostLinks) {
                errno = ELOOP;
                return {};
            }
            if (target->front() == '/')
                place.clear();
            putOnTop(rest, *target);
        } else {
            return {};
        }
    }
    if (place.size() < m_place.size()) {
        errno = EXDEV;
        return {};
    }
    return openIn(here.get(), ".", flags);
}
