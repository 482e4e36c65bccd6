// tools/kestrel/scene/ScenePrinter.h - a project as an indented tree for people.
#pragma once

#include <span>
#include <string>

#include "Output.h"
#include "SceneReader.h"

namespace kestrel::tools::scene {

class ScenePrinter final : public SceneVisitor {
public:
    ScenePrinter(Output& out, bool color, bool identifiers)
        : m_out(out), m_color(color), m_identifiers(identifiers) {}

    bool project(Project& project) override;
    bool composition(Composition& composition) override;

private:
    void layer(const Layer& layer);
    /// Begins a line: indentation, then the kind of thing.
    void begin(int level, const char* kind);
    void name(const KSString& name);
    void field(const char* label, const std::string& value);
    /// Only when it is not what every transform has.
    void numbers(const char* label, std::span<const double> values, double usual);
    void identifier(const KSUUID& identifier);
    bool end();
    std::string paint(const char* style, const std::string& text) const;

    Output& m_out;
    bool m_color, m_identifiers;
    std::string m_line;
};

}  // namespace kestrel::tools::scene
