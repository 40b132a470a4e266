#pragma once

#include <string>

// A file of a staging area as the answer, under the last part of its path.
void sendAttachment(const std::string& path);

// The answer of the same name when there is nothing that may be sent: a file of length 0.
void sendEmptyAttachment(const std::string& path);
