#include "cgi/pages/PageHead.h"

#include "cgi/answer/Header.h"
#include "cgi/pages/PageLine.h"

// The scripts read a page by its kind, and show how much of the storage is missing in it.
void page::writeMeta() {
    strictLine(1, R"(<meta charset="utf-8" />)");
    strictLine(1, "<title>Result file manager</title>");
    strictLine(1, R"(<meta name="fileman-answers" content="strict" />)");
    if (const std::size_t places = unreadPlaces(); places > 0)
        strictLine(1, R"(<meta name="fileman-incomplete" content=")" + std::to_string(places) + R"(" />)");
}
