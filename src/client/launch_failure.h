#pragma once
// What a launch that failed says: one plain line for each way a helper can fail to serve, from
// the start's own error or from the helper's status and its last words.

#include <chrono>
#include <string>
#include <vector>

#include "client/error.h"

namespace qem_client {

// The helper at `path` could not be started; `error_number` is the start's own errno. `named`:
// the path came from the environment variable, which is then what to fix.
launch_error start_failure(const std::string& path, bool named, int error_number);

// The helper ended with `status` (exit status, or 128 + a signal) before it served, having
// written `said` (its last lines, oldest first). A display it could not open is told with advice.
launch_error ended_before_serving(int status, const std::vector<std::string>& said);

// The helper did not serve within `limit`, and was ended.
launch_error not_serving_within(std::chrono::milliseconds limit);

}  // namespace qem_client
