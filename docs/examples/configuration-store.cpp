// Shows what the primary and the advanced filter have stored, and changes both.
#include <cstdio>

#include "conf/CFileManConf.h"

namespace {

using Conf = CFileManConf;

void showModes(const char* when) {
    for (const auto& [name, mode] : Conf::getModesInfo())
        std::printf("%s: %s (%s) %s\n", when, name.c_str(), mode.rslt_dir_name.c_str(),
                    Conf::checkState2Str(mode.checked).c_str());
}

void showAdvanced(const char* when) {
    // Fresh: the lists are appended to.
    _AdvanceInfo info;
    Conf::getAdvanceInfo(info);
    std::printf("%s: job \"%s\", locator \"%s\" of %zu\n", when, info.jobId.c_str(), info.locator.c_str(),
                info.locatorList.size());
}

} // namespace

int main() {
    // Once, before everything else; the document's path is fixed.
    if (!Conf::readConf(Conf::getConfFileName())) {
        std::fputs("there is no configuration\n", stderr);
        return 1;
    }
    showModes("before");
    showAdvanced("before");

    // In memory by the exact name, in the document whatever its case; on disk when it returns.
    if (!Conf::setFilterChecked(Conf::FT_MODE, "SDH/PDH", true))
        return 1;
    _AdvanceInfo info;
    info.jobId = "R&D 42";
    info.locator = "lab 1";
    if (Conf::saveAdvanceInfo(info) != 1)
        return 1;
    showModes("after");
    showAdvanced("after");

    // What an instrument has on disk is for the caller to say; the lists of checked names hold nothing else.
    Conf::addCurrentMode("SDH/PDH");
    std::list<std::string> checked;
    Conf::getCheckedModes(checked);
    for (const std::string& name : checked)
        std::printf("checked and there: %s\n", name.c_str());
    return 0;
}

/* Says:
 * before: Ethernet (eth-rslt) true
 * before: SDH/PDH (sdh-rslt) false
 * before: job "", locator "None" of 2
 * after: Ethernet (eth-rslt) true
 * after: SDH/PDH (sdh-rslt) true
 * after: job "R&D 42", locator "Lab 1" of 2
 * checked and there: SDH/PDH
 */
