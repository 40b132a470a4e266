#pragma once

#include <string>

// Sends a file of a staging area as the answer, under the last part of its path.
void sendAttachment(const std::string& path);

// Sends a file of length 0 under the same name. For a request whose file is missing or may not be sent.
void sendEmptyAttachment(const std::string& path);
