// Tests names on disk: a list is the same before and after the scan. Input: a path below the storage root, a
// file name, then the directory name that the configuration gives a mode.

#include <filesystem>
#include <vector>

#include "FuzzInput.h"
#include "cgi/answer/Escape.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"
#include "fileman/CFileManager.h"

namespace {

using Conf = CFileManConf;
namespace fs = std::filesystem;

// Both shapes of storage, for modes with different directory names.
void configure(const std::vector<std::string>& path, const std::string& modeDir) {
    const auto quoted = [](const std::string& text) { return "'" + escape::forHtml(text) + "'"; };
    std::string modes, options;
    for (const std::string& dir : {modeDir, std::string("ktp-rslt"), std::string("ktb-rslt"),
                                   std::string("cpri"), std::string("ktr"), path.front()}) {
        const std::string name = "m" + std::to_string(options.size());
        modes += "<e name='" + name + "' rslt_dir_name=" + quoted(dir) + "/>";
        for (const std::string tree : {"true", "false"})
            options += "<o mode_name='" + name + (tree == "true" ? "" : "+") +
                       "'><h test_name='Result' under_port_dir='" + tree +
                       "' dir_name=" + quoted(path.front()) +
                       " list=" + quoted(path[path.size() > 1 ? 1 : 0]) + "/></o>";
    }
    fs::create_directories(Conf::getConfPath());
    writeFuzzFile(Conf::getConfFileName(),
                  "<c><filter><mode>" + modes + "</mode><module><e name='M'>" + options +
                      "</e></module><category><e name='S' key='screen'/><e name='b' key='bert'/></category>"
                      "<port><e name='GE' key='ge'/></port></filter></c>");
}

// Returns the list without a filter, with the vocabulary scan delayed or already done.
std::string listed(bool isScanned) {
    resetConfState();
    CFileManager store;
    if (!isScanned)
        store.deferScan();
    store.scanFilters();
    store.setFilter({{}, {}, {}, {}, true, false, {}});
    std::list<_ResultInfo*> loaded;
    store.loadResults(loaded);
    store.loadScreenShots(loaded);
    std::string rows;
    for (const _ResultInfo* info : loaded) {
        rows += info->id + "\n" + info->path + "\n";
        delete info;
    }
    return rows;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    std::vector<std::string> path;
    std::string place = "/home";
    for (const std::string piece : fs::path(input.line().c_str())) {
        if (piece.find_first_not_of("/.") == std::string::npos || path.size() == 4)
            continue;
        path.push_back(piece.substr(0, 255));
        place += "/" + path.back();
    }
    if (path.empty())
        return 0;
    const std::string line = input.line();
    const std::string name =
        line.substr(0, std::min<std::size_t>(line.find_first_of(std::string("/\0", 2)), 250));
    for (const auto& entry : fs::directory_iterator("/home"))
        fs::remove_all(entry.path());
    fs::create_directories(place);
    writeFuzzFile(place + "/" + name + ".png", "");
    configure(path, input.rest());
    require(listed(false) == listed(true), "a list is the same before and after the scan");
    return 0;
}
