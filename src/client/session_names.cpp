#include "client/session_names.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <random>

#include "channel/names.h"

namespace qem_client {

session_names session_names::unique() {
  std::random_device device;
  std::uniform_int_distribution<unsigned long> draw;
  const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
                       std::chrono::system_clock::now().time_since_epoch())
                       .count();
  char base[96];
  std::snprintf(base, sizeof base, "qemc.%ld.%llx.%08lx", static_cast<long>(::getpid()),
                static_cast<unsigned long long>(now), draw(device) & 0xFFFFFFFFul);
  return from_base(base);
}

session_names session_names::from_base(std::string_view base) {
  const std::string b(base);
  return {b + ".alive", b + ".up", b + ".cmd", b + ".reply"};
}

namespace {

std::optional<std::string> Check(const char* what, const std::string& name, bool is_channel) {
  if (name.empty()) return std::string(what) + " is empty";
  if (name.find_first_of(" =") != std::string::npos) {
    return std::string(what) + " \"" + name + "\" holds a blank or an \"=\"";
  }
  auto why = is_channel ? names::channel_id_refusal(name) : names::lock_name_refusal(name);
  if (why) return std::string(what) + " \"" + name + "\" " + *why;
  return std::nullopt;
}

}  // namespace

std::optional<std::string> refusal(const session_names& n) {
  if (auto why = Check("stay-alive key", n.stay_alive_key, false)) return why;
  if (auto why = Check("launch key", n.launch_key, false)) return why;
  if (auto why = Check("channel", n.channel, true)) return why;
  if (auto why = Check("reply channel", n.reply_channel, true)) return why;
  if (n.stay_alive_key == n.launch_key) return std::string("the two lock names are equal");
  if (n.channel == n.reply_channel) return std::string("the two channel ids are equal");
  return std::nullopt;
}

}  // namespace qem_client
