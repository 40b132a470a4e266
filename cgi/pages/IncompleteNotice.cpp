#include "cgi/pages/IncompleteNotice.h"

#include "cgi/answer/Header.h"
#include "cgi/pages/PageLine.h"

void page::writeIncompleteNotice() {
    if (const std::size_t places = unreadPlaces(); places > 0)
        strictLine(1, R"(<p role="alert">Places of the storage that could not be read: )" +
                          std::to_string(places) + ". Entries may be missing.</p>");
}
