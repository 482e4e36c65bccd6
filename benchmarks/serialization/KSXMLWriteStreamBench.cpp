// Writing a scene document: the library, and the C library's formatter by hand.
#include <benchmark/benchmark.h>
#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSFileWriteStream.h>
#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSXMLWriteStream.h>

#include "SceneWorkload.h"

namespace {

constexpr KSScope scope[] = {{"scene", 1, 0}, {"layer", 2, 0}, {"id", 2, 1},   {"name", 2, 2},
                             {"x", 2, 3},     {"y", 2, 4},     {nullptr, 0, 0}};

void writeScene(const char* path) {
    KSFileWriteStream file(KSURL(path, false));
    KSXMLWriteStream out(file);
    const KSString name("Layer & plate");
    out.pushScope(scope);
    out.startElement(1);
    for (int i = 0; i < workload::elementCount; ++i) {
        out.startElement(2);
        out.writeAttribute(1, i);
        out.writeAttribute(2, name);
        out.writeAttribute(3, workload::number(i));
        out.writeAttribute(4, workload::number(i) * 0.001);
        out.writeValue(workload::number(i) * 3);
        out.endElement();
    }
    out.endElement();
    out.close();
}

void writeByHand(const char* path) {
    std::FILE* file = std::fopen(path, "w");
    if (!file) return;
    std::fputs("<scene>\n", file);
    for (int i = 0; i < workload::elementCount; ++i) {
        std::fprintf(file,
                     "\t<layer id=\"%d\" name=\"Layer &amp; plate\" x=\"%.10g\" y=\"%.10g\">%.10g</layer>\n",
                     i, workload::number(i), workload::number(i) * 0.001, workload::number(i) * 3);
    }
    std::fputs("</scene>\n", file);
    std::fclose(file);
}

template <void (*write)(const char*)>
void xmlWrite(benchmark::State& state) {
    const std::string path = workload::temporaryFile("own.xml");
    write(path.c_str());
    const std::size_t size = workload::checkAndRemove(path);
    if (!size) return state.SkipWithError("wrong document");
    for (auto _ : state) write("/dev/null");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(xmlWrite<writeScene>)->Name("xmlWrite");
BENCHMARK(xmlWrite<writeByHand>)->Name("xmlWriteFprintf");

}  // namespace
