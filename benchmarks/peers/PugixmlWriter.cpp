// The same document through pugixml.
#include <benchmark/benchmark.h>

#include <pugixml.hpp>

#include "../serialization/SceneWorkload.h"

namespace {

void text(char (&buffer)[32], double number) { std::snprintf(buffer, sizeof buffer, "%.10g", number); }

void writePugixml(const char* path) {
    pugi::xml_document document;
    pugi::xml_node scene = document.append_child("scene");
    char buffer[32];
    for (int i = 0; i < workload::elementCount; ++i) {
        pugi::xml_node layer = scene.append_child("layer");
        layer.append_attribute("id") = i;
        layer.append_attribute("name") = "Layer & plate";
        text(buffer, workload::number(i));
        layer.append_attribute("x") = buffer;
        text(buffer, workload::number(i) * 0.001);
        layer.append_attribute("y") = buffer;
        text(buffer, workload::number(i) * 3);
        layer.text() = buffer;
    }
    document.save_file(path, "\t");
}

void xmlWritePugixml(benchmark::State& state) {
    const std::string path = workload::temporaryFile("pugixml.xml");
    writePugixml(path.c_str());
    const std::size_t size = workload::checkAndRemove(path);
    if (!size) return state.SkipWithError("wrong document");
    for (auto _ : state) writePugixml("/dev/null");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(xmlWritePugixml);

}  // namespace
