// Tests the meaning of directory and file names, alone and on disk. Input: a path below the storage root,
// a file name, then the directory name that the configuration gives a mode.

#include <filesystem>
#include <set>
#include <vector>

#include "FuzzInput.h"
#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"
#include "fileman/CFileManager.h"

namespace {

using Conf = CFileManConf;
using Store = CFileManager;
namespace fs = std::filesystem;

void checkName(const std::string& name) {
    static const std::set<std::string> kLabels = {"", "M1", "M2", "10G M1", "10G M2"};
    for (int family = 0; family <= 9; ++family) {
        const auto mode = static_cast<TestMode>(family);
        for (const bool flag : {false, true}) {
            require(kLabels.count(Store::str2PortName(mode, name, flag)) == 1, "a port label that exists");
            require(kLabels.count(Store::str2PortNameOtux(flag, name, !flag)) == 1,
                    "a port label that exists");
        }
        Store::isNeedConvertPortName(mode, name);
        Store::isModeMatched(mode, name);
    }
    for (int cut = -1; cut <= 9; ++cut) {
        const std::string type = Store::str2Type(name, cut);
        require(name.empty() ? type == "Unknown" : cut < 0 || name.compare(0, type.size(), type) == 0,
                "a type is the start of its directory's name");
        require(!name.empty() || Store::str2Port(name, cut) == "Unknown", "no name, no port");
    }
    require(!Store::isValidPortDirName(name) || !Store::isValidTypeDirName(name), "a port is no type");
    const std::string base = CCommUtils::baseFileName(name);
    require(base.find_first_of("./") == std::string::npos && name.find(base) != std::string::npos,
            "a base name ends at the first dot");
    require(CCommUtils::baseFileName("/a.b/" + base + ".x.y") == base, "a base name is that of the file");
}

std::string quoted(const std::string& text) {
    std::string value = "'";
    for (const char c : text) {
        char reference[8];
        std::snprintf(reference, sizeof reference, "&#x%02X;",
                      static_cast<unsigned>(static_cast<unsigned char>(c)));
        value += std::string("<&'\n\t\r").find(c) == std::string::npos ? std::string(1, c) : reference;
    }
    return value + "'";
}

// Returns the components of a path that can be made: at most four, no dot entries, none longer than NAME_MAX.
std::vector<std::string> componentsOf(const std::string& path) {
    std::list<std::string> pieces;
    CCommUtils::split(pieces, "/", path.substr(0, path.find('\0')));
    std::vector<std::string> components;
    for (const std::string& piece : pieces) {
        if (!piece.empty() && !Store::isDotOrDotDot(piece.c_str()) && components.size() < 4)
            components.push_back(piece.substr(0, 255));
    }
    return components;
}

// Both shapes of storage, for modes with different directory names.
void configure(const std::vector<std::string>& path, const std::string& modeDir) {
    std::string modes, options;
    for (const std::string& dir : {modeDir, std::string("ktp-rslt"), std::string("ktb-rslt"),
                                   std::string("cpri"), std::string("ktr"), path.front()}) {
        const std::string name = "m" + std::to_string(options.size());
        modes += "<e name='" + name + "' rslt_dir_name=" + quoted(dir) + "/>";
        for (const char* const tree : {"true", "false"}) {
            options += "<o mode_name='" + name + (*tree == 't' ? "" : "+") +
                       "'><h test_name='Result' under_port_dir='" + tree +
                       "' dir_name=" + quoted(path.front()) +
                       " list=" + quoted(path[path.size() > 1 ? 1 : 0]) + "/></o>";
        }
    }
    fs::create_directories(Conf::getConfPath());
    writeFuzzFile(Conf::getConfFileName(),
                  "<c><filter><mode>" + modes + "</mode><module><e name='M'>" + options +
                      "</e></module><category><e name='S' key='screen'/><e name='b' key='bert'/></category>"
                      "<port><e name='GE' key='ge'/></port></filter></c>");
}

// Returns the list without a filter, with the vocabulary scan delayed or already done.
std::list<std::string> listed(bool isScanned) {
    resetConfState();
    Store store;
    if (!isScanned)
        store.deferScan();
    store.scanFilters();
    _ResultFilter filter;
    filter.includeResults = true;
    store.setFilter(filter);
    std::list<_ResultInfo*> loaded;
    store.loadResults(loaded);
    store.loadScreenShots(loaded);
    std::list<std::string> rows;
    for (const _ResultInfo* info : loaded) {
        rows.push_back(info->id + "\n" + info->path);
        require(info->path.compare(0, 6, "/home/") == 0, "every file lies in storage");
        delete info;
    }
    return rows;
}

void checkOnDisk(const std::vector<std::string>& path, std::string file, const std::string& modeDir) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/home"))
        fs::remove_all(entry.path(), ignored);
    std::string place = "/home";
    for (const std::string& component : path)
        place += "/" + component;
    fs::create_directories(place, ignored);
    file = file.substr(0, std::min<std::size_t>(file.find_first_of(std::string("/\0", 2)), 250));
    writeFuzzFile(place + "/" + file + ".png", "");
    configure(path, modeDir);
    require(listed(false) == listed(true), "a list is the same before and after the scan");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::vector<std::string> path = componentsOf(input.line());
    const std::string file = input.line();
    for (const std::string& component : path)
        checkName(component);
    checkName(file);
    if (!path.empty())
        checkOnDisk(path, file, input.rest());
    resetConfState();
    return 0;
}
