// Finds leaks, overruns and unchecked results in a small program, by running each of its tests between
// ksAllocStart and ksAllocEnd.
#include <kestrel/foundation/KSAlloc.h>
#include <kestrel/foundation/KSPrint.h>

#include <cstdlib>
#include <cstring>

namespace {

/// Tracks every allocation of a scope and prints at its end what is left of them.
class LeakHunt {
public:
    explicit LeakHunt(const char* name) {
        KSPrint("\n%s:\n", name);
        ksAllocStart();
    }
    LeakHunt(const LeakHunt&) = delete;
    LeakHunt& operator=(const LeakHunt&) = delete;
    ~LeakHunt() { ksAllocEnd(3); }
};

/// What is under test: a title that somebody wrote carelessly.
class Title {
public:
    static Title* create(const char* text) {
        Title* title = ksNew Title;
        if (!title) return nullptr;
        title->m_text = static_cast<char*>(ksAlloc(std::strlen(text)));  // one too short for the end of text
        if (!title->m_text) {
            ksDelete(title);
            return nullptr;
        }
        std::strcpy(title->m_text, text);
        return title;
    }
    void setText(const char* text) {
        m_text = static_cast<char*>(ksAlloc(std::strlen(text) + 1));  // and the old text?
        if (m_text) std::strcpy(m_text, text);
    }
    ~Title() { ksFree(m_text); }

private:
    char* m_text = nullptr;
};

void testCreate() {
    const LeakHunt hunt("a title of eight letters (the guard behind the text is gone)");
    Title* const title = Title::create("Premiere");
    ksDelete(title);
}

void testSetText() {
    const LeakHunt hunt("a title that changes (the first text leaks)");
    Title* const title = Title::create("A day");  // rounded up to eight bytes, so the overrun does no harm
    title->setText("A night");
    ksDelete(title);
}

void testWithoutMemory() {
    setenv("ksAllocatedBlocksLimit", "2", 1);  // one block may live
    {
        const LeakHunt hunt("a title for which memory runs out (nothing leaks)");
        if (!Title::create("A day")) KSPrint("refused, as it should be\n");
    }
    unsetenv("ksAllocatedBlocksLimit");
}

}  // namespace

int main() {
    testCreate();
    testSetText();
    testWithoutMemory();
}
