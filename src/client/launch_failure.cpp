#include "client/launch_failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "client/helper_lookup.h"

namespace qem_client {

namespace {

using reason = launch_error::reason;

// What the helper's output says about a display it could not open, or "".
std::string DisplayComplaint(const std::vector<std::string>& said) {
  for (const std::string& line : said) {
    if (line.find("could not connect to display") != std::string::npos ||
        line.find("no Qt platform plugin could be initialized") != std::string::npos ||
        line.find("Failed to create wl_display") != std::string::npos) {
      return line;
    }
  }
  return "";
}

std::string DisplayAdvice() {
  const char* display = std::getenv("DISPLAY");
  std::string where = display && *display ? "DISPLAY=" + std::string(display) + " can't be reached"
                                          : "DISPLAY is not set";
  return where + "; run it on a desktop, or set QT_QPA_PLATFORM=offscreen to run without one";
}

}  // namespace

launch_error start_failure(const std::string& path, bool named, int error_number) {
  const std::string helper = "the helper \"" + path + "\"";
  if (error_number == ENOENT || error_number == ENOTDIR) {
    const std::string by = named ? std::string(" (named by ") + kHelperVariable + ")" : "";
    return launch_error(reason::missing, helper + " is missing" + by);
  }
  return launch_error(reason::not_executable,
                      helper + " can't be run: " + std::strerror(error_number));
}

launch_error ended_before_serving(int status, const std::vector<std::string>& said) {
  const std::string display = DisplayComplaint(said);
  if (!display.empty()) {
    return launch_error(reason::no_display,
                        "the helper could not open a display (" + display + "): " + DisplayAdvice(),
                        status, display);
  }
  const std::string last = said.empty() ? "" : said.back();
  std::string message =
      status > 128
          ? "the helper was ended by signal " + std::to_string(status - 128) + " before it served"
          : "the helper exited with status " + std::to_string(status) + " before it served";
  if (!last.empty()) message += ": " + last;
  return launch_error(reason::exited, message, status, last);
}

launch_error not_serving_within(std::chrono::milliseconds limit) {
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%g", static_cast<double>(limit.count()) / 1000.0);
  return launch_error(reason::timed_out, std::string("the helper did not serve within ") + seconds +
                                             " s and was ended");
}

}  // namespace qem_client
