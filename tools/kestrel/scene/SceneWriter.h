// tools/kestrel/scene/SceneWriter.h - sends a project to a write stream, part by part.
#pragma once

#include <functional>

#include "Scene.h"

namespace kestrel::tools::scene {

/// Writes what it is shown, to a document or to a fingerprint alike. A write stream that fails throws; that
/// is kept from the reader, which ends, and is told by isGood.
class SceneWriter final : public SceneVisitor {
public:
    /// @param thumbnails  whether they are written: they are no part of what a project means
    explicit SceneWriter(KSSerializerWriteStream& out, bool thumbnails = true)
        : m_out(out), m_thumbnails(thumbnails) {}

    bool project(Project& project) override;
    bool composition(Composition& composition) override;
    /// Call it once, after the last composition.
    bool end();
    bool isGood() const { return m_good; }

private:
    bool attempt(const std::function<void()>& work);

    KSSerializerWriteStream& m_out;
    const bool m_thumbnails;
    bool m_good = true;
};

}  // namespace kestrel::tools::scene
