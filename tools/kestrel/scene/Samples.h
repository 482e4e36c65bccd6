// tools/kestrel/scene/Samples.h - project documents made from nothing.
#pragma once

#include <cstdint>
#include <functional>

#include "Scene.h"

namespace kestrel::tools::scene {

/// Shows visitor a small project that has one of everything.
void makeSample(SceneVisitor& visitor, std::uint64_t seed);

/// Shows visitor compositions of a hundred layers each, with numbers drawn from seed, until enough() is
/// true. The same seed makes the same project everywhere.
void makeLarge(SceneVisitor& visitor, std::uint64_t seed, const std::function<bool()>& enough);

}  // namespace kestrel::tools::scene
