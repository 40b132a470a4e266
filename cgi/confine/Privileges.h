#pragma once

namespace privileges {

// The process goes on as the user and group that started it, also when its file is set-user-id or
// set-group-id, and nothing that it starts can gain more (PR_SET_NO_NEW_PRIVS). False when an identity cannot
// be dropped: then the request must not go on.
bool drop();

// Removes every environment variable that no command and no converter needs: those of the request above all.
// FILEMAN_PASS_ENVIRONMENT names further ones to keep, with commas between them.
void cleanEnvironment();

} // namespace privileges
