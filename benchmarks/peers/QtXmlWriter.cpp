// The same document through Qt's stream writer.
#include <benchmark/benchmark.h>

#include <QFile>
#include <QXmlStreamWriter>

#include "../serialization/SceneWorkload.h"

namespace {

QString text(double number) { return QString::number(number, 'g', 10); }

void writeQt(const char* path) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    QXmlStreamWriter out(&file);
    out.setAutoFormatting(true);
    out.setAutoFormattingIndent(-1);
    const QString name("Layer & plate");
    out.writeStartDocument();
    out.writeStartElement("scene");
    for (int i = 0; i < workload::elementCount; ++i) {
        out.writeStartElement("layer");
        out.writeAttribute("id", QString::number(i));
        out.writeAttribute("name", name);
        out.writeAttribute("x", text(workload::number(i)));
        out.writeAttribute("y", text(workload::number(i) * 0.001));
        out.writeCharacters(text(workload::number(i) * 3));
        out.writeEndElement();
    }
    out.writeEndDocument();
}

void xmlWriteQt(benchmark::State& state) {
    const std::string path = workload::temporaryFile("qt.xml");
    writeQt(path.c_str());
    const std::size_t size = workload::checkAndRemove(path);
    if (!size) return state.SkipWithError("wrong document");
    for (auto _ : state) writeQt("/dev/null");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(xmlWriteQt);

}  // namespace
