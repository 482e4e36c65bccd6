// Fingerprints: has an object changed since it was last rendered? The calls that write a document answer it.
//
// It prints
//     a new layer       render
//     the same again    cached
//     moved             render
//     renamed           cached
//     moved back        cached
//     640 x 360 and 1920 x 1080 have different keys
#include <kestrel/Kestrel.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>

namespace {

struct Layer {
    KSString name;
    double opacity = 1, x = 0, y = 0;

    /// No scope is needed here: a fingerprint takes the values, in their order, and no names. Deliberately it
    /// leaves out attributes that are texts, such as names, so that renaming an object changes nothing.
    void write(KSSerializerWriteStream& out) const {
        out.writeAttribute(1, name);
        out.writeAttribute(2, opacity);
        out.writeValue(x);
        out.writeValue(y);
    }

    std::string fingerprint() const {
        KSHashWriteStream digest;
        write(digest);
        const KSHash128 hash = digest.getHash();  // once, at the end
        const std::unique_ptr<char, decltype(&std::free)> digits(hash.getString().createCStr(), &std::free);
        return digits.get();  // 32 of them: a good name for a file in a cache
    }
};

}  // namespace

int main() {
    std::set<std::string> rendered;
    const auto show = [&](const char* what, const Layer& layer) {
        KSPrint("%-17s %s\n", what, rendered.insert(layer.fingerprint()).second ? "render" : "cached");
    };

    Layer title{"Title", 0.75, 960, 540};
    show("a new layer", title);
    show("the same again", title);
    title.x += 10;
    show("moved", title);
    title.name = "Main title";
    show("renamed", title);
    title.x -= 10;
    show("moved back", title);

    // Images have a key of their own: of what they are, not of their pixels.
    KSImageAttributes small, large;
    small.width = 640, small.height = 360;
    large.width = 1920, large.height = 1080;
    const bool equal = small.getCacheHashKey() == large.getCacheHashKey();
    KSPrint("640 x 360 and 1920 x 1080 have %s\n", equal ? "one key" : "different keys");
}
