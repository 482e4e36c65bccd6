// Waits for whichever comes first: a worker that has finished, or the next moment to report progress.
#include <kestrel/concurrency/KSAtomic.h>
#include <kestrel/concurrency/KSEvent.h>
#include <kestrel/concurrency/KSThread.h>
#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/foundation/KSPrint.h>
#include <kestrel/time/KSTime.h>

#include <cmath>

namespace {

constexpr int frameCount = 200;

struct Render {
    KSEvent finished;
    int frames = 0;  // changed and read through KSAtomic
    double brightness = 0;
};

void renderAllFrames(void* argument) {
    Render& render = *static_cast<Render*>(argument);
    for (int frame = 0; frame < frameCount; ++frame) {
        for (int i = 0; i < 10000; ++i) render.brightness += std::sin(i * 0.001);
        KSAtomic::increment(&render.frames);
    }
    render.finished.lock();
    render.finished.raise();  // and unlocks
}

int framesDone(Render& render) { return KSAtomic::addThenTest(&render.frames, 0); }

}  // namespace

int main() {
    Render render;
    KSThread worker(renderAllFrames, &render);

    int reports = 0;
    while (framesDone(render) < frameCount) {
        KSTime nextReport = KSTime::now();
        nextReport.add(0, 10000);
        KSWaitable::wait({render.finished.getWaitable(), nextReport});
        if (nextReport.isPast()) {  // the wait does not say what ended it: ask
            KSPrint("%d frames so far\n", framesDone(render));
            ++reports;
        }
    }
    const bool isRaised = render.finished.wait() == 1;  // stays raised until somebody lowers it
    worker.wait();
    KSPrint("all %d frames, brightness %.3f, after %d reports\n", render.frames, render.brightness, reports);
    return isRaised ? 0 : 1;
}
