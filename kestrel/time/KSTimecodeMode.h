// kestrel/time/KSTimecodeMode.h - frame rates with their drop-frame rules, and the registry of named ones.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/Export.h>

#include <cstdint>
#include <vector>

/// A named frame rate and its drop-frame rule.
///
/// Rule       in a drop-frame mode, dropFrames frame numbers (not frames) are skipped every dropInterval
///            seconds, except every keepInterval seconds: 2, 60 and 600 for the usual 30 frames a second.
///            With an interval of 0, a keep interval below the drop interval, or as many skipped numbers as
///            there are frames, the rule would divide by nothing: such a mode counts as one that does not
///            drop. Any other rule, however odd (negative numbers, say), is taken as its formulas have it.
/// Registry   one ordered list for the process, with four built-in modes from the start. It owns its modes;
///            one from refTimecodeMode() is valid until its name is defined again.
/// Threads    modes are plain values. The registry has no lock: define modes during start-up, on one
///            thread; afterwards any thread may look them up.
/// Errors     none: an unknown name gives the first mode of the list.
/// Example
///     KSTimecodeMode::defTimecodeMode("60 FPS DF", 60, 4, 60, 600);
///     const KSTimecodeMode* mode = KSTimecodeMode::refTimecodeMode("60 FPS DF");
///     KSTimecode::getTimecode(3600, *mode, text);  // "00:01:00;04"
class KESTREL_API KSTimecodeMode {
public:
    // The names of the built-in modes, in the order of their definition.
    static constexpr const char* Nm24 = "24 FPS";
    static constexpr const char* Nm25 = "25 FPS";
    static constexpr const char* Nm30DF = "30 FPS DF";
    static constexpr const char* Nm30ND = "30 FPS ND";

    /// 30 frames a second with the usual rule. Deliberately named like the non-drop mode; it equals the
    /// registered "30 FPS DF" all the same, since names are not compared.
    static const KSTimecodeMode k30FPS_DropFrame;
    static const KSTimecodeMode k30FPS_NonDropFrame;

    /// A mode of one's own. An fps below 1 becomes 1. A null or empty name becomes "25 FPS" or, with
    /// dropFrames, "30 FPS-DF", with the fps as given.
    KSTimecodeMode(const char* name, int fps, int dropFrames, int dropInterval, int keepInterval);

    const KSString& getName() const noexcept;
    int getFps() const noexcept { return m_fps; }  ///< frames a second, 1 or more
    /// True when dropFrames is not 0, even for a rule that would divide by nothing.
    bool isDropFrame() const noexcept { return m_dropFrames != 0; }
    /// Writes the rule through those pointers that are not null; the intervals are in seconds.
    void getDropInfo(int* dropFrames, int* dropInterval, int* keepInterval) const noexcept;

    /// The same rate and rule. Names do not count, nor the intervals when this mode drops nothing.
    bool operator==(const KSTimecodeMode& other) const noexcept;

    /// Registers a mode at the end of the list, in place of one with exactly this name.
    static void defTimecodeMode(const char* name, int fps, int dropFrames, int dropInterval,
                                int keepInterval);
    /// The first registered mode whose name compares equal (KSString::compare), or else the first mode of
    /// the list. Never null.
    static const KSTimecodeMode* refTimecodeMode(const KSString& name);
    /// All registered modes, in the order of the list.
    static std::vector<const KSTimecodeMode*> getTimecodeModes();
    /// Defines the four built-in modes again, which moves them to the end of the list.
    static void init();

private:
    friend class KSTimecode;
    constexpr KSTimecodeMode(int fps, int dropFrames, int dropInterval, int keepInterval) noexcept;

    KSString m_name;  ///< null for the two constants, which are there before anything is initialised
    int m_fps;
    int m_dropFrames;
    int m_dropInterval;
    int m_keepInterval;
    // What follows from the rule; 0 when nothing is dropped.
    std::int64_t m_dropsPerKeep = 0;   ///< drop intervals in a keep interval
    std::int64_t m_framesPerDrop = 0;  ///< frames from one drop point to the next
    std::int64_t m_framesPerKeep = 0;  ///< frames from one kept drop point to the next
};
