#include <malloc.h>
#include <simdjson.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "Measure.h"
#include "Shape.h"
#include "data/TreeWriter.h"
#include "document/Configuration.h"
#include "floor/Tree.h"
#include "policy/VelaPolicyTranslateSm.h"

// Reads and prints the document that the environment variable BENCH_DOCUMENT names (report.py makes
// it): one device, one VRF, rules of one origin whose matches have destination prefixes.

namespace Bench {
namespace {

std::unique_ptr<Host::SourceText> document() {
  const char* const file = std::getenv("BENCH_DOCUMENT");
  std::string why = "BENCH_DOCUMENT is not set";
  auto source = file == nullptr ? nullptr : Host::SourceText::read(file, why);
  if (source == nullptr) {
    std::cerr << "bench_document: " << why << '\n';
    std::exit(2);
  }
  return source;
}

bool read(const Host::SourceText& source, const Host::Trees& trees) {
  std::ostringstream said;
  Host::Report report(said, false);
  Host::Progress progress(said, false);
  return Host::readConfiguration(source, trees, report, progress);
}

void ours(benchmark::State& state) {
  const auto source = document();
  for (auto _ : state) {
    const Host::Trees trees;
    timed(state, [&] {
      if (!read(*source, trees)) {
        state.SkipWithError("the document has faults");
      }
    });
  }
  itemsPerIteration(state, source->text().size());
}

/// What simdjson parses, inserted into lean containers.
void floor(benchmark::State& state) {
  const auto source = document();
  for (auto _ : state) {
    Floor::Source<Lean> tree;
    std::size_t inserted = 0;
    timed(state, [&] {
      simdjson::dom::parser parser;
      const simdjson::dom::element root = parser.parse(source->text());
      for (const auto set : root["vela-l3:policy-source"]["policy-set"].get_array()) {
        auto* const setTo = tree.policySetIs(std::string_view(set["device-name"]));
        for (const auto policy : set["policy"].get_array()) {
          auto* const policyTo = setTo->policyIs(L3::VrfName(std::string_view(policy["vrf-name"])));
          for (const auto rule : policy["rule"].get_array()) {
            const auto priority = static_cast<std::uint32_t>(std::uint64_t(rule["priority"]));
            auto* const ruleTo = policyTo->ruleIs(priority);
            for (const auto origin : rule["origin"].get_array()) {
              auto* const match = ruleTo->originIs(std::string_view(origin["name"]))->matchIs();
              for (const auto prefix : origin["match"]["dst-ip"].get_array()) {
                match->dstIpIs(Prefix(std::string_view(prefix)));
                ++inserted;
              }
            }
          }
        }
      }
    });
    benchmark::DoNotOptimize(inserted);
  }
  itemsPerIteration(state, source->text().size());
}

class Discarded final : public Host::ByteSink {
 public:
  void write(std::string_view bytes) override { size_ += bytes.size(); }
  std::size_t size() const { return size_; }

 private:
  std::size_t size_ = 0;
};

void printing(benchmark::State& state) {
  const auto source = document();
  const Host::Trees trees;
  if (!read(*source, trees)) {
    state.SkipWithError("the document has faults");
  }
  double seconds = 0;
  std::size_t bytes = 0;
  for (auto _ : state) {
    Discarded sink;
    const double start = threadSeconds();
    Host::JsonWriter json(sink, Host::Layout::pretty);
    json.openObject();
    Host::TreeWriter writer(json);
    for (const Host::Node* const top : Host::Schema::instance().tops()) {
      writer.container(*top, trees);
    }
    json.closeObject();
    json.endLine();
    seconds += threadSeconds() - start;
    bytes += sink.size();
  }
  state.counters["value"] = static_cast<double>(bytes) / seconds / 1e6;
}

/// What is in memory in the end: the entities of both generations, the machines, the text.
void memory(benchmark::State& state) {
  for (auto _ : state) {
    const auto before = mallinfo2();
    const auto source = document();
    const Host::Trees trees;
    read(*source, trees);
    const auto root = VelaPolicyMonitor::policyTranslateRootSmFactory(trees.policyV1,
                                                                      trees.policyV2, trees.status);
    const auto after = mallinfo2();
    state.counters["value"] =
        static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) /
        (1 << 20);
  }
}

BENCHMARK(ours)->Name("reading a document/ours")->UseManualTime()->Iterations(1);
BENCHMARK(floor)->Name("reading a document/floor")->UseManualTime()->Iterations(1);
BENCHMARK(printing)->Name("printing a document, MB/s/ours")->Iterations(1);
BENCHMARK(memory)->Name("vpm translate, peak memory in MiB/floor")->Iterations(1);

}  // namespace
}  // namespace Bench
