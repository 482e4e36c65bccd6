// tools/kestrel/scene/SceneChecks.h - what must hold for the values of a project, beyond being readable.
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <span>
#include <string_view>

#include "SceneReader.h"

namespace kestrel::tools::scene {

/// Checks each part of a document as it is read, and reports what is wrong. A warning is for what the library
/// takes but shows otherwise than its author meant, or not at all: a timecode mode that is not registered, a
/// transform that cannot be inverted, a range without frames.
class SceneChecks final : public SceneVisitor {
public:
    SceneChecks(FaultSink faults, FaultSink warnings)
        : m_fault(std::move(faults)), m_warn(std::move(warnings)) {}

    bool project(Project& project) override;
    bool composition(Composition& composition) override;

private:
    void checkIdentifier(long line, const char* what, const KSUUID& identifier);
    void checkDuration(const Composition& composition);
    void checkTimecode(const Composition& composition);
    void checkLayer(const Layer& layer);
    void checkRange(const Layer& layer);
    void checkTransform(const Layer& layer);
    void checkSolid(const Layer& layer);
    void checkChecker(const Layer& layer);
    void checkThumbnail(const Thumbnail& thumbnail);
    void checkName(long line, const char* what, const KSString& name,
                   std::span<const std::string_view> known);
    void checkKeyframes(const Keyframes& keyframes);

    const FaultSink m_fault, m_warn;
    std::set<std::array<std::uint32_t, 4>> m_identifiers;
};

}  // namespace kestrel::tools::scene
