// Cuts a clip out of a programme: timecode texts in, frames in between, texts and a stopwatch out.
#include <kestrel/Kestrel.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

void print(const char* what, const KSString& text) {
    const std::unique_ptr<char, decltype(&std::free)> chars(text.createUTF8Str(), &std::free);
    std::printf("%-22s %s\n", what, chars.get());
}

}  // namespace

int main() {
    // 29.97 frames a second count as 30; two numbers a minute are left out to keep up with the clock.
    const KSTimeValue rate(29.97);
    std::printf("%-22s %g (stored as %g)\n", "rate", rate.getDisplayRate(), rate.rate);
    const KSTimecodeMode& mode = *KSTimecodeMode::refTimecodeMode(KSTimecodeMode::Nm30DF);

    const int in = KSTimecode::getTimeIndex("00:00:59;20", mode);
    const int out = KSTimecode::getTimeIndex("00:01:10;00", mode);
    const KSTimeRange clip(static_cast<float>(in), static_cast<float>(out - in));
    const KSTimeRange work(1795, 100);
    const KSTimeRange both = clip.getIntersectionWith(work);

    KSString text;
    KSTimecode::getTimecode(static_cast<int>(both.start), mode, text);
    print("work begins", text);
    KSTimecode::getTimecode(static_cast<int>(both.start + both.duration) - 1, mode, text);
    print("last frame of it", text);

    // Many values: into a buffer of one's own, without an allocation.
    KSTimer timer;
    timer.start();
    std::size_t characters = 0;
    char buffer[KSTimecode::maxTextSize];
    for (int frame = 0; frame < 1000000; ++frame)
        characters += KSTimecode::getTimecode(frame, mode, buffer, sizeof buffer);
    timer.stop();
    std::printf("%-22s %s, %zu characters, %.0f ms\n", "the millionth frame", buffer, characters,
                timer.getSeconds() * 1000);

    // A mode of one's own takes part in everything.
    KSTimecodeMode::defTimecodeMode("60 FPS DF", 60, 4, 60, 600);
    KSTimecode::getTimecode(3600, *KSTimecodeMode::refTimecodeMode("60 FPS DF"), text);
    print("frame 3600 at 60", text);

    KSDate date;
    if (!date.loadString("07-Mar-2005")) return 1;
    std::printf("%-22s 0x%08x\n", "07-Mar-2005 is saved as", date.getSaveVal());
    return both == KSTimeRange(1795, 100) ? 0 : 1;
}
