#pragma once

namespace page {

// Writes the message of a strict page that a part of the storage could not be read. Writes nothing in default
// answers, and if everything could be read.
void writeIncompleteNotice();

} // namespace page
