#pragma once

namespace environment {

// Removes the environment variables that neither the commands nor the converter need, for example those of
// the request. FILEMAN_PASS_ENVIRONMENT names more variables to keep, separated by commas.
void clean();

} // namespace environment
