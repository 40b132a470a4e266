#pragma once

#include <chrono>
#include <optional>
#include <string>

// The time between a default answer and the removal of the files that were collected for it.
inline constexpr std::chrono::seconds kPauseAfterSending{1};

// Sends a file of a staging area as the answer, under the last part of its path.
void sendAttachment(const std::string& path);

// Sends a file of length 0 under the same name. For a request whose file is missing or may not be sent.
void sendEmptyAttachment(const std::string& path);

// Writes the header of a strict answer that is saved under this name. size: in bytes, nothing when it is not
// known yet.
void writeAttachmentHeader(const std::string& fileName, std::optional<long long> size = std::nullopt);
