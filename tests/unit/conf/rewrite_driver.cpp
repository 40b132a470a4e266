#include <unistd.h>

#include <string_view>

#include "conf/CFileManConf.h"

// Reads or rewrites the configuration document in the way that the first argument names; 0 when it says that
// it did.
int main(int argc, char** argv) {
    const std::string_view way = argc > 1 ? argv[1] : "";
    // Where a trace begins.
    if (::access("/begin", F_OK) == 0)
        return 2;
    if (way == "read")
        return CFileManConf::readConf(CFileManConf::getConfFileName()) ? 0 : 1;
    if (way == "mark")
        return CFileManConf::setFilterChecked(CFileManConf::FT_CLASS, "c", true) ? 0 : 1;
    if (way == "all")
        return CFileManConf::setAllFilterChecked(true) ? 0 : 1;
    _AdvanceInfo info;
    info.jobId = "a job";
    return CFileManConf::saveAdvanceInfo(info) == 1 ? 0 : 1;
}
