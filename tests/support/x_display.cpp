#include "support/x_display.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <sstream>

#include "support/temp_env.h"

namespace qem_test {

using namespace std::chrono_literals;

std::string OnPath(const std::string& program) {
  std::istringstream path(std::getenv("PATH") ? std::getenv("PATH") : "");
  for (std::string dir; std::getline(path, dir, ':');) {
    std::string candidate = dir + "/" + program;
    if (!dir.empty() && ::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return "";
}

std::string XDisplay::Missing() {
  if (OnPath("Xvfb").empty()) return "Xvfb";
  if (OnPath("xdotool").empty()) return "xdotool";
  return "";
}

XDisplay::XDisplay(const std::filesystem::path& folder, const std::string& screen)
    : folder_(folder) {
  const auto number = folder / "display";
  // Xvfb picks a free display and writes its number to its output.
  server_ = Spawn({OnPath("Xvfb"), "-displayfd", "1", "-nolisten", "tcp", "-screen", "0", screen},
                  {.stdout_path = number, .stderr_path = folder / "xvfb.txt"});
  std::string seen;
  if (!WaitUntil([&] { return (seen = ReadFile(number)).find('\n') != seen.npos; }, 60s)) return;
  name_ = std::string(":").append(seen, 0, seen.find('\n'));
  environment_.push_back(std::make_unique<ScopedEnv>("QT_QPA_PLATFORM", "xcb"));
  environment_.push_back(std::make_unique<ScopedEnv>("DISPLAY", name_.c_str()));
  environment_.push_back(std::make_unique<ScopedEnv>("DBUS_SESSION_BUS_ADDRESS", "disabled:"));
}

XDisplay::~XDisplay() {
  environment_.clear();
  // SIGTERM, so that Xvfb removes its lock and socket files.
  server_.Kill(SIGTERM);
  server_.Wait(30s);
}

std::string XDisplay::Log() const {
  return ReadFile(folder_ / "xvfb.txt");
}

int XDisplay::Xdotool(const std::vector<std::string>& args, std::string& out) const {
  std::vector<std::string> argv = {OnPath("xdotool")};
  argv.insert(argv.end(), args.begin(), args.end());
  const auto file = folder_ / "xdotool.out";
  int status = Spawn(argv, {.stdout_path = file, .stderr_path = "/dev/null"}).Wait(30s);
  out = ReadFile(file);
  return status;
}

std::string XDisplay::MappedWindow(const std::string& title) const {
  std::string out;
  if (Xdotool({"search", "--onlyvisible", "--name", "^" + title + "$"}, out) != 0) return "";
  return out.substr(0, out.find('\n'));
}

bool XDisplay::Click(const std::string& window, int x, int y) const {
  std::string ignored;
  return Xdotool(
             {"mousemove", "--window", window, std::to_string(x), std::to_string(y), "click", "1"},
             ignored) == 0;
}

}  // namespace qem_test
