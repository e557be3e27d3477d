// lock_holder NAME: takes the lock NAME in the temporary folder (waiting as long as it must),
// prints "held" on stdout, and keeps it until it is killed. Stands in for the starting
// application in process-level tests.
#include <unistd.h>

#include <cstdio>

#include "channel/lock_file.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: lock_holder NAME\n");
    return 2;
  }
  auto lock = lock_file::occupy(argv[1], log_file::make_null());
  std::printf("held\n");
  std::fflush(stdout);
  for (;;) ::pause();
}
