// The JSON reader beside a widely used standard parser, on the same texts: a typical command,
// a large text of many small objects, strings full of escapes, many numbers, one wide object,
// and texts nested 10, 100 and 500 deep. The two parsers run in turn on each text, round after
// round, so that a busy machine slows both alike; the table at the end gives, for each text,
// the reader's CPU time divided by the standard parser's (the median over the rounds: under 1.0
// the reader is faster). For the deep texts the time per level should stay flat as depth grows.
//
// Usage: json_bench [--rounds=N] [Google Benchmark flags]   (3 rounds unless told)

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "json/tree_dictionary.h"

namespace {

const std::string kCommand =
    R"({"obj_id":"p1","cmd":"create","type":"wprogress","style":3,"title":"Copying",)"
    R"("message":"Step 1","progress":0.25,"btn_spec":[{"id":"stop","text":"Stop"}]})";

// About 1 MB: an array of small objects under one key.
std::string ManySmallObjects() {
  std::string text = R"({"items":[)";
  for (int i = 0; text.size() < 1'000'000; ++i) {
    if (i > 0) text += ',';
    text += R"({"id":"item)" + std::to_string(i) + R"(","title":"Copying files","progress":0.)" +
            std::to_string(i % 100) + R"(,"done":false,"note":null,"step":)" + std::to_string(i) +
            "}";
  }
  text += "]}";
  return text;
}

// About 100 KB of messages in which every kind of escape comes up: quotes, backslashes, line
// breaks, tabs, \u escapes of accented letters and surrogate pairs.
std::string Escapes() {
  std::string text = R"({"messages":[)";
  for (int i = 0; text.size() < 100'000; ++i) {
    if (i > 0) text += ',';
    text += R"("Copying \"file )" + std::to_string(i) +
            R"(.txt\" to C:\\Users\\me\\Documents\n\tstep \u00e9t\u00e9 \ud83d\ude00 done\/")";
  }
  text += "]}";
  return text;
}

// About 100 KB of numbers: whole, negative, fractions and exponents.
std::string ManyNumbers() {
  std::string text = R"({"values":[)";
  for (int i = 0; text.size() < 100'000; ++i) {
    if (i > 0) text += ',';
    text += std::to_string(i) + ",-" + std::to_string(i * 7) + ",0." + std::to_string(i % 1000) +
            "," + std::to_string(i % 97) + ".5e-" + std::to_string(i % 12);
  }
  text += "]}";
  return text;
}

// One object with 2000 keys side by side.
std::string WideObject() {
  std::string text = "{";
  for (int i = 0; i < 2000; ++i) {
    if (i > 0) text += ',';
    text += R"("key_)" + std::to_string(i) + R"(":)" +
            (i % 2 ? std::to_string(i) : R"("value )" + std::to_string(i) + '"');
  }
  text += "}";
  return text;
}

// Objects nested `depth` deep, each level with a name and a value beside the nested one.
std::string Nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += R"({"level":"x","a":)";
  text += "1";
  text.append(static_cast<std::size_t>(depth), '}');
  return text;
}

struct Text {
  const char* name;
  int depth;  // 0: not a nesting text
  std::string json;
};

const std::vector<Text>& Texts() {
  static const std::vector<Text> texts = {
      {"command", 0, kCommand},        {"1MB", 0, ManySmallObjects()},
      {"escapes", 0, Escapes()},       {"numbers", 0, ManyNumbers()},
      {"wide", 0, WideObject()},       {"nested10", 10, Nested(10)},
      {"nested100", 100, Nested(100)}, {"nested500", 500, Nested(500)},
  };
  return texts;
}

void Label(benchmark::State& state, const Text& text) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(text.json.size()));
  if (text.depth > 0) {
    state.counters["per_level"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * text.depth,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  }
}

void Reader(benchmark::State& state, const Text* text) {
  for (auto _ : state) {
    auto result = JSON::JSONStringToTreeDictionary(text->json);
    benchmark::DoNotOptimize(result.get());
  }
  Label(state, *text);
}

void Nlohmann(benchmark::State& state, const Text* text) {
  for (auto _ : state) {
    auto result = nlohmann::json::parse(text->json);
    benchmark::DoNotOptimize(result.size());
  }
  Label(state, *text);
}

// Prints the runs as usual and keeps each one's CPU time per iteration for the ratio table.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  RatioReporter() : ConsoleReporter(OO_Tabular) {}  // no colour codes: the output goes to logs
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      cpu_[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios() const {
    std::printf(
        "\nreader / nlohmann, CPU time, median over the rounds (under 1.0: reader faster)\n");
    for (const Text& text : Texts()) {
      auto reader = cpu_.find(std::string("reader/") + text.name);
      auto standard = cpu_.find(std::string("nlohmann/") + text.name);
      if (reader == cpu_.end() || standard == cpu_.end()) continue;
      std::vector<double> ratios;
      std::size_t n = std::min(reader->second.size(), standard->second.size());
      for (std::size_t i = 0; i < n; ++i) ratios.push_back(reader->second[i] / standard->second[i]);
      std::sort(ratios.begin(), ratios.end());
      std::printf("  %-10s %.2f   (rounds: %zu, lowest %.2f, highest %.2f)\n", text.name,
                  ratios[ratios.size() / 2], ratios.size(), ratios.front(), ratios.back());
    }
  }

 private:
  std::map<std::string, std::vector<double>> cpu_;
};

}  // namespace

int main(int argc, char** argv) {
  int rounds = 3;
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    if (std::strncmp(argv[i], "--rounds=", 9) == 0) {
      rounds = std::max(1, std::atoi(argv[i] + 9));
    } else {
      args.push_back(argv[i]);
    }
  }
  for (int round = 0; round < rounds; ++round) {
    for (const Text& text : Texts()) {
      benchmark::RegisterBenchmark((std::string("reader/") + text.name).c_str(), Reader, &text);
      benchmark::RegisterBenchmark((std::string("nlohmann/") + text.name).c_str(), Nlohmann, &text);
    }
  }
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
