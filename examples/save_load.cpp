// An object that saves itself as a scene document and loads itself again.
//
//   save_load FILE.xml
//
// It prints
//     Sky at 100%, (0, 0)
//     Title at 75%, (960, 540)
#include <kestrel/Kestrel.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

// The numbers that the code speaks of and the names that stand in the document, once for writing and reading.
enum Element : unsigned int { root = 1, layer };
enum Attribute : unsigned int { name = 1, opacity, x, y };
constexpr KSScope scope[] = {{"zuml", root, 0},            // the root of every document
                             {"layer", layer, 0},          // an element
                             {"name", layer, name},        // and its attributes
                             {"opacity", layer, opacity},  // 0 to 1
                             {"x", layer, x},              // pixels from the left
                             {"y", layer, y},              // and from the top
                             {nullptr, 0, 0}};

struct Layer {
    KSString name;
    double opacity = 1, x = 0, y = 0;
};

class Project : public KSSerializer {
public:
    std::vector<Layer> layers;

    void writeBody(KSSerializerWriteStream& out, bool, bool) override {
        out.pushScope(scope);
        for (const Layer& each : layers) {
            out.startElement(layer);
            out.writeAttribute(name, each.name);
            out.writeAttribute(opacity, each.opacity);
            out.writeAttribute(x, each.x);
            out.writeAttribute(y, each.y);
            out.endElement();
        }
        out.popScope();
    }
    void writeHeader(KSSerializerWriteStream&, bool) override {}
    void markFactoriesForSerialization(KSSerializerWriteStream&, bool) override {}

    bool parseBegin(KSSerializerReadStream& in) override {
        in.pushScope(scope);
        return true;
    }
    bool parseElement(KSSerializerReadStream&, KSStreamElement& element) override {
        if (element.getToken() != layer) return true;
        Layer& added = layers.emplace_back();
        return element.getAttributeAsString(name, &added.name) &&
               element.getAttributeAsDouble(opacity, &added.opacity) &&
               element.getAttributeAsDouble(x, &added.x) && element.getAttributeAsDouble(y, &added.y);
    }
    bool parseEnd(KSSerializerReadStream&) override { return true; }
};

void save(Project& project, const KSURL& url) {
    KSFileWriteStream file(url);  // what is written is in the file when this has been destroyed
    KSXMLWriteStream out(file);
    project.writeBody(out, false, false);
    out.close();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return KSPrint("usage: save_load FILE.xml\n"), 2;
    const KSURL url(argv[1], false);

    Project project, loaded;
    project.layers = {{"Sky", 1, 0, 0}, {"Title", 0.75, 960, 540}};
    try {
        save(project, url);
    } catch (const KSException_WriteError&) {
        return KSPrint("cannot write %s\n", argv[1]), 1;
    }
    KSXMLReadStream in(url);
    in.pushHandler(&loaded);
    if (!in.parse()) return KSPrint("cannot read %s\n", argv[1]), 1;

    for (const Layer& each : loaded.layers) {
        const std::unique_ptr<char, decltype(&std::free)> text(each.name.createUTF8Str(), &std::free);
        KSPrint("%s at %g%%, (%g, %g)\n", text.get(), 100 * each.opacity, each.x, each.y);
    }
}
