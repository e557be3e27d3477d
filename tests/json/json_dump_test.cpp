// The dump tool's canonical form, and the tool as a process.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "canonical_form.h"
#include "platform/dictionary.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace {

using qem_json_dump::CanonicalForm;

TEST(JsonDumpForm, ScalarsShowTheirType) {
  EXPECT_EQ(CanonicalForm(nullptr), "null");
  EXPECT_EQ(CanonicalForm(true), "true");
  EXPECT_EQ(CanonicalForm(false), "false");
  EXPECT_EQ(CanonicalForm(1.0), "1");
  EXPECT_EQ(CanonicalForm(0.1), "0.1");
  EXPECT_EQ(CanonicalForm(-2.5e300), "-2.5e+300");
  EXPECT_EQ(CanonicalForm(HUGE_VAL), "INF");
  EXPECT_EQ(CanonicalForm("1"), R"("1")");
  EXPECT_EQ(CanonicalForm(std::string("q\"b\\\b\f\n\r\t\x01\x7F\xC3\xA9\0", 14)),
            "\"q\\\"b\\\\\\b\\f\\n\\r\\t\\u0001\\u007f\xC3\xA9\\u0000\"");
}

platform::Variant Sample() {
  auto inner = platform::NewDictionary();
  inner->SetValue("id", "stop");
  auto list = platform::NewArray();
  list->push_back(inner);
  list->resize(2);  // the second element stays nil
  auto top = platform::NewDictionary();
  top->SetValue("z", 3);
  top->SetValue("btn_spec", list);
  top->SetValue("e", platform::NewDictionary());
  top->SetValue("a", platform::NewArray());
  return top;
}

TEST(JsonDumpForm, ContainersOnOneLineOrIndented) {
  EXPECT_EQ(CanonicalForm(Sample()),
            R"({"z": 3, "btn_spec": [{"id": "stop"}, null], "e": {}, "a": []})");
  EXPECT_EQ(CanonicalForm(Sample(), 2), R"({
  "z": 3,
  "btn_spec": [
    {
      "id": "stop"
    },
    null
  ],
  "e": {},
  "a": []
})");
}

class JsonDumpTool : public qem_test::TempEnvTest {
 protected:
  // Runs the tool; gives its exit status and fills the two outputs.
  int Run(const std::vector<std::string>& args, const std::string& input = "") {
    std::vector<std::string> argv{QEM_JSON_DUMP_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    qem_test::SpawnOptions options;
    if (!input.empty()) {
      options.stdin_path = (root() / "stdin").string();
      qem_test::WriteFile(options.stdin_path, input);
    }
    options.stdout_path = (root() / "stdout").string();
    options.stderr_path = (root() / "stderr").string();
    int status = qem_test::Spawn(argv, options).Wait();
    out = qem_test::ReadFile(options.stdout_path);
    err = qem_test::ReadFile(options.stderr_path);
    return status;
  }
  std::string out, err;
};

TEST_F(JsonDumpTool, PrintsTheDictionaryOfAFileOrOfStandardInput) {
  const std::string text = R"({"obj_id":"p1","progress":0.25,"ok":true,"btn_spec":[]})";
  const std::string expected =
      "{\n  \"obj_id\": \"p1\",\n  \"progress\": 0.25,\n  \"ok\": true,\n  \"btn_spec\": []\n}\n";
  qem_test::WriteFile(root() / "cmd.json", text);
  EXPECT_EQ(Run({(root() / "cmd.json").string()}), 0);
  EXPECT_EQ(out, expected);
  EXPECT_EQ(err, "");
  EXPECT_EQ(Run({"-"}, text), 0);
  EXPECT_EQ(out, expected);
}

TEST_F(JsonDumpTool, FailuresGiveOneLineAndStatusOne) {
  EXPECT_EQ(Run({(root() / "missing.json").string()}), 1);
  EXPECT_EQ(err.rfind("qem_json_dump: cannot read ", 0), 0u) << err;
  EXPECT_EQ(err.find('\n'), err.size() - 1);
  EXPECT_EQ(Run({root().string()}), 1);  // a folder
  EXPECT_EQ(err.rfind("qem_json_dump: cannot read ", 0), 0u) << err;
  EXPECT_EQ(Run({"-"}, std::string(600, '[') + std::string(600, ']')), 1);
  EXPECT_EQ(err, "qem_json_dump: JSON nested too deeply\n");
  EXPECT_EQ(out, "");
}

TEST_F(JsonDumpTool, HelpDocumentsTheFormAndBadUseIsStatusTwo) {
  EXPECT_EQ(Run({"--help"}), 0);
  EXPECT_NE(out.find("usage: qem_json_dump FILE|-"), std::string::npos);
  EXPECT_NE(out.find("Dictionary"), std::string::npos);
  EXPECT_EQ(Run({}), 2);
  EXPECT_EQ(Run({"a", "b"}), 2);
}

}  // namespace
