// tools/kestrel/scene/SceneWriter.h - sends a project to a write stream, part by part.
#pragma once

#include <functional>

#include "Scene.h"

namespace kestrel::tools::scene {

/// Writes what it is shown, to a document or to a fingerprint alike. A write stream that fails throws; that
/// is kept from the reader, which ends, and is told by isGood.
class SceneWriter final : public SceneVisitor {
public:
    explicit SceneWriter(KSSerializerWriteStream& out) : m_out(out) {}

    bool project(Project& project) override;
    bool composition(Composition& composition) override;
    /// Call it once, after the last composition.
    bool end();
    bool isGood() const { return m_good; }

private:
    bool attempt(const std::function<void()>& work);

    KSSerializerWriteStream& m_out;
    bool m_good = true;
};

}  // namespace kestrel::tools::scene
