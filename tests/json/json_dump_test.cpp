// The dump tool as a process: what it prints and how it ends. The one-line form it shares with
// the reader's tests is proven there.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"
#include "support/temp_env.h"

namespace {

using JsonDumpTool = qem_test::TempEnvTest;

TEST_F(JsonDumpTool, PrintsTheDictionaryIndentedOrSaysWhyNotOnOneLine) {
  auto run = [&](std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), QEM_JSON_DUMP_PATH);
    return qem_test::Run(args, root(), input);
  };
  qem_test::WriteFile(root() / "cmd.json", R"({"a":[1,{}],"b":{"c":null}})");
  auto ran = run({(root() / "cmd.json").string()});
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out, "{\n  \"a\": [\n    1,\n    {}\n  ],\n  \"b\": {\n    \"c\": null\n  }\n}\n");
  EXPECT_EQ(ran.err, "");
  const std::string missing = (root() / "missing.json").string();
  ran = run({missing});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.err.rfind("qem_json_dump: cannot read " + missing + ": ", 0), 0u) << ran.err;
  EXPECT_EQ(ran.err.find('\n'), ran.err.size() - 1) << ran.err;
  ran = run({"-"}, std::string(600, '[') + std::string(600, ']'));  // standard input
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out + ran.err, "qem_json_dump: JSON nested too deeply\n");
  EXPECT_EQ(run({"a", "b"}).status, 2);
}

}  // namespace
