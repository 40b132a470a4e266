#pragma once

#include <string>

#include "conf/Companion.h"
#include "fileman/ResultInfo.h"

// Whether the instrument's own saved last configuration is listed.
enum class LastConfiguration { Keep, Drop };

// One directory whose files will be listed, and the common fields of their records.
struct FileSource {
    std::string dir;
    // Whether the listing of its parent shows it as a directory. Then no further test is needed.
    bool isListed = false;
    StoredInfo storedInfo = StoredInfo::Plain;
    LastConfiguration lastConfiguration = LastConfiguration::Drop;
    _ResultInfo record; // all fields except id, name, datetime and path
};
