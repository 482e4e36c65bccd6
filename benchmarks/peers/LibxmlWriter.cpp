// The same document through libxml2's text writer.
#include <benchmark/benchmark.h>
#include <libxml/xmlwriter.h>

#include "../serialization/SceneWorkload.h"

namespace {

const xmlChar* utf8(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

void writeLibxml(const char* path) {
    xmlTextWriterPtr out = xmlNewTextWriterFilename(path, 0);
    if (!out) return;
    xmlTextWriterSetIndent(out, 1);
    xmlTextWriterStartDocument(out, nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElement(out, utf8("scene"));
    for (int i = 0; i < workload::elementCount; ++i) {
        xmlTextWriterStartElement(out, utf8("layer"));
        xmlTextWriterWriteFormatAttribute(out, utf8("id"), "%d", i);
        xmlTextWriterWriteAttribute(out, utf8("name"), utf8("Layer & plate"));
        xmlTextWriterWriteFormatAttribute(out, utf8("x"), "%.10g", workload::number(i));
        xmlTextWriterWriteFormatAttribute(out, utf8("y"), "%.10g", workload::number(i) * 0.001);
        xmlTextWriterWriteFormatString(out, "%.10g", workload::number(i) * 3);
        xmlTextWriterEndElement(out);
    }
    xmlTextWriterEndDocument(out);
    xmlFreeTextWriter(out);
}

void xmlWriteLibxml(benchmark::State& state) {
    const std::string path = workload::temporaryFile("libxml2.xml");
    writeLibxml(path.c_str());
    const std::size_t size = workload::checkAndRemove(path);
    if (!size) return state.SkipWithError("wrong document");
    for (auto _ : state) writeLibxml("/dev/null");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(xmlWriteLibxml);

}  // namespace
