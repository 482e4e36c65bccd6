// kestrel/time/KSTimecode.h - frame numbers to timecode text and back.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/Export.h>
#include <kestrel/time/KSTimecodeMode.h>

#include <cstddef>
#include <cstdint>

/// Converts between a signed frame index and text: hours:minutes:seconds:frames, with ";" before the frames
/// in a mode that drops. Hours do not wrap at 24.
///
/// Inverse    every frame reads back from its own text, within the range, in a mode whose rule skips fewer
///            numbers than there are. A text that no frame has, with a number that its mode skips or a
///            field above its range, reads as some frame near it: 00:01:00;01 of the usual drop mode is
///            frame 1799.
/// Oddity     deliberate: before the first drop point of a keep interval nothing is skipped, not even where
///            a rule skips more numbers than it leaves. Rules with negative numbers follow the same formulas;
///            they repeat numbers, and a field may be negative.
/// Range      every int is a frame; texts beyond give the nearest int.
/// Threads    any.
/// Errors     none: every text means some frame. Whoever reads texts of people checks them first.
/// Example
///     KSString text;
///     KSTimecode::getTimecode(1800, KSTimecodeMode::k30FPS_DropFrame, text);  // 00:01:00;02
///     int frame = KSTimecode::getTimeIndex(text, KSTimecodeMode::k30FPS_DropFrame);  // 1800
class KESTREL_API KSTimecode {
public:
    /// Each of these ends a field of a timecode text.
    static constexpr char separators[] = ":;.,-/";
    /// The room that the text of any frame in any mode needs, with its terminating NUL.
    static constexpr std::size_t maxTextSize = 40;

    /// How many frame numbers are skipped before frame; 0 in a mode that drops nothing.
    static int getDroppedFrames(const int& frame, const KSTimecodeMode& mode) noexcept;

    /// Sets out to the text of frame.
    static void getTimecode(const int& frame, const KSTimecodeMode& mode, KSString& out);
    /// Writes the text of frame, NUL-terminated and cut to size bytes, without any allocation. Returns the
    /// length of the whole text. Nothing is written when size is 0.
    static std::size_t getTimecode(int frame, const KSTimecodeMode& mode, char* out,
                                   std::size_t size) noexcept;

    /// The frame that text means; 0 for a null or empty one.
    ///
    /// A leading "-" makes the frame negative. Up to four fields, each ended by one of the separators, are
    /// frames from the right, seconds, minutes, hours; further text is ignored. An empty field and one
    /// without a number are 0, text behind a number is ignored, a number beyond 32 bits counts as the
    /// largest. A single field holds pairs of digits: "1234" is 12 seconds and 34 frames.
    static int getTimeIndex(const KSString& text, const KSTimecodeMode& mode) noexcept;
    /// The same of length characters, up to the first NUL, without any allocation.
    static int getTimeIndex(const char* text, std::size_t length, const KSTimecodeMode& mode) noexcept;

private:
    static std::int64_t countDropped(std::int64_t frame, const KSTimecodeMode& mode) noexcept;
    template <class Unit>
    static Unit* write(Unit* out, int frame, const KSTimecodeMode& mode) noexcept;
    template <class Unit>
    static int parse(const Unit* text, const Unit* end, const KSTimecodeMode& mode) noexcept;
};
