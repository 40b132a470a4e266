#pragma once

#include <optional>
#include <string>

// Sends a file of a staging area as the answer, under the last part of its path.
void sendAttachment(const std::string& path);

// Sends a file of length 0 under the same name. For a request whose file is missing or may not be sent.
void sendEmptyAttachment(const std::string& path);

// Writes the header of a strict answer that is saved under this name. size: in bytes, nothing when it is not
// known yet.
void writeAttachmentHeader(const std::string& fileName, std::optional<long long> size = std::nullopt);
