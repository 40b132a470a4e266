#pragma once

namespace page {

// Writes the lines that only a strict page has in its head. Writes nothing in default answers.
void writeMeta();

// Writes the message of a strict page that a part of the storage could not be read.
void writeIncompleteNotice();

} // namespace page
