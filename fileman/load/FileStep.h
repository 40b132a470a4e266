#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// Which file tells the advanced information of a listed file D/base.ext. That they differ is wanted: the
// sources were written for instruments that store it in different places.
enum class StoredInfo {
    Plain,     // D/base
    Companion, // D/base.xml
    Itself,    // D/base.ext
};

// Whether the instrument's own saved last configuration is listed.
enum class Scratch { Keep, Drop };

// One directory whose files are to be listed, and what all of their records have in common.
struct FileSource {
    std::string dir;
    bool isListed = false; // as a directory, in the listing of its parent, which need not be asked again
    StoredInfo storedInfo = StoredInfo::Plain;
    Scratch scratch = Scratch::Drop;
    _ResultInfo record; // every field but id, name, datetime and path
};
