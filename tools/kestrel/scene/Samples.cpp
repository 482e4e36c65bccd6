#include "Samples.h"

#include <memory>
#include <random>
#include <string>

#include "../Text.h"

namespace kestrel::tools::scene {
namespace {

/// The generator is the same everywhere; the standard's distributions are not, so they are not used.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    KSUUID identifier() {
        const std::uint64_t high = m_engine(), low = m_engine();
        return {static_cast<std::uint32_t>(high >> 32), static_cast<std::uint32_t>(high),
                static_cast<std::uint32_t>(low >> 32), static_cast<std::uint32_t>(low)};
    }
    int below(int limit) { return static_cast<int>(m_engine() % static_cast<std::uint64_t>(limit)); }
    /// In thousandths, from 0 up to limit.
    double upTo(int limit) { return below(limit * 1000) / 1000.0; }

private:
    std::mt19937_64 m_engine;
};

std::unique_ptr<Layer> makeLayer(const char* name, Random& random, long long out) {
    auto layer = std::make_unique<Layer>();
    layer->name = fromUTF8(name);
    layer->identifier = random.identifier();
    layer->out = out;
    return layer;
}

std::unique_ptr<Keyframes> makeKeyframes(const char* parameter, std::vector<double> values) {
    auto keyframes = std::make_unique<Keyframes>();
    keyframes->parameter = KSString(parameter);
    keyframes->values = std::move(values);
    return keyframes;
}

void fillComposition(Composition& composition, const char* name, Random& random) {
    composition.name = fromUTF8(name);
    composition.identifier = random.identifier();
    composition.width = 1920;
    composition.height = 1080;
    composition.duration = 240;
    composition.timecodeMode = KSString("24 FPS");
}

}  // namespace

void makeSample(SceneVisitor& visitor, std::uint64_t seed) {
    Random random(seed);
    Project project;
    project.name = KSString("Untitled");
    project.identifier = random.identifier();
    if (!visitor.project(project)) return;

    Composition composition;
    fillComposition(composition, "Main", random);

    auto background = makeLayer("Background", random, composition.duration);
    background->solid.emplace().components = {0.05, 0.1, 0.25};
    composition.layers.push_back(std::move(background));

    auto title = makeLayer("Title", random, 120);
    title->in = 12;
    title->source = KSString("file:///footage/title.%5B%23%23%23%23%5D.exr");
    title->blendMode = KSBlendModeScreen;
    Transform& transform = title->transform.emplace();
    transform.position = {960, 540, 0};
    transform.pivot = {400, 120, 0};
    title->keyframes.push_back(makeKeyframes("opacity", {12, 0, 24, 1, 108, 1, 120, 0}));
    composition.layers.push_back(std::move(title));

    visitor.composition(composition);
}

void makeLarge(SceneVisitor& visitor, std::uint64_t seed, const std::function<bool()>& enough) {
    Random random(seed);
    Project project;
    project.name = KSString("Generated");
    project.identifier = random.identifier();
    if (!visitor.project(project)) return;

    for (int number = 1; !enough(); ++number) {
        Composition composition;
        fillComposition(composition, ("Shot " + std::to_string(number)).c_str(), random);
        for (int i = 1; i <= 100; ++i) {
            auto layer = makeLayer(("Layer " + std::to_string(i)).c_str(), random, 240);
            layer->in = random.below(120);
            layer->opacity = random.upTo(1);
            if (i % 5 == 0) {
                Solid& solid = layer->solid.emplace();
                for (double& component : solid.components) component = random.upTo(1);
            } else {
                layer->source = KSString(("file:///footage/shot" + std::to_string(number) + "/plate." +
                                          std::to_string(i) + ".%5B%23%23%23%23%5D.exr")
                                             .c_str());
            }
            Transform& transform = layer->transform.emplace();
            for (double& axis : transform.position) axis = random.upTo(1920);
            for (double& axis : transform.rotation) axis = random.upTo(6);
            for (double& axis : transform.pivot) axis = random.upTo(960);
            std::vector<double> values;
            for (int frame = random.below(10); frame < 240; frame += 1 + random.below(60)) {
                values.push_back(frame);
                values.push_back(random.upTo(1));
            }
            layer->keyframes.push_back(makeKeyframes("opacity", std::move(values)));
            composition.layers.push_back(std::move(layer));
        }
        if (!visitor.composition(composition)) return;
    }
}

}  // namespace kestrel::tools::scene
