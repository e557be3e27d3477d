// The dump tool as a process: what it prints and how it ends.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"
#include "support/temp_env.h"

namespace {

class JsonDumpTool : public qem_test::TempEnvTest {
 protected:
  // Runs the tool; gives its exit status and fills the two outputs.
  int Run(const std::vector<std::string>& args, const std::string& input = "") {
    std::vector<std::string> argv{QEM_JSON_DUMP_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    qem_test::WriteFile(root() / "in", input);
    int status = qem_test::Spawn(argv, {root() / "in", root() / "out", root() / "err"}).Wait();
    out = qem_test::ReadFile(root() / "out");
    err = qem_test::ReadFile(root() / "err");
    return status;
  }
  std::string out, err;
};

TEST_F(JsonDumpTool, PrintsTheDictionaryOfAFileOrOfStandardInputIndentedAndEscaped) {
  const std::string text = R"({"p":0.1,"big":-2.5e300,"l":[{"k":[]},null,{}],)"
                           R"("s":"q\"b\\\b\f\n\r\t\u0001\u007f\u00e9\u0000"})";
  const std::string expected = R"({
  "p": 0.1,
  "big": -2.5e+300,
  "l": [
    {
      "k": []
    },
    null,
    {}
  ],
  "s": "q\"b\\\b\f\n\r\t\u0001\u007f)"
                               "\xC3\xA9"
                               R"(\u0000"
}
)";
  qem_test::WriteFile(root() / "cmd.json", text);
  EXPECT_EQ(Run({(root() / "cmd.json").string()}), 0);
  EXPECT_EQ(out, expected);
  EXPECT_EQ(err, "");
  EXPECT_EQ(Run({"-"}, text), 0);
  EXPECT_EQ(out, expected);
}

TEST_F(JsonDumpTool, FailuresGiveOneLineAndStatusOneAndBadUseStatusTwo) {
  for (const std::string& unreadable : {(root() / "missing.json").string(), root().string()}) {
    EXPECT_EQ(Run({unreadable}), 1);
    EXPECT_EQ(err.rfind("qem_json_dump: cannot read " + unreadable + ": ", 0), 0u) << err;
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;
  }
  EXPECT_EQ(Run({"-"}, std::string(600, '[') + std::string(600, ']')), 1);
  EXPECT_EQ(err, "qem_json_dump: JSON nested too deeply\n");
  EXPECT_EQ(out, "");
  EXPECT_EQ(Run({"--help"}), 0);
  EXPECT_NE(out, "");
  EXPECT_EQ(Run({}), 2);
  EXPECT_EQ(Run({"a", "b"}), 2);
}

}  // namespace
