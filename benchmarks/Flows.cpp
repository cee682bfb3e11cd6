// What flows cost by themselves: reading one of a thousand steps, and finding an element among five hundred.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "simulator/flow/FlowReader.h"

namespace {

using namespace simulator;

void readsAThousandSteps(benchmark::State& state) {
  static constexpr const char* kSteps[] = {
      "- tapOn: Groceries\n",
      "- assertVisible: {id: note, below: {text: \"Groc.*\"}, enabled: true}\n",
      "- tapOn: {point: \"50%,20%\", repeat: 3}\n",
      "- extendedWaitUntil: {visible: \"${NAME} .*\", timeout: 2000}\n",
      "- assertTrue: ${output.count + 1 > Number(LIMIT)}\n",
  };
  const auto file =
      std::filesystem::temp_directory_path() / ("steps-" + std::to_string(::getpid()) + ".yaml");
  std::ofstream stream(file);
  stream << "appId: com.example.notes\nenv: {NAME: Ada, LIMIT: \"3\"}\n---\n";
  for (int i = 0; i < 1000; ++i) stream << kSteps[i % 5];
  stream.close();
  for (auto _ : state) {
    std::string problem;
    const auto flow = readFlow(file, problem);
    if (!flow) std::abort();
    benchmark::DoNotOptimize(flow->steps.size());
  }
  std::filesystem::remove(file);
}
BENCHMARK(readsAThousandSteps)->Name("flow/read a thousand steps")->Unit(benchmark::kMillisecond);

/// A hundred rows of a title, a text, a date and a button.
std::vector<ios::VisibleElement> fiveHundred() {
  std::vector<ios::VisibleElement> all;
  const auto add = [&all](const std::string& text, ios::CGRect frame, int parent) {
    auto& element = all.emplace_back();
    element.text = text;
    element.identifier = "part";
    element.frame = frame;
    element.parent = parent;
  };
  for (int row = 0; row < 100; ++row) {
    const double y = row * 60;
    const int parent = row * 5;
    add("", ios::CGRectMake(0, y, 375, 60), -1);
    add("Title " + std::to_string(row), ios::CGRectMake(20, y, 200, 20), parent);
    add("A text that says a little more about number " + std::to_string(row),
        ios::CGRectMake(20, y + 20, 200, 20), parent);
    add("Yesterday", ios::CGRectMake(300, y, 60, 20), parent);
    add("Delete", ios::CGRectMake(300, y + 30, 60, 20), parent);
  }
  return all;
}

void finds(benchmark::State& state, const char* written) {
  const auto elements = fiveHundred();
  const auto context = std::make_shared<FlowContext>();
  const Selector wanted = selector({context, "", YAML::Load(written), 1, 1});
  for (auto _ : state) {
    const auto found = elementsThatFit(wanted, elements);
    if (found.empty()) std::abort();
    benchmark::DoNotOptimize(found.front());
  }
}
BENCHMARK_CAPTURE(finds, index, "{text: Delete, index: 70}")
    ->Name("flow/find by index")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(finds, expression, "{text: \".*more about (number|page) 9[0-9]\"}")
    ->Name("flow/find by expression")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(
    finds, relations,
    "{text: Delete, below: {text: Title 41}, childOf: {containsDescendants: [{text: Title .*}, {text: "
    "Yesterday}]}}")
    ->Name("flow/find by relations")
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
