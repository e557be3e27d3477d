// The dump tool as a process: what it prints and how it ends. The one-line form it shares with
// the reader's tests is proven there.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"
#include "support/temp_env.h"

namespace {

class JsonDumpTool : public qem_test::TempEnvTest {
 protected:
  // Runs the tool; gives its exit status and fills the two outputs.
  int Run(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), QEM_JSON_DUMP_PATH);
    auto ran = qem_test::Run(args, root(), input);
    out = ran.out;
    err = ran.err;
    return ran.status;
  }
  std::string out, err;
};

TEST_F(JsonDumpTool, PrintsTheDictionaryIndentedOrSaysWhyNotOnOneLine) {
  qem_test::WriteFile(root() / "cmd.json", R"({"a":[1,{}],"b":{"c":null}})");
  EXPECT_EQ(Run({(root() / "cmd.json").string()}), 0);
  EXPECT_EQ(out, "{\n  \"a\": [\n    1,\n    {}\n  ],\n  \"b\": {\n    \"c\": null\n  }\n}\n");
  EXPECT_EQ(err, "");
  for (const std::string& unreadable : {(root() / "missing.json").string(), root().string()}) {
    EXPECT_EQ(Run({unreadable}), 1);
    EXPECT_EQ(err.rfind("qem_json_dump: cannot read " + unreadable + ": ", 0), 0u) << err;
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;
  }
  EXPECT_EQ(Run({"-"}, std::string(600, '[') + std::string(600, ']')), 1);  // standard input
  EXPECT_EQ(err, "qem_json_dump: JSON nested too deeply\n");
  EXPECT_EQ(out, "");
  EXPECT_EQ(Run({"--help"}), 0);
  EXPECT_NE(out, "");
  EXPECT_EQ(Run({}), 2);
  EXPECT_EQ(Run({"a", "b"}), 2);
}

}  // namespace
