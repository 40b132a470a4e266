#pragma once

namespace page {

// Writes the lines that only a strict page has in its head. Writes nothing in default answers.
void writeMeta();

// Writes the header of the answer and the page up to the last script file of its head.
void beginListPage();

// Writes the header of the answer and a filter page up to the beginning of its body. initCall: the script
// code that starts the page in default answers.
void beginFilterPage(const char* initCall);

} // namespace page
