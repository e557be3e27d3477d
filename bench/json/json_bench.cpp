// The JSON reader beside a widely used standard parser, on the same texts: a typical command,
// a large text of many small objects, and texts nested 10, 100 and 500 deep. Each pair of
// figures is meant to be read as a ratio; for the deep texts the time per level should stay
// flat as the depth grows.

#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>
#include <string>

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

// Objects nested `depth` deep, each level with a name and a value beside the nested one.
std::string Nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += R"({"level":"x","a":)";
  text += "1";
  text.append(static_cast<std::size_t>(depth), '}');
  return text;
}

const std::string& Text(int which) {
  static const std::string texts[] = {kCommand, ManySmallObjects(), Nested(10), Nested(100),
                                      Nested(500)};
  return texts[which];
}

const char* const kNames[] = {"command", "1MB", "nested10", "nested100", "nested500"};
const int kDepths[] = {0, 0, 10, 100, 500};

void Label(benchmark::State& state, int which) {
  state.SetLabel(kNames[which]);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(Text(which).size()));
  if (kDepths[which] > 0) {
    state.counters["per_level"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kDepths[which],
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  }
}

void BM_TreeDictionary(benchmark::State& state) {
  const int which = static_cast<int>(state.range(0));
  const std::string& text = Text(which);
  for (auto _ : state) {
    auto result = JSON::JSONStringToTreeDictionary(text);
    benchmark::DoNotOptimize(result.get());
  }
  Label(state, which);
}

void BM_NlohmannParse(benchmark::State& state) {
  const int which = static_cast<int>(state.range(0));
  const std::string& text = Text(which);
  for (auto _ : state) {
    auto result = nlohmann::json::parse(text);
    benchmark::DoNotOptimize(result.size());
  }
  Label(state, which);
}

BENCHMARK(BM_TreeDictionary)->DenseRange(0, 4);
BENCHMARK(BM_NlohmannParse)->DenseRange(0, 4);

}  // namespace

BENCHMARK_MAIN();
