// tools/kestrel/scene/ScenePrinter.h - a project as an indented tree for people.
#pragma once

#include <string>

#include "Output.h"
#include "SceneReader.h"

namespace kestrel::tools::scene {

class ScenePrinter final : public SceneVisitor {
public:
    ScenePrinter(Output& out, bool color) : m_out(out), m_color(color) {}

    bool project(Project& project) override;
    bool composition(Composition& composition) override;

private:
    void layer(const Layer& layer);
    /// Begins a line: indentation, then the kind of thing.
    void begin(int level, const char* kind);
    void name(const KSString& name);
    void field(const char* label, const std::string& value);
    void identifier(const KSUUID& identifier);
    bool end();
    std::string paint(const char* style, const std::string& text) const;

    Output& m_out;
    bool m_color;
    std::string m_line;
};

}  // namespace kestrel::tools::scene
