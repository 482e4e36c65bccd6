// tools/kestrel/scene/SceneChecks.h - what must hold for the values of a project, beyond being readable.
#pragma once

#include <array>
#include <cstdint>
#include <set>

#include "SceneReader.h"

namespace kestrel::tools::scene {

/// Checks each part of a document as it is read, and reports what is wrong.
class SceneChecks final : public SceneVisitor {
public:
    explicit SceneChecks(FaultSink faults) : m_faults(std::move(faults)) {}

    bool project(Project& project) override;
    bool composition(Composition& composition) override;
    bool foundFaults() const { return m_found; }

private:
    void fault(long line, const std::string& what);
    void checkIdentifier(long line, const char* what, const KSUUID& identifier);
    void checkTimecode(const Composition& composition);
    void checkLayer(const Layer& layer);
    void checkTransform(const Layer& layer);
    void checkSolid(const Layer& layer);
    void checkKeyframes(const Keyframes& keyframes);

    FaultSink m_faults;
    bool m_found = false;
    std::set<std::array<std::uint32_t, 4>> m_identifiers;
};

}  // namespace kestrel::tools::scene
