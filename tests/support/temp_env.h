#pragma once
// A fixture that gives each test its own private folders (see PrivateFolders), so that tests
// never meet each other's locks or channels, also under `ctest -j`. The folders come before
// anything of the test's own and go after it.

#include <gtest/gtest.h>

#include "support/private_folders.h"

namespace qem_test {

class TempEnvTest : public ::testing::Test, public PrivateFolders {};

}  // namespace qem_test
