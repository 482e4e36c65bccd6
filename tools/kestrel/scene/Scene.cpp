#include "Scene.h"

#include <kestrel/serialization/KSScope.h>

#include <span>

#include "../Text.h"
#include "ElementReader.h"
#include "SceneReader.h"

namespace kestrel::tools::scene {
namespace {

enum Element : unsigned {
    eRoot = 1,
    eProject,
    eComposition,
    eTimecode,
    eLayer,
    eSource,
    eTransform,
    ePosition,
    eRotation,
    eScale,
    eShear,
    ePivot,
    eSolid,
    eKeyframes,
    eParameter,
    eValues,
    eThumbnail,
    eAlpha,
    eChecker,
    eInterpolation
};
enum Attribute : unsigned {
    aVersion = 1,
    aName,
    aIdentifier,
    aWidth,
    aHeight,
    aStart,
    aDuration,
    aBlend,
    aOpacity,
    aIn,
    aOut,
    aAspect,
    aC0,
    aC1,
    aC2,
    aAlpha,
    aCount,
    aSquare
};

constexpr KSScope documentScope[] = {{"zuml", eRoot, 0},
                                     {"project", eProject, 0},
                                     {"version", eProject, aVersion},
                                     {"name", eProject, aName},
                                     {"identifier", eProject, aIdentifier},
                                     {nullptr, 0, 0}};
constexpr KSScope projectScope[] = {
    {"composition", eComposition, 0},          {"name", eComposition, aName},
    {"identifier", eComposition, aIdentifier}, {"width", eComposition, aWidth},
    {"height", eComposition, aHeight},         {"start", eComposition, aStart},
    {"duration", eComposition, aDuration},     {nullptr, 0, 0}};
constexpr KSScope compositionScope[] = {{"layer", eLayer, 0},
                                        {"timecode", eTimecode, 0},
                                        {"thumbnail", eThumbnail, 0},
                                        {"width", eThumbnail, aWidth},
                                        {"height", eThumbnail, aHeight},
                                        {"name", eLayer, aName},
                                        {"identifier", eLayer, aIdentifier},
                                        {"blend", eLayer, aBlend},
                                        {"opacity", eLayer, aOpacity},
                                        {"in", eLayer, aIn},
                                        {"out", eLayer, aOut},
                                        {nullptr, 0, 0}};
constexpr KSScope layerScope[] = {{"source", eSource, 0},        {"alpha", eAlpha, 0},
                                  {"checker", eChecker, 0},      {"width", eChecker, aWidth},
                                  {"height", eChecker, aHeight}, {"square", eChecker, aSquare},
                                  {"transform", eTransform, 0},  {"aspect", eTransform, aAspect},
                                  {"solid", eSolid, 0},          {"c0", eSolid, aC0},
                                  {"c1", eSolid, aC1},           {"c2", eSolid, aC2},
                                  {"alpha", eSolid, aAlpha},     {"keyframes", eKeyframes, 0},
                                  {"count", eKeyframes, aCount}, {nullptr, 0, 0}};
constexpr KSScope transformScope[] = {{"position", ePosition, 0}, {"rotation", eRotation, 0},
                                      {"scale", eScale, 0},       {"shear", eShear, 0},
                                      {"pivot", ePivot, 0},       {nullptr, 0, 0}};
constexpr KSScope keyframesScope[] = {{"parameter", eParameter, 0},
                                      {"interpolation", eInterpolation, 0},
                                      {"values", eValues, 0},
                                      {nullptr, 0, 0}};

void writeText(KSSerializerWriteStream& out, unsigned element, const KSString& value) {
    out.startElement(element);
    out.writeValue(value);
    out.endElement();
}

void writeNumbers(KSSerializerWriteStream& out, unsigned element, std::span<const double> numbers) {
    writeText(out, element, KSString(text(numbers).c_str()));
}

}  // namespace

void Object::write(KSSerializerWriteStream& out) {
    writeHeader(out, false);
    out.pushScope(scope());
    writeBody(out, false, false);
    out.popScope();
    out.endElement();
}

bool Object::parseBegin(KSSerializerReadStream& in) {
    in.pushScope(scope());
    return true;
}

// ---- document and project ----

const KSScope* Document::scope() const { return documentScope; }

bool Document::parseElement(KSSerializerReadStream& in, KSStreamElement& element) {
    if (element.getToken() == eRoot) return true;
    SceneReader& reader = SceneReader::of(in);
    if (m_project) {
        reader.fault(reader.lineOf(element), "a second project; the first one is used");
        return in.ignoreElement();
    }
    m_project = std::make_unique<Project>();
    const ElementReader attributes(reader, element, "project");
    m_project->line = attributes.line();
    attributes.read(aVersion, "version", m_project->version);
    attributes.read(aName, "name", m_project->name);
    attributes.read(aIdentifier, "identifier", m_project->identifier);
    if (!reader.visitor().project(*m_project)) reader.stop();
    return in.pushHandler(m_project.get());
}

const KSScope* Project::scope() const { return projectScope; }

void Project::writeHeader(KSSerializerWriteStream& out, bool) {
    out.startElement(eProject);
    out.writeAttribute(aVersion, version);
    out.writeAttribute(aName, name);
    out.writeAttribute(aIdentifier, identifier);
}

bool Project::parseElement(KSSerializerReadStream& in, KSStreamElement& element) {
    m_composition = std::make_unique<Composition>();
    const ElementReader attributes(SceneReader::of(in), element, "composition");
    m_composition->line = attributes.line();
    attributes.read(aName, "name", m_composition->name);
    attributes.read(aIdentifier, "identifier", m_composition->identifier);
    attributes.read(aWidth, "width", m_composition->width);
    attributes.read(aHeight, "height", m_composition->height);
    attributes.read(aStart, "start", m_composition->start);
    attributes.read(aDuration, "duration", m_composition->duration);
    return in.pushHandler(m_composition.get());
}

// ---- composition ----

const KSScope* Composition::scope() const { return compositionScope; }

void Composition::writeHeader(KSSerializerWriteStream& out, bool) {
    out.startElement(eComposition);
    out.writeAttribute(aName, name);
    out.writeAttribute(aIdentifier, identifier);
    out.writeAttribute(aWidth, width);
    out.writeAttribute(aHeight, height);
    out.writeAttribute(aStart, start);
    out.writeAttribute(aDuration, duration);
}

void Composition::writeBody(KSSerializerWriteStream& out, bool, bool) {
    writeText(out, eTimecode, timecodeMode);
    if (thumbnail) {
        out.startElement(eThumbnail);
        out.writeAttribute(aWidth, thumbnail->width);
        out.writeAttribute(aHeight, thumbnail->height);
        out.writeValue(thumbnail->armour);
        out.endElement();
    }
    for (const auto& layer : layers) layer->write(out);
}

bool Composition::parseElement(KSSerializerReadStream& in, KSStreamElement& element) {
    if (element.getToken() == eTimecode) {
        element.getAsString(&timecodeMode);
        return in.ignoreElement();
    }
    if (element.getToken() == eThumbnail) {
        const ElementReader attributes(SceneReader::of(in), element, "thumbnail");
        thumbnail.emplace().line = attributes.line();
        attributes.read(aWidth, "width", thumbnail->width);
        attributes.read(aHeight, "height", thumbnail->height);
        element.getAsString(&thumbnail->armour);
        return in.ignoreElement();
    }
    Layer& layer = *layers.emplace_back(std::make_unique<Layer>());
    const ElementReader attributes(SceneReader::of(in), element, "layer");
    layer.line = attributes.line();
    attributes.read(aName, "name", layer.name);
    attributes.read(aIdentifier, "identifier", layer.identifier);
    attributes.read(aBlend, "blend", layer.blendMode);
    attributes.read(aOpacity, "opacity", layer.opacity);
    attributes.read(aIn, "in", layer.in);
    attributes.read(aOut, "out", layer.out);
    return in.pushHandler(&layer);
}

bool Composition::parseEnd(KSSerializerReadStream& in) {
    SceneReader& reader = SceneReader::of(in);
    if (reader.isSound() && !reader.visitor().composition(*this)) reader.stop();
    return true;
}

// ---- layer ----

const KSScope* Layer::scope() const { return layerScope; }

void Layer::writeHeader(KSSerializerWriteStream& stream, bool) {
    stream.startElement(eLayer);
    stream.writeAttribute(aName, name);
    stream.writeAttribute(aIdentifier, identifier);
    stream.writeAttribute(aBlend, blendMode);
    stream.writeAttribute(aOpacity, opacity);
    stream.writeAttribute(aIn, in);
    stream.writeAttribute(aOut, out);
}

void Layer::writeBody(KSSerializerWriteStream& stream, bool, bool) {
    if (!source.empty()) writeText(stream, eSource, source);
    if (!alpha.empty()) writeText(stream, eAlpha, alpha);
    if (transform) transform->write(stream);
    if (solid) {
        stream.startElement(eSolid);
        stream.writeAttribute(aC0, solid->components[0]);
        stream.writeAttribute(aC1, solid->components[1]);
        stream.writeAttribute(aC2, solid->components[2]);
        stream.writeAttribute(aAlpha, solid->alpha);
        stream.writeValue(solid->model);
        stream.endElement();
    }
    if (checker) {
        stream.startElement(eChecker);
        stream.writeAttribute(aWidth, checker->width);
        stream.writeAttribute(aHeight, checker->height);
        stream.writeAttribute(aSquare, checker->square);
        stream.endElement();
    }
    for (const auto& table : keyframes) table->write(stream);
}

bool Layer::parseElement(KSSerializerReadStream& stream, KSStreamElement& element) {
    SceneReader& reader = SceneReader::of(stream);
    const auto single = [&](bool present, const char* what) {
        if (present) reader.fault(reader.lineOf(element), std::string("a second ") + what + " in one layer");
    };
    switch (element.getToken()) {
        case eSource: {
            single(!source.empty(), "source");
            element.getAsString(&source);
            break;
        }
        case eAlpha: {
            element.getAsString(&alpha);
            break;
        }
        case eTransform: {
            single(transform.has_value(), "transform");
            ElementReader(reader, element, "transform").read(aAspect, "aspect", transform.emplace().aspect);
            return stream.pushHandler(&*transform);
        }
        case eSolid: {
            single(solid.has_value(), "solid");
            const ElementReader attributes(reader, element, "solid");
            solid.emplace();
            attributes.read(aC0, "c0", solid->components[0]);
            attributes.read(aC1, "c1", solid->components[1]);
            attributes.read(aC2, "c2", solid->components[2]);
            attributes.read(aAlpha, "alpha", solid->alpha);
            element.getAsString(&solid->model);
            break;
        }
        case eChecker: {
            single(checker.has_value(), "checker");
            const ElementReader attributes(reader, element, "checker");
            checker.emplace();
            attributes.read(aWidth, "width", checker->width);
            attributes.read(aHeight, "height", checker->height);
            attributes.read(aSquare, "square", checker->square);
            break;
        }
        case eKeyframes: {
            Keyframes& table = *keyframes.emplace_back(std::make_unique<Keyframes>());
            const ElementReader attributes(reader, element, "keyframes");
            table.line = attributes.line();
            int count = -1;
            attributes.read(aCount, "count", count);
            if (count >= 0) table.declaredCount = count;
            return stream.pushHandler(&table);
        }
    }
    return stream.ignoreElement();
}

// ---- transform ----

const KSScope* Transform::scope() const { return transformScope; }

void Transform::writeHeader(KSSerializerWriteStream& out, bool) {
    out.startElement(eTransform);
    out.writeAttribute(aAspect, aspect);
}

void Transform::writeBody(KSSerializerWriteStream& out, bool, bool) {
    writeNumbers(out, ePosition, position);
    writeNumbers(out, eRotation, rotation);
    writeNumbers(out, eScale, scale);
    writeNumbers(out, eShear, shear);
    writeNumbers(out, ePivot, pivot);
}

bool Transform::parseElement(KSSerializerReadStream& in, KSStreamElement& element) {
    SceneReader& reader = SceneReader::of(in);
    switch (element.getToken()) {
        case ePosition:
            ElementReader(reader, element, "position").readValue(position);
            break;
        case eRotation:
            ElementReader(reader, element, "rotation").readValue(rotation);
            break;
        case eScale:
            ElementReader(reader, element, "scale").readValue(scale);
            break;
        case eShear:
            ElementReader(reader, element, "shear").readValue(shear);
            break;
        case ePivot:
            ElementReader(reader, element, "pivot").readValue(pivot);
            break;
    }
    return in.ignoreElement();
}

// ---- keyframes ----

const KSScope* Keyframes::scope() const { return keyframesScope; }

void Keyframes::writeHeader(KSSerializerWriteStream& out, bool) {
    out.startElement(eKeyframes);
    out.writeAttribute(aCount, static_cast<int>(values.size() / 2));
}

void Keyframes::writeBody(KSSerializerWriteStream& out, bool, bool) {
    writeText(out, eParameter, parameter);
    if (!interpolation.empty()) writeText(out, eInterpolation, interpolation);
    writeNumbers(out, eValues, values);
}

bool Keyframes::parseElement(KSSerializerReadStream& in, KSStreamElement& element) {
    if (element.getToken() == eParameter) {
        element.getAsString(&parameter);
    } else if (element.getToken() == eInterpolation) {
        element.getAsString(&interpolation);
    } else {
        ElementReader(SceneReader::of(in), element, "values").readValue(values);
    }
    return in.ignoreElement();
}

bool Keyframes::parseEnd(KSSerializerReadStream& in) {
    SceneReader& reader = SceneReader::of(in);
    if (values.size() % 2) reader.fault(line, "keyframes hold a frame without a number");
    return true;
}

}  // namespace kestrel::tools::scene
