#include <unistd.h>

#include <string_view>

#include "conf/CFileManConf.h"

// Reads or rewrites the configuration document; the first argument says how. Exit status 0 means that the
// call reported success.
int main(int argc, char** argv) {
    const std::string_view way = argc > 1 ? argv[1] : "";
    // A trace of the system calls begins at this mark.
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
