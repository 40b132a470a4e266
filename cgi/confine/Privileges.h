#pragma once

namespace privileges {

// Drops the rights that a set-user-id or set-group-id file has lent: the process continues as the user and
// group that started it. No program that it starts can gain rights (PR_SET_NO_NEW_PRIVS). Returns false when
// an identity cannot be dropped; then the request must not continue.
bool drop();

} // namespace privileges
