#include <kestrel/time/KSTimecodeMode.h>

#include <algorithm>
#include <memory>
#include <string>

namespace {

struct Registry {
    std::vector<std::unique_ptr<KSTimecodeMode>> list;
    bool initialized = false;
};

// Never destroyed: modes live until the process exits, and serve the destructors of other statics.
Registry& registry() {
    static auto* const instance = new Registry;
    return *instance;
}

Registry& initializedRegistry() {
    if (!registry().initialized) {
        registry().initialized = true;
        KSTimecodeMode::init();
    }
    return registry();
}

[[maybe_unused]] const Registry& registryAtLoad = initializedRegistry();

// Unit by unit, where KSString::compare follows the locale.
bool isSameText(const KSString& a, const KSString& b) {
    return std::equal(a.u_str(), a.u_str() + a.size(), b.u_str(), b.u_str() + b.size());
}

}  // namespace

// 64 bits hold every product: an interval has less than 2^62 frames, a keep interval less than 2^63.
constexpr KSTimecodeMode::KSTimecodeMode(int fps, int dropFrames, int dropInterval, int keepInterval) noexcept
    : m_fps(std::max(fps, 1)),
      m_dropFrames(dropFrames),
      m_dropInterval(dropInterval),
      m_keepInterval(keepInterval) {
    if (m_dropFrames == 0 || m_dropInterval == 0 || m_keepInterval < m_dropInterval) return;
    const std::int64_t dropsPerKeep = std::int64_t{m_keepInterval} / m_dropInterval;
    const std::int64_t framesPerDrop = std::int64_t{m_fps} * m_dropInterval - m_dropFrames;
    const std::int64_t framesPerKeep = framesPerDrop * dropsPerKeep + m_dropFrames;
    if (dropsPerKeep == 0 || framesPerDrop == 0 || framesPerKeep == 0) return;
    m_dropsPerKeep = dropsPerKeep;
    m_framesPerDrop = framesPerDrop;
    m_framesPerKeep = framesPerKeep;
}

constinit const KSTimecodeMode KSTimecodeMode::k30FPS_DropFrame(30, 2, 60, 600);
constinit const KSTimecodeMode KSTimecodeMode::k30FPS_NonDropFrame(30, 0, 0, 0);

KSTimecodeMode::KSTimecodeMode(const char* name, int fps, int dropFrames, int dropInterval, int keepInterval)
    : KSTimecodeMode(fps, dropFrames, dropInterval, keepInterval) {
    m_name.set(name);
    if (m_name.empty()) m_name.set((std::to_string(fps) + " FPS" + (isDropFrame() ? "-DF" : "")).c_str());
}

const KSString& KSTimecodeMode::getName() const noexcept {
    // Never destroyed: the constants outlive every other object.
    static const KSString& nameOfTheConstants = *std::make_unique<KSString>(Nm30ND).release();
    return m_name.empty() ? nameOfTheConstants : m_name;
}

void KSTimecodeMode::getDropInfo(int* dropFrames, int* dropInterval, int* keepInterval) const noexcept {
    if (dropFrames) *dropFrames = m_dropFrames;
    if (dropInterval) *dropInterval = m_dropInterval;
    if (keepInterval) *keepInterval = m_keepInterval;
}

bool KSTimecodeMode::operator==(const KSTimecodeMode& other) const noexcept {
    if (m_fps != other.m_fps) return false;
    if (m_dropFrames == 0) return other.m_dropFrames == 0;
    return m_dropFrames == other.m_dropFrames && m_dropInterval == other.m_dropInterval &&
           m_keepInterval == other.m_keepInterval;
}

void KSTimecodeMode::defTimecodeMode(const char* name, int fps, int dropFrames, int dropInterval,
                                     int keepInterval) {
    auto& list = initializedRegistry().list;
    auto mode = std::make_unique<KSTimecodeMode>(name, fps, dropFrames, dropInterval, keepInterval);
    std::erase_if(list, [&](const auto& known) { return isSameText(known->m_name, mode->m_name); });
    list.push_back(std::move(mode));
}

const KSTimecodeMode* KSTimecodeMode::refTimecodeMode(const KSString& name) {
    const auto& list = initializedRegistry().list;
    const auto found =
        std::ranges::find_if(list, [&](const auto& mode) { return mode->m_name.compare(name) == 0; });
    return found != list.end() ? found->get() : list.front().get();
}

std::vector<const KSTimecodeMode*> KSTimecodeMode::getTimecodeModes() {
    std::vector<const KSTimecodeMode*> modes;
    for (const auto& mode : initializedRegistry().list) modes.push_back(mode.get());
    return modes;
}

void KSTimecodeMode::init() {
    defTimecodeMode(Nm24, 24, 0, 0, 0);
    defTimecodeMode(Nm25, 25, 0, 0, 0);
    defTimecodeMode(Nm30DF, 30, 2, 60, 600);
    defTimecodeMode(Nm30ND, 30, 0, 0, 0);
}
