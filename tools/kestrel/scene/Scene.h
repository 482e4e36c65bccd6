// tools/kestrel/scene/Scene.h - the objects of a project document, as an application would define them.
//
// A document holds one project; a project, compositions; a composition, a thumbnail and layers; a layer, its
// source, its transform, a solid, a checkerboard and keyframe tables. Each object is a serializer: it writes its own element with its
// attributes (writeHeader) and what is inside (writeBody), and it is the handler of what is inside when a
// document is read. What decides the picture but is text (the source, a mode's name) stands in a value,
// not in an attribute, because a fingerprint leaves string attributes out. Names may change freely.
#pragma once

#include <kestrel/Kestrel.h>

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace kestrel::tools::scene {

/// What all objects have in common.
class Object : public KSSerializer {
public:
    /// The whole object: its element, what is inside, and the end.
    void write(KSSerializerWriteStream& out);
    void markFactoriesForSerialization(KSSerializerWriteStream&, bool) override {}
    bool parseBegin(KSSerializerReadStream& in) override;
    bool parseEnd(KSSerializerReadStream&) override { return true; }

protected:
    /// What the names inside the object are looked up in.
    virtual const KSScope* scope() const = 0;
};

/// The fifteen numbers of KSMatrix44::setTransformation; angles are radians.
class Transform final : public Object {
public:
    std::array<double, 3> position{0, 0, 0}, rotation{0, 0, 0}, scale{1, 1, 1}, pivot{0, 0, 0};
    std::array<double, 2> shear{0, 0};
    double aspect = 1;

    void writeHeader(KSSerializerWriteStream& out, bool) override;
    void writeBody(KSSerializerWriteStream& out, bool, bool) override;
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override;

protected:
    const KSScope* scope() const override;
};

/// A plane of one colour. It has nothing inside: the model's name is its value.
struct Solid {
    KSString model = "RGB";
    std::array<double, 3> components{0, 0, 0};
    double alpha = 1;
};

/// A plane of grey and white squares, as KSMakeCheckerImage draws them.
struct Checker {
    int width = 0, height = 0, square = 8;  ///< pixels
};

/// A small picture of the composition: rows of RGB bytes in the text of a KSAsciiStream.
struct Thumbnail {
    int width = 0, height = 0;  ///< pixels
    KSString armour;
    long line = 0;
};

/// How one parameter moves: pairs of a frame and a number.
class Keyframes final : public Object {
public:
    KSString parameter;
    KSString interpolation;  ///< between keys: null for linear, or "linear", "hold", "smooth"
    std::vector<double> values;

    void writeHeader(KSSerializerWriteStream& out, bool) override;
    void writeBody(KSSerializerWriteStream& out, bool, bool) override;
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override;
    bool parseEnd(KSSerializerReadStream& in) override;
    std::optional<int> declaredCount;  ///< of keys, as read
    long line = 0;                     ///< where it was read

protected:
    const KSScope* scope() const override;
};

class Layer final : public Object {
public:
    KSString name;
    KSUUID identifier;
    int blendMode = 0;
    double opacity = 1;
    long long in = 0, out = 0;  ///< frames of the composition; out is the first one without the layer
    KSString source;            ///< URL text; null without a source
    KSString alpha;  ///< of the source: null for straight, or "straight", "premultiplied", "ignore"
    std::optional<Transform> transform;
    std::optional<Solid> solid;
    std::optional<Checker> checker;
    std::vector<std::unique_ptr<Keyframes>> keyframes;
    long line = 0;

    void writeHeader(KSSerializerWriteStream& stream, bool) override;
    void writeBody(KSSerializerWriteStream& stream, bool, bool) override;
    bool parseElement(KSSerializerReadStream& stream, KSStreamElement& element) override;

protected:
    const KSScope* scope() const override;
};

class Composition final : public Object {
public:
    KSString name;
    KSUUID identifier;
    int width = 0, height = 0;          ///< pixels
    long long start = 0, duration = 0;  ///< frames
    KSString timecodeMode;              ///< its registered name
    std::optional<Thumbnail> thumbnail;
    std::vector<std::unique_ptr<Layer>> layers;
    long line = 0;

    void writeHeader(KSSerializerWriteStream& out, bool) override;
    void writeBody(KSSerializerWriteStream& out, bool, bool) override;
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override;
    bool parseEnd(KSSerializerReadStream& in) override;

protected:
    const KSScope* scope() const override;
};

class Project final : public Object {
public:
    int version = 1;
    KSString name;
    KSUUID identifier;
    long line = 0;

    void writeHeader(KSSerializerWriteStream& out, bool) override;
    /// Nothing: compositions are written one by one as they come, see SceneWriter.
    void writeBody(KSSerializerWriteStream&, bool, bool) override {}
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override;
    const KSScope* scope() const override;

private:
    std::unique_ptr<Composition> m_composition;  // the one being read
};

/// The handler of a whole document: its root, and the project inside.
class Document final : public Object {
public:
    void writeHeader(KSSerializerWriteStream&, bool) override {}
    void writeBody(KSSerializerWriteStream&, bool, bool) override {}
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override;
    const KSScope* scope() const override;
    bool hasProject() const { return m_project != nullptr; }

private:
    std::unique_ptr<Project> m_project;
};

/// Who is told of a document's parts as they are complete, so that no more than one composition is ever
/// held in memory. Each says whether to go on.
class SceneVisitor {
public:
    virtual ~SceneVisitor() = default;
    virtual bool project(Project& project) = 0;
    virtual bool composition(Composition& composition) = 0;
};

}  // namespace kestrel::tools::scene
