// A small program that the cross-process tests start: it takes a lock and holds it until it is
// killed.
//
//   channel_helper hold-lock LOCK READY   take LOCK, then make the file READY and wait to be killed
//
// Exit status 2 on bad usage.

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/log_file.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.size() != 3 || args[0] != "hold-lock") {
    std::fprintf(stderr, "channel_helper: bad usage\n");
    return 2;
  }
  auto lock = lock_file::occupy(platform::FolderItem(args[1]), log_file::make_null());
  std::ofstream{args[2]};
  for (;;) ::pause();
}
