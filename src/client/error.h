#pragma once
// What the client library throws. Every error derives from qem_client::error, so a caller can
// catch them all in one place; what() is one line that says what went wrong, plainly.

#include <stdexcept>
#include <string>
#include <utility>

namespace qem_client {

class error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Why a helper could not be launched. Nothing of the launch is left behind: no process, no lock,
// no file.
class launch_error : public error {
 public:
  enum class reason {
    bad_names,       // a given name is refused; nothing was touched
    files_unusable,  // a lock or channel can't be had (folder not writable, or taken)
    missing,         // the helper file isn't there
    not_executable,  // it is there but can't be run
    exited,          // it ended before it served; exit_status and helper_said tell more
    no_display,      // it ended because it could not open a display
    timed_out,       // it did not serve within the limit; it was ended
  };
  launch_error(reason why, const std::string& message, int exit_status = -1,
               std::string helper_said = "")
      : error(message), why(why), exit_status(exit_status), helper_said(std::move(helper_said)) {}
  reason why;
  int exit_status;          // of exited and no_display: as session::helper_status gives it
  std::string helper_said;  // the helper's last line of output that bears on it, or ""
};

// A command or a JSON text that can't be sent; nothing was sent.
class command_refused : public error {
 public:
  using error::error;
};

// A send after the helper has ended; nothing was sent.
class helper_gone : public error {
 public:
  explicit helper_gone(int exit_status)
      : error("the helper has ended (status " + std::to_string(exit_status) + ")"),
        exit_status(exit_status) {}
  int exit_status;
};

// A channel's files can't be read or written (a folder that is not the user's, a symbolic link
// in a data file's place, a full disk). A record being sent is not on the channel, and one being
// read stays there.
class channel_error : public error {
 public:
  channel_error(const std::string& message, int error_number)
      : error(message), error_number(error_number) {}
  int error_number;  // the operating system's error code behind it, or 0
};

}  // namespace qem_client
