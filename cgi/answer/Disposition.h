#pragma once

#include <string>
#include <string_view>

// Returns the value of a Content-Disposition header line (RFC 6266). A name that is not plain ASCII is
// written in filename* (RFC 8187), after a readable filename for clients that do not know filename*. Control
// characters become "_".
std::string inlineDisposition(std::string_view fileName);
std::string attachmentDisposition(std::string_view fileName);
