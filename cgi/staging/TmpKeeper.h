#pragma once

#include "cgi/staging/StagingPlaces.h"
#include "common/UniqueFd.h"

// A process of its own that does what must be done directly in /tmp, where the staging areas of other
// requests lie, too. It takes a few fixed orders from the request. So the request needs no right to write in
// /tmp: it gives that right up before it reads anything from storage.
//
// The process ends with the request. An order that fails has a line on standard error.
class TmpKeeper {
public:
    enum class Order : char {
        OpenLock,        // the file of this user's lock; both processes share what is locked through it
        ClaimDirectory,  // make it this user's own
        RemoveArchive,   // an archive that does not exist counts as removed
        CreateArchive,   // an empty file, for writing
        PublishArchive,  // move the complete archive to its path
        CreateTaskList,  // an empty file, for writing
        PublishTaskList, // move the complete task list to its path
        DropTaskList,    // remove a task list that did not become complete
        CleanUp,         // the last order; the process goes on alone, see below
    };

    // Starts the process. When it cannot be started, every order fails.
    explicit TmpKeeper(const StagingPlaces& places);

    // Returns whether the order was obeyed.
    //
    // CleanUp runs the command that removes the archive and the contents of the directory. The process holds
    // the lock, with signs of life, until the command has ended. The request does not wait for that.
    bool give(Order order) const;
    // For an order that opens a file. Without a file the order has failed.
    UniqueFd open(Order order) const;

private:
    UniqueFd m_channel;
};
