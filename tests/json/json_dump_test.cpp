// The dump tool as a process: what it prints and how it ends. The one-line form it shares with
// the reader's tests is proven there.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/temp_env.h"

namespace {

using JsonDumpTool = qem_test::TempEnvTest;

TEST_F(JsonDumpTool, PrintsTheDictionaryIndentedOrSaysWhyNotOnOneLine) {
  qem_test::WriteFile(root() / "cmd.json", R"({"a":[1,{}],"b":{"c":null}})");
  const std::string missing = (root() / "missing.json").string(), folder = root().string();
  const struct {
    std::vector<std::string> args;
    std::string input;
    int status;
    std::string out, err;  // err: how the line on stderr begins
  } rows[] = {
      {{(root() / "cmd.json").string()},
       "",
       0,
       "{\n  \"a\": [\n    1,\n    {}\n  ],\n  \"b\": {\n    \"c\": null\n  }\n}\n",
       ""},
      {{missing}, "", 1, "", "qem_json_dump: cannot read " + missing + ": "},
      {{folder}, "", 1, "", "qem_json_dump: cannot read " + folder + ": "},
      {{"-"},
       std::string(600, '[') + std::string(600, ']'),
       1,
       "",
       "qem_json_dump: JSON nested too deeply"},
      {{"a", "b"}, "", 2, "", "usage: qem_json_dump "},
  };
  for (const auto& row : rows) {
    std::vector<std::string> args = row.args;
    args.insert(args.begin(), QEM_JSON_DUMP_PATH);
    const auto ran = qem_test::Run(args, root(), row.input);
    EXPECT_EQ(ran.status, row.status) << row.args[0];
    EXPECT_EQ(ran.out, row.out) << row.args[0];
    EXPECT_TRUE(ran.err.starts_with(row.err)) << ran.err;
    EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), row.status == 0 ? 0 : 1) << ran.err;
  }
}

}  // namespace
