#include "platform/system.h"

int main(int argc, char** argv) {
  platform::System::SetArguments(argc, argv);
  return 0;
}
