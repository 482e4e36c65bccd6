#include "SceneWriter.h"

namespace kestrel::tools::scene {

bool SceneWriter::project(Project& project) {
    return attempt([&] {
        m_out.pushScope(Document().scope());
        project.writeHeader(m_out, false);
        m_out.pushScope(project.scope());
    });
}

bool SceneWriter::composition(Composition& composition) {
    if (!m_thumbnails) composition.thumbnail.reset();
    return attempt([&] { composition.write(m_out); });
}

bool SceneWriter::end() {
    return attempt([&] {
        m_out.popScope();
        m_out.endElement();
        m_out.popScope();
        m_out.close();
    });
}

bool SceneWriter::attempt(const std::function<void()>& work) {
    if (!m_good) return false;
    try {
        work();
    } catch (const KSException&) {
        m_good = false;
    }
    return m_good;
}

}  // namespace kestrel::tools::scene
