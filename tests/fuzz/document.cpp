// Tests a configuration document, and every lookup with the names in it.

#include <set>
#include <vector>

#include "FuzzInput.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"

namespace {

using Conf = CFileManConf;
using Names = std::list<std::string>;
using Answers = std::vector<std::string>;

constexpr char kPath[] = "/tmp/document.xml";
constexpr std::size_t kMostNames = 12;

void startAnew() {
    resetConfState();
    Conf::readConf(kPath);
}

std::set<std::string> namesFound() {
    std::set<std::string> names = {"", "ktr", "10ge m2"};
    for (const auto& [key, mode] : Conf::getModesInfo())
        names.insert({key, mode.label, mode.rslt_dir_name, mode.prof_dir_name});
    for (const auto& [key, type] : Conf::getTypesInfo())
        names.insert({key, type.label, type.name});
    for (const auto& [key, port] : Conf::getPortsInfo())
        names.insert({key, port.label, port.key, port.dir});
    return names;
}

Answers ask(const std::string& name) {
    return {Conf::getModeName(name),
            Conf::getTypeName(name),
            Conf::getPortName(name),
            Conf::modeName2Label(name),
            Conf::typeKey2Label(name),
            Conf::portName2Label(name),
            Conf::modeLabel2DirName(name, true),
            Conf::modeLabel2DirName(name, false),
            Conf::typeLabel2DirName(name, true),
            Conf::typeLabel2DirName(name, false),
            Conf::portLabel2DirName(name, true),
            Conf::modeLabel2ModeName(name),
            Conf::typeLabel2Key(name),
            Conf::str2Port(name),
            Conf::str2Port(name, 4),
            Conf::str2Type(name, 7)};
}

// The first call of a lookup makes its index; the second one finds it.
void checkLookups(const std::string& name) {
    startAnew();
    const Answers first = ask(name);
    require(ask(name) == first, "the same answer each time");
}

bool holdsAll(const Names& all, const Names& some) {
    const std::set<std::string> known(all.begin(), all.end());
    for (const std::string& name : some) {
        if (known.count(name) == 0)
            return false;
    }
    return true;
}

void checkRecords() {
    Names modes, keys, ports, modules, checked;
    Conf::getAllModeNames(modes);
    Conf::getAllTypeKeys(keys);
    Conf::getAllPortNames(ports);
    Conf::getAllModuleNames(modules);
    for (const std::string& name : modes) {
        require(Conf::getModeInfo(name).name == name, "a mode is found by its name");
        Conf::addCurrentMode(name);
    }
    for (const std::string& key : keys) {
        Conf::addCurrentType(Conf::getTypeInfo(key).name);
        require(Conf::getTypeInfo(key).key == key, "a type is found by its key");
    }
    for (const std::string& name : ports)
        require(Conf::getPortInfo(name).name == name, "a port is found by its name");
    for (const std::string& name : modules)
        require(Conf::getModuleInfo(name).name == name, "a module is found by its name");
    Names current;
    Conf::getCurrentTypeKeys(current);
    require(holdsAll(current, keys) && holdsAll(keys, current), "all types are current now");
    Conf::getCheckedModes(checked);
    require(holdsAll(modes, checked), "a checked mode is a mode");
    checked.clear();
    Conf::getCheckedTypeKeys(checked);
    require(holdsAll(keys, checked), "a checked type is a type");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    writeFuzzFile(kPath, std::string(data, data + size));
    resetConfState();
    const bool isRead = Conf::readConf(kPath);
    const std::size_t extras = Conf::getExtraDirList().size();
    require(isRead || (Conf::getModulesInfo().empty() && extras == 0), "an unusable document brings nothing");
    require(Conf::readConf(kPath) == isRead, "read again alike");
    require(Conf::getExtraDirList().size() == 2 * extras, "each reading brings its extra directories");
    checkRecords();
    std::size_t count = 0;
    for (const std::string& name : namesFound()) {
        if (++count <= kMostNames)
            checkLookups(name);
    }
    resetConfState();
    return 0;
}
