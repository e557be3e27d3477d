#pragma once
// Shared by the client's process-level tests.

#include <string>

#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

class ClientTest : public TempEnvTest {
 protected:
  // The helper without windows (client_stand_in): what it receives ends up in Received().
  static std::string StandIn() { return QEM_STAND_IN; }
  std::string Received() { return ReadFile(tmp() / "received"); }
};

}  // namespace qem_test
