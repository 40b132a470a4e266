#include "fileman/names/ListedFiles.h"

#include <algorithm>

namespace {

constexpr std::string_view kExtensions[] = {".html", ".png", ".jpg", ".jpeg", ".bmp", ".pcap"};

} // namespace

bool listed::hasExtension(std::string_view fileName) {
    const std::size_t dot = fileName.rfind('.');
    return dot != std::string_view::npos && std::find(std::begin(kExtensions), std::end(kExtensions),
                                                      fileName.substr(dot)) != std::end(kExtensions);
}

bool listed::isLastConfiguration(std::string_view fileName) {
    return fileName == "Last configuration" || fileName == "Last configuration.html";
}
