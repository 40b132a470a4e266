#pragma once

#include <sys/types.h>

#include <string>

// The paths of a staging area. All but newArchive lie directly in /tmp.
struct StagingPlaces {
    std::string directory;
    std::string archive;
    std::string newArchive; // below the directory; the archive has this path until it is complete
    std::string lock;
    std::string taskList;    // "" in an area that has none
    std::string newTaskList; // the task list has this path until it is complete
    mode_t taskListMode;
};
