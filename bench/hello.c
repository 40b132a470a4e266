// The smallest CGI program: it writes a header and a short body.

#include <unistd.h>

int main(void) {
    static const char answer[] = "Content-type:text/html;charset=utf-8\n\n<html>\n<p>hello</p>\n</html>\n";
    return write(STDOUT_FILENO, answer, sizeof answer - 1) == (ssize_t)(sizeof answer - 1) ? 0 : 1;
}
