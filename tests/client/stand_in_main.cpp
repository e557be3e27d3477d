// client_stand_in: the helper without windows, for the client's tests. Takes the helper's
// arguments, appends each message of the command channel and a line break to "received" in the
// temporary folder, takes the launch lock, and quits once the stay-alive lock is free.

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "platform/folder_item.h"

int main(int argc, char** argv) {
  std::string alive, channel, up;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const std::string value = arg.substr(arg.find('=') + 1);
    if (arg.rfind("--stay-alive-key=", 0) == 0) alive = value;
    if (arg.rfind("--channel=", 0) == 0) channel = value;
    if (arg.rfind("--launch-key=", 0) == 0) up = value;
  }
  auto null = log_file::make_null();
  auto sock = many_to_one::receiver::make(channel, null);
  if (!sock) return 3;
  std::shared_ptr<lock_file> launched;
  std::ofstream received(platform::SpecialFolder::Temporary().Child("received").Path(),
                         std::ios::app);
  for (;;) {
    if (!launched) launched = lock_file::make(up, null);
    if (lock_file::make(alive, null)) return 0;
    if (sock->data_waiting()) {
      if (auto op = sock->try_op()) {
        for (const auto& message : op->read_all()) received << message << '\n';
        received.flush();
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}
