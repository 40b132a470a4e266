#pragma once

namespace page {

// Writes the lines that only a strict page has in its head. Writes nothing in default answers.
void writeMeta();

} // namespace page
