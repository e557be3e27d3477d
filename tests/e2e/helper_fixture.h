#pragma once
// Shared by the process-level tests: the real executable started in the test's private folders,
// its stdout and stderr kept, and the options that make it serve.

#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

class HelperTest : public TempEnvTest {
 protected:
  Kept StartHelper(std::vector<std::string> args, const std::string& name = "helper") {
    args.insert(args.begin(), QEM_UTIL_PATH);
    return Kept(args, root(), name);
  }
  static std::vector<std::string> ServerArgs() {
    return {"--stay-alive-key=alive", "--channel=cmd", "--reply-channel=rep",
            "--launch-key=launched"};
  }
};

}  // namespace qem_test
