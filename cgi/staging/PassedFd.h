#pragma once

#include <optional>

#include "common/UniqueFd.h"

// Messages of one byte between two processes, over a socket pair. A message may carry a descriptor
// (SCM_RIGHTS in unix(7)), which the receiver then shares with the sender.
namespace passed {

struct Message {
    char byte = 0;
    UniqueFd fd;
};

// Both return false or nullopt, with errno set, when the message could not be sent or the other process has
// ended.
bool send(int socket, char byte, int fd = -1);
std::optional<Message> receive(int socket);

} // namespace passed
