#pragma once

#include <string>
#include <string_view>

// The value of a Content-Disposition header line (RFC 6266). A name that is not plain ASCII stands in
// filename* (RFC 8187), behind a readable filename for clients that do not know it. Control characters show
// as "_".
std::string inlineDisposition(std::string_view fileName);
std::string attachmentDisposition(std::string_view fileName);
